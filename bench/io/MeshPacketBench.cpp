// A mesh of 1,000,000 vertices with normals and 2,000,000 triangles written to and read from a
// file in a temporary folder: as mesh packets, as the raw arrays with fwrite/fread, and as
// OpenMesh's .om and binary PLY files. Every read is checked bit for bit against the mesh.
// Our benchmarks report their time over the raw and OpenMesh sides of the same run.

#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <OpenMesh/Core/IO/MeshIO.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/SideTimer.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"
#include "geom/mesh/CompactMesh.h"

namespace {

using koGeom::CompactMesh;
using OpenMeshTriangles = OpenMesh::TriMesh_ArrayKernelT<>; // float points and normals

constexpr int gridSide = 1000; // a closed torus grid: 10^6 vertices, 2·10^6 triangles

// The folder the files go to, removed with everything in it when the program ends.
class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "formwork-meshbench-XXXXXX").string();
        if (mkdtemp(pattern.data()) != nullptr) {
            path_ = pattern;
        }
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string file(const char* name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

struct BenchMesh {
    ko::Reference<CompactMesh> mesh;
    OpenMeshTriangles peer; // the same mesh for OpenMesh's writers
    TemporaryFolder folder;
    std::size_t arrayBytes = 0; // vertices, normals and triangles
};

const BenchMesh& benchMesh() {
    static const BenchMesh* const made = [] {
        auto* made = new BenchMesh;
        made->mesh = new CompactMesh;
        CompactMesh& mesh = *made->mesh;
        const int n = gridSide;
        mesh.resizeVertexArray(n * n);
        mesh.allocNormalArray();
        mesh.resizeTriangleArray(2 * n * n);
        koGeom::MeshVertex* vertices = mesh.getVertices();
        koGeom::MeshNormal* normals = mesh.getNormals();
        for (int j = 0; j < n; ++j) {
            const double around = 2.0 * std::numbers::pi * j / n;
            for (int i = 0; i < n; ++i) {
                const double along = 2.0 * std::numbers::pi * i / n;
                const double ring = 2.0 + std::cos(around);
                const double position[3] = {ring * std::cos(along), ring * std::sin(along),
                                            std::sin(around)};
                const double normal[3] = {std::cos(around) * std::cos(along),
                                          std::cos(around) * std::sin(along), std::sin(around)};
                vertices[j * n + i].set(position);
                normals[j * n + i].set(normal);
            }
        }
        int* corners = mesh.getTrianglesRaw();
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < n; ++i) {
                const int a = j * n + i;
                const int b = j * n + (i + 1) % n;
                const int c = ((j + 1) % n) * n + (i + 1) % n;
                const int d = ((j + 1) % n) * n + i;
                const int cell[6] = {a, b, c, a, c, d};
                std::memcpy(corners + 6 * a, cell, sizeof(cell));
            }
        }
        made->arrayBytes = sizeof(float) * 6 * n * n + sizeof(int) * 6 * n * n;

        OpenMeshTriangles& peer = made->peer;
        peer.request_vertex_normals();
        peer.reserve(n * n, 3 * n * n, 2 * n * n);
        for (int v = 0; v < n * n; ++v) {
            const auto handle = peer.add_vertex({vertices[v].x, vertices[v].y, vertices[v].z});
            peer.set_normal(handle, {normals[v].x, normals[v].y, normals[v].z});
        }
        for (int t = 0; t < 2 * n * n; ++t) {
            peer.add_face(OpenMesh::VertexHandle(corners[3 * t]),
                          OpenMesh::VertexHandle(corners[3 * t + 1]),
                          OpenMesh::VertexHandle(corners[3 * t + 2]));
        }
        return made;
    }();
    return *made;
}

