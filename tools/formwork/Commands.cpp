#include "tools/formwork/Commands.h"

#include <cstdint>
#include <cstdio>
#include <vector>

#include "geom/topomesh/SubdivideSqrt3.h"
#include "tools/formwork/MeshFiles.h"
#include "tools/formwork/MeshInfo.h"
#include "tools/formwork/PacketDump.h"
#include "tools/formwork/Png.h"
#include "tools/formwork/SurfaceTopology.h"
#include "tools/formwork/Torus.h"

namespace formworkTool {

namespace {

int fail(const std::string& error) {
    std::fprintf(stderr, "formwork: %s\n", error.c_str());
    return exitBadInput;
}

// "2 meshes, 2450 vertices, 4608 triangles".
std::string countsOf(const MeshList& meshes) {
    std::int64_t vertices = 0;
    std::int64_t triangles = 0;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        vertices += mesh->getNumVertices();
        triangles += mesh->getNumTriangles();
    }
    return std::to_string(meshes.size()) + (meshes.size() == 1 ? " mesh, " : " meshes, ") +
           std::to_string(vertices) + " vertices, " + std::to_string(triangles) + " triangles";
}

int writeAndReport(const CommonOptions& common, const std::string& out, const MeshList& meshes,
                   double scale) {
    std::string error;
    if (!writeMeshes(out, meshes, scale, error)) {
        return fail(error);
    }
    if (!common.quiet) {
        std::printf("wrote %s: %s\n", out.c_str(), countsOf(meshes).c_str());
    }
    return exitDone;
}

// Reads `in`, or says why not; the meshes read are appended to `meshes`.
bool read(const std::string& in, const ImportOptions& options, MeshList& meshes, Progress& progress,
          int& status) {
    std::string error;
    if (!readMeshes(in, options, meshes, error, progress)) {
        status = fail(error);
        return false;
    }
    return true;
}

} // namespace

int runImport(const CommonOptions& common, const std::string& in, const std::string& out,
              const ImportOptions& options, double scale) {
    Progress progress(!common.quiet);
    MeshList meshes;
    int status = exitDone;
    if (!read(in, options, meshes, progress, status)) {
        return status;
    }
    return writeAndReport(common, out, meshes, scale);
}

int runExport(const CommonOptions& common, const std::string& in, const std::string& out) {
    Progress progress(!common.quiet);
    MeshList meshes;
    int status = exitDone;
    if (!read(in, {}, meshes, progress, status)) {
        return status;
    }
    return writeAndReport(common, out, meshes, 1.0);
}

int runInfo(const CommonOptions& common, const std::string& file, bool json) {
    Progress progress(!common.quiet);
    MeshList meshes;
    int status = exitDone;
    if (!read(file, {}, meshes, progress, status)) {
        return status;
    }
    std::fputs(meshInfo(file, meshes, json, progress).c_str(), stdout);
    return exitDone;
}

int runDump(const CommonOptions& /*common*/, const std::string& file, bool json, int maxValues) {
    std::string text;
    std::string error;
    if (!dumpPacketFile(file, json, maxValues, text, error)) {
        // What was walked before the damage is shown too: it says where the damage lies.
        std::fputs(text.c_str(), stdout);
        return fail(error);
    }
    std::fputs(text.c_str(), stdout);
    return exitDone;
}

int runRender(const CommonOptions& common, const std::string& in, const std::string& out,
              const RenderOptions& options) {
    Progress progress(!common.quiet);
    MeshList meshes;
    int status = exitDone;
    if (!read(in, {}, meshes, progress, status)) {
        return status;
    }
    const Image image = renderMeshes(meshes, options, progress);
    std::string error;
    if (!writePng(out, image, error)) {
        return fail(error);
    }
    if (!common.quiet) {
        std::printf("wrote %s: %d x %d pixels\n", out.c_str(), image.width, image.height);
    }
    return exitDone;
}

int runSubdivide(const CommonOptions& common, const std::string& in, const std::string& out,
                 int levels, int undo, bool relax) {
    Progress progress(!common.quiet);
    MeshList meshes;
    int status = exitDone;
    if (!read(in, {}, meshes, progress, status)) {
        return status;
    }
    // The summed counts of every mesh at each level, and after the undo.
    struct Counts {
        std::int64_t vertices = 0;
        std::int64_t faces = 0;
        void add(const koGeom::TopoMesh& mesh) {
            vertices += mesh.numVertices();
            faces += mesh.numFaces();
        }
    };
    std::vector<Counts> atLevel(static_cast<std::size_t>(levels) + 1);
    Counts afterUndo;
    MeshList result;
    const koGeom::Sqrt3Vertices rule =
        relax ? koGeom::Sqrt3Vertices::Relaxed : koGeom::Sqrt3Vertices::Kept;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        const SurfaceTopology surface = buildSurfaceTopology(*mesh, progress);
        koGeom::TopoMesh& topo = *surface.mesh;
        // Every level is a saved state: the root is the mesh as built.
        topo.enableTransactions();
        std::vector<ko::Reference<koGeom::TopoMeshState>> states{topo.createState()};
        atLevel[0].add(topo);
        progress.start("subdivide");
        for (int level = 1; level <= levels; ++level) {
            koGeom::subdivideSqrt3(topo, rule);
            states.push_back(topo.createState());
            atLevel[static_cast<std::size_t>(level)].add(topo);
            progress.update(static_cast<double>(level) / levels);
        }
        progress.finish();
        if (undo > 0) {
            topo.setState(states[static_cast<std::size_t>(levels - undo)]);
            afterUndo.add(topo);
        }
        result.push_back(compactMeshOf(topo));
    }
    if (!common.quiet) {
        for (int level = 0; level <= levels; ++level) {
            const Counts& c = atLevel[static_cast<std::size_t>(level)];
            std::printf("level %d: %lld vertices, %lld faces\n", level,
                        static_cast<long long>(c.vertices), static_cast<long long>(c.faces));
        }
        if (undo > 0) {
            std::printf("undo %d: setState back to level %d: %lld vertices, %lld faces\n", undo,
                        levels - undo, static_cast<long long>(afterUndo.vertices),
                        static_cast<long long>(afterUndo.faces));
        }
    }
    return writeAndReport(common, out, result, 1.0);
}

int runMakeTorus(const CommonOptions& common, const std::string& out, int segments, int rings,
                 double majorRadius, double minorRadius) {
    const MeshList meshes{makeTorus(segments, rings, majorRadius, minorRadius).toMesh()};
    return writeAndReport(common, out, meshes, 1.0);
}

} // namespace formworkTool
