#include "tools/formwork/MeshInfo.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "geom/spatial/BoundingBox.h"
#include "tools/formwork/JsonWriter.h"
#include "tools/formwork/SurfaceTopology.h"

namespace formworkTool {

namespace {

// The counts of one mesh's primitives, named as the report names them.
struct Count {
    const char* key;   // JSON member
    const char* label; // text
    std::int64_t value;
};

std::vector<Count> primitiveCounts(const koGeom::CompactMesh& mesh) {
    return {{"triangles", "triangles", mesh.getNumTriangles()},
            {"triangleStrips", "triangle strips", mesh.getNumTriStrips()},
            {"triangleFans", "triangle fans", mesh.getNumTriFans()},
            {"polygons", "polygons", mesh.getNumPolys()},
            {"lineStrips", "line strips", mesh.getNumLineStrips()},
            {"lines", "lines", mesh.getNumLines()}};
}

std::vector<std::string> channelNames(const koGeom::CompactMesh& mesh) {
    std::vector<std::string> names;
    for (int i = 0; i < mesh.getNumAttributes(); ++i) {
        names.emplace_back(mesh.getAttributes(i)->getName().c_str());
    }
    return names;
}

std::string format(const char* pattern, ...) __attribute__((format(printf, 1, 2)));
std::string format(const char* pattern, ...) {
    char text[512];
    va_list args;
    va_start(args, pattern);
    std::vsnprintf(text, sizeof text, pattern, args);
    va_end(args);
    return text;
}

std::string plural(std::int64_t n, const char* one, const char* many = nullptr) {
    return std::to_string(n) + " " +
           (n == 1            ? std::string(one)
            : many != nullptr ? std::string(many)
                              : one + std::string("s"));
}

void writeJsonMesh(JsonWriter& json, const koGeom::CompactMesh& mesh,
                   const SurfaceTopology& topology) {
    json.beginObject();
    json.key("vertices");
    json.value(mesh.getNumVertices());
    for (const Count& count : primitiveCounts(mesh)) {
        json.key(count.key);
        json.value(count.value);
    }
    json.key("channels");
    json.beginArray(true);
    for (const std::string& name : channelNames(mesh)) {
        json.value(name);
    }
    json.endArray();
    koGeom::BoundingBox box;
    mesh.getBoundingBox(box);
    json.key("boundingBox");
    if (box.isValid()) {
        json.beginObject();
        for (const auto& [name, corner] :
             {std::pair{"min", box.minPt()}, std::pair{"max", box.maxPt()}}) {
            json.key(name);
            json.beginArray(true);
            for (int k = 0; k < 3; ++k) {
                json.value(static_cast<double>(corner[k]));
            }
            json.endArray();
        }
        json.endObject();
    } else {
        json.null();
    }
    json.key("sizeInBytes");
    json.value(mesh.getSizeInBytes());
    json.key("surface");
    json.beginObject();
    const std::pair<const char*, std::int64_t> figures[] = {
        {"vertices", topology.vertices},
        {"edges", topology.edges},
        {"faces", topology.faces},
        {"components", topology.components},
        {"boundaryLoops", topology.boundaryLoops},
        {"eulerCharacteristic", topology.eulerCharacteristic()},
        {"unusedVertices", topology.unusedVertices},
        {"degenerateTriangles", topology.degenerateTriangles},
        {"nonManifoldEdges", topology.nonManifoldEdges},
        {"misorientedEdges", topology.misorientedEdges},
        {"nonManifoldVertices", topology.nonManifoldVertices}};
    for (const auto& [key, value] : figures) {
        json.key(key);
        json.value(value);
    }
    json.key("genus");
    if (topology.genus() >= 0) {
        json.value(topology.genus());
    } else {
        json.null();
    }
    json.endObject();
    json.endObject();
}

std::string textMesh(int index, const koGeom::CompactMesh& mesh, const SurfaceTopology& topology) {
    std::string text =
        format("mesh %d: %s", index, plural(mesh.getNumVertices(), "vertex", "vertices").c_str());
    for (const Count& count : primitiveCounts(mesh)) {
        if (count.value != 0) {
            text += format(", %lld %s", static_cast<long long>(count.value), count.label);
        }
    }
    text += "\n";
    std::string channels;
    for (const std::string& name : channelNames(mesh)) {
        channels += (channels.empty() ? "" : ", ") + name;
    }
    text += format("  channels      %s\n", channels.empty() ? "none" : channels.c_str());
    koGeom::BoundingBox box;
    mesh.getBoundingBox(box);
    if (box.isValid()) {
        const koLinear::PointFlt lo = box.minPt();
        const koLinear::PointFlt hi = box.maxPt();
        text += format("  bounding box  (%g, %g, %g) to (%g, %g, %g)\n", lo.x, lo.y, lo.z, hi.x,
                       hi.y, hi.z);
    }
    text += format("  memory        %d bytes\n", mesh.getSizeInBytes());
    text += format("  surface       %d vertices, %lld edges, %d faces (welded by position)",
                   topology.vertices, static_cast<long long>(topology.edges), topology.faces);
    text += format(", %s\n", plural(topology.components, "component").c_str());
    text += format("  boundary      %s\n", plural(topology.boundaryLoops, "loop").c_str());
    text +=
        format("  euler         %lld\n", static_cast<long long>(topology.eulerCharacteristic()));
    if (topology.genus() >= 0) {
        text += format("  genus         %d\n", topology.genus());
    } else {
        text += "  genus         none (not an oriented manifold)\n";
    }
    if (!topology.isOrientedManifold()) {
        text += format("  non-manifold  %s, %s; %s\n",
                       plural(topology.nonManifoldEdges, "edge").c_str(),
                       plural(topology.nonManifoldVertices, "vertex", "vertices").c_str(),
                       plural(topology.misorientedEdges, "misoriented edge").c_str());
    }
    if (topology.unusedVertices > 0 || topology.degenerateTriangles > 0) {
        text += format("  left out      %s in no triangle, %s\n",
                       plural(topology.unusedVertices, "vertex", "vertices").c_str(),
                       plural(topology.degenerateTriangles, "degenerate triangle").c_str());
    }
    return text;
}

} // namespace

std::string meshInfo(const std::string& file, const MeshList& meshes, bool json,
                     Progress& progress) {
    std::vector<SurfaceTopology> topologies;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        topologies.push_back(buildSurfaceTopology(*mesh, progress));
        // Only the counts are reported: the half-edge mesh goes at once.
        topologies.back().mesh.reset();
    }
    std::int64_t vertices = 0;
    std::int64_t triangles = 0;
    std::int64_t bytes = 0;
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        vertices += mesh->getNumVertices();
        triangles += mesh->getNumTriangles();
        bytes += mesh->getSizeInBytes();
    }
    if (json) {
        JsonWriter writer;
        writer.beginObject();
        writer.key("file");
        writer.value(file);
        writer.key("meshes");
        writer.beginArray();
        for (std::size_t i = 0; i < meshes.size(); ++i) {
            writeJsonMesh(writer, *meshes[i], topologies[i]);
        }
        writer.endArray();
        writer.key("total");
        writer.beginObject();
        for (const auto& [key, value] :
             {std::pair{"meshes", static_cast<std::int64_t>(meshes.size())},
              std::pair{"vertices", vertices}, std::pair{"triangles", triangles},
              std::pair{"sizeInBytes", bytes}}) {
            writer.key(key);
            writer.value(value);
        }
        writer.endObject();
        writer.endObject();
        return writer.text();
    }
    std::string text =
        file + ": " + plural(static_cast<std::int64_t>(meshes.size()), "mesh", "meshes") + "\n";
    for (std::size_t i = 0; i < meshes.size(); ++i) {
        text += textMesh(static_cast<int>(i), *meshes[i], topologies[i]);
    }
    if (meshes.size() > 1) {
        text += format("total: %lld vertices, %lld triangles, %lld bytes\n",
                       static_cast<long long>(vertices), static_cast<long long>(triangles),
                       static_cast<long long>(bytes));
    }
    return text;
}

} // namespace formworkTool