// Empty when `read` holds the mesh's vertices, normals and triangles bit for bit; the
// triangles may start at another corner, keeping their order round.
std::string compareArrays(const float* vertices, const float* normals, const int* corners,
                          std::size_t numVertices, std::size_t numTriangles) {
    const CompactMesh& mesh = *benchMesh().mesh;
    if (numVertices != static_cast<std::size_t>(mesh.getNumVertices()) ||
        numTriangles != static_cast<std::size_t>(mesh.getNumTriangles())) {
        return "counts differ";
    }
    if (std::memcmp(vertices, mesh.getVerticesRaw(), 12 * numVertices) != 0 ||
        std::memcmp(normals, mesh.getNormalsRaw(), 12 * numVertices) != 0) {
        return "vertices or normals differ";
    }
    const int* want = mesh.getTrianglesRaw();
    for (std::size_t t = 0; t < numTriangles; ++t) {
        const int* got = corners + 3 * t;
        bool same = false;
        for (int turn = 0; turn < 3 && !same; ++turn) {
            same = got[turn] == want[3 * t] && got[(turn + 1) % 3] == want[3 * t + 1] &&
                   got[(turn + 2) % 3] == want[3 * t + 2];
        }
        if (!same) {
            return "triangle " + std::to_string(t) + " differs";
        }
    }
    return {};
}

std::string compareWithPeer(const OpenMeshTriangles& peer) {
    std::vector<float> vertices(3 * peer.n_vertices());
    std::vector<float> normals(vertices.size());
    for (const auto vertex : peer.vertices()) {
        std::memcpy(&vertices[3 * vertex.idx()], peer.point(vertex).data(), 12);
        std::memcpy(&normals[3 * vertex.idx()], peer.normal(vertex).data(), 12);
    }
    std::vector<int> corners;
    corners.reserve(3 * peer.n_faces());
    for (const auto face : peer.faces()) {
        for (const auto vertex : peer.fv_range(face)) {
            corners.push_back(vertex.idx());
        }
    }
    return compareArrays(vertices.data(), normals.data(), corners.data(), peer.n_vertices(),
                         peer.n_faces());
}

// Times one side of a task; our sides then report their time over the others'.
template <class Prepare, class Work, class Finish>
void runSide(benchmark::State& state, const char* task, const char* side, Prepare&& prepare,
             Work&& work, Finish&& finish) {
    const auto seconds = formworkBench::runTimed(state, prepare, work, finish);
    if (!seconds) {
        return;
    }
    formworkBench::recordSeconds(task, side, *seconds);
    state.SetBytesProcessed(state.iterations() * static_cast<long>(benchMesh().arrayBytes));
    if (std::string(side) != "formwork") {
        return;
    }
    const std::string raw = std::string(task) == "write" ? "vs_fwrite" : "vs_fread";
    const std::pair<const char*, std::string> others[] = {
        {"raw", raw}, {"om", "vs_OpenMesh_om"}, {"ply", "vs_OpenMesh_ply"}};
    for (const auto& [other, counter] : others) {
        if (const auto median = formworkBench::medianSeconds(task, other)) {
            state.counters[counter] = *seconds / *median;
        }
    }
}

const auto nothing = [] {};
const auto fine = [] { return std::string(); };

void writeRaw(benchmark::State& state) {
    const BenchMesh& bench = benchMesh();
    const std::string path = bench.folder.file("mesh.raw");
    const CompactMesh& mesh = *bench.mesh;
    runSide(
        state, "write", "raw", nothing,
        [&] {
            std::FILE* file = std::fopen(path.c_str(), "wb");
            const std::size_t floats = 3 * static_cast<std::size_t>(mesh.getNumVertices());
            std::fwrite(mesh.getVerticesRaw(), sizeof(float), floats, file);
            std::fwrite(mesh.getNormalsRaw(), sizeof(float), floats, file);
            std::fwrite(mesh.getTrianglesRaw(), sizeof(int), 3 * mesh.getNumTriangles(), file);
            std::fclose(file);
        },
        fine);
}

void writePeer(benchmark::State& state, const char* side, const char* name,
               OpenMesh::IO::Options options) {
    const BenchMesh& bench = benchMesh();
    const std::string path = bench.folder.file(name);
    bool written = false;
    runSide(
        state, "write", side, nothing,
        [&] { written = OpenMesh::IO::write_mesh(bench.peer, path, options); },
        [&] { return written ? std::string() : std::string("OpenMesh did not write"); });
}

void writeOm(benchmark::State& state) {
    writePeer(state, "om", "mesh.om",
              OpenMesh::IO::Options::Binary | OpenMesh::IO::Options::VertexNormal);
}

void writePly(benchmark::State& state) {
    writePeer(state, "ply", "mesh.ply",
              OpenMesh::IO::Options::Binary | OpenMesh::IO::Options::VertexNormal);
}

void writeFormwork(benchmark::State& state) {
    const BenchMesh& bench = benchMesh();
    const std::string path = bench.folder.file("mesh.fwpk");
    bool written = false;
    runSide(
        state, "write", "formwork", nothing,
        [&] {
            ioWriteContext context(path);
            koGeom::packetFile::writeMesh(context, bench.mesh.get(), 1.0, true);
            written = context.close();
        },
        [&] { return written ? std::string() : std::string("the packet file was not written"); });
}

void readRaw(benchmark::State& state) {
    const std::string path = benchMesh().folder.file("mesh.raw");
    const std::size_t numVertices = static_cast<std::size_t>(gridSide) * gridSide;
    const std::size_t numTriangles = 2 * numVertices;
    std::unique_ptr<float[]> vertices;
    std::unique_ptr<float[]> normals;
    std::unique_ptr<int[]> corners;
    runSide(
        state, "read", "raw", nothing,
        [&] {
            std::FILE* file = std::fopen(path.c_str(), "rb");
            vertices.reset(new float[3 * numVertices]);
            normals.reset(new float[3 * numVertices]);
            corners.reset(new int[3 * numTriangles]);
            std::size_t got = std::fread(vertices.get(), sizeof(float), 3 * numVertices, file);
            got += std::fread(normals.get(), sizeof(float), 3 * numVertices, file);
            got += std::fread(corners.get(), sizeof(int), 3 * numTriangles, file);
            std::fclose(file);
            benchmark::DoNotOptimize(got);
        },
        [&] {
            std::string error = compareArrays(vertices.get(), normals.get(), corners.get(),
                                              numVertices, numTriangles);
            vertices.reset();
            normals.reset();
            corners.reset();
            return error;
        });
}

void readPeer(benchmark::State& state, const char* side, const char* name) {
    const std::string path = benchMesh().folder.file(name);
    std::unique_ptr<OpenMeshTriangles> peer;
    bool read = false;
    runSide(
        state, "read", side,
        [&] {
            peer = std::make_unique<OpenMeshTriangles>();
            peer->request_vertex_normals();
        },
        [&] {
            OpenMesh::IO::Options options =
                OpenMesh::IO::Options::Binary | OpenMesh::IO::Options::VertexNormal;
            read = OpenMesh::IO::read_mesh(*peer, path, options);
        },
        [&] {
            std::string error = read ? compareWithPeer(*peer) : "OpenMesh did not read";
            peer.reset();
            return error;
        });
}

void readOm(benchmark::State& state) { readPeer(state, "om", "mesh.om"); }
void readPly(benchmark::State& state) { readPeer(state, "ply", "mesh.ply"); }

void readFormwork(benchmark::State& state) {
    const std::string path = benchMesh().folder.file("mesh.fwpk");
    ko::Reference<CompactMesh> mesh;
    bool read = false;
    runSide(
        state, "read", "formwork", nothing,
        [&] {
            ioReadContext context(path);
            koGeom::packetFile::ReadInterface reader(context);
            ioPacketRegistry registry;
            koGeom::packetFile::registerTypes(&registry, &reader);
            read = reader.read(registry) && context.invalidPacketCount() == 0;
            mesh = reader.getLastMesh(true);
        },
        [&] {
            std::string error =
                !read || !mesh ? std::string("the packet file did not read")
                               : compareArrays(mesh->getVerticesRaw(), mesh->getNormalsRaw(),
                                               mesh->getTrianglesRaw(),
                                               static_cast<std::size_t>(mesh->getNumVertices()),
                                               static_cast<std::size_t>(mesh->getNumTriangles()));
            mesh.reset();
            return error;
        });
}

// The writers first (each read needs its file), the raw and peer sides before ours.
const bool registered = [] {
    const std::pair<const char*, void (*)(benchmark::State&)> sides[] = {
        {"writeRaw", writeRaw}, {"writeOm", writeOm},
        {"writePly", writePly}, {"writeFormwork", writeFormwork},
        {"readRaw", readRaw},   {"readOm", readOm},
        {"readPly", readPly},   {"readFormwork", readFormwork}};
    for (const auto& [name, function] : sides) {
        benchmark::RegisterBenchmark(name, function)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->Iterations(3);
    }
    return true;
}();

} // namespace
