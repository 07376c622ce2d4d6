// Writing and reading a half-edge mesh of 1,000,000 triangles (the closed torus grid of the
// half-edge mesh benchmarks: 500,000 vertices, 3,000,000 half-edges, 1,000,000 faces) as
// packets, through a file in a temporary directory.
//
// BM_TopoMeshPackets/Write times writePF into a file, closed; BM_TopoMeshPackets/Read times a
// whole read through a registry (every record made, every link patched, the mesh checked).
// Beside each, in the same iteration and untimed, the record bytes (216 MB) go through one
// fwrite or fread of a file in the same directory: the counter vs_raw is the packet time over
// that raw time, and file_MB the size of the packet file. Every read is checked against the
// mesh written.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/topomesh/TorusGrid.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "geom/topomesh/TopoMesh.h"

namespace {

using koGeom::TopoMesh;
using koGeom::TopoMeshVertex;
using Clock = std::chrono::steady_clock;

// A directory of its own under the system's temporary directory, removed at exit.
struct TemporaryDirectory {
    TemporaryDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "topomeshbench-XXXXXX");
        if (mkdtemp(pattern.data()) == nullptr) {
            std::perror("mkdtemp");
            std::exit(1);
        }
        path = pattern;
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(path); }
    std::filesystem::path path;
};

const TemporaryDirectory& directory() {
    static const TemporaryDirectory made;
    return made;
}

const TopoMesh& torus() {
    static const ko::Reference<TopoMesh> mesh = [] {
        const topoBench::TorusGrid& grid = topoBench::benchGrid();
        ko::Reference<TopoMesh> built(new TopoMesh);
        std::vector<TopoMeshVertex> vertices;
        for (const auto& p : grid.points) {
            vertices.push_back(built->allocVertex({p[0], p[1], p[2]}));
        }
        for (const auto& t : grid.triangles) {
            built->allocTriangle(vertices[t[0]], vertices[t[1]], vertices[t[2]]);
        }
        return built;
    }();
    return *mesh;
}

std::size_t recordBytes(const TopoMesh& mesh) {
    return 48u * static_cast<std::size_t>(mesh.numVertices()) +
           56u * static_cast<std::size_t>(mesh.numEdges()) +
           24u * static_cast<std::size_t>(mesh.numFaces());
}

// The seconds of one fwrite (or fread) of `bytes` bytes to (or from) a file of its own.
double rawSeconds(std::size_t bytes, bool write) {
    static std::vector<char> buffer(bytes, 1);
    const std::string path = (directory().path / "raw").string();
    const auto start = Clock::now();
    std::FILE* file = std::fopen(path.c_str(), write ? "wb" : "rb");
    const std::size_t moved = write ? std::fwrite(buffer.data(), 1, bytes, file)
                                    : std::fread(buffer.data(), 1, bytes, file);
    std::fclose(file);
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    if (moved != bytes) {
        std::fprintf(stderr, "raw %s moved %zu of %zu bytes\n", write ? "write" : "read", moved,
                     bytes);
        std::exit(1);
    }
    benchmark::DoNotOptimize(buffer.data());
    return elapsed.count();
}

std::string packetFile() { return (directory().path / "torus.fwpk").string(); }

bool writePackets(const TopoMesh& mesh) {
    ioWriteContext context(packetFile());
    mesh.writePF(context);
    return context.close();
}

void reportRatio(benchmark::State& state, double packets, double raw) {
    state.counters["vs_raw"] = packets / raw;
    state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(packetFile())) / 1e6;
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(recordBytes(torus())));
}

void write(benchmark::State& state) {
    const TopoMesh& mesh = torus();
    double packets = 0.0;
    double raw = 0.0;
    for (auto _ : state) {
        const auto start = Clock::now();
        const bool ok = writePackets(mesh);
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        if (!ok) {
            state.SkipWithError("packet write failed");
            return;
        }
        state.SetIterationTime(elapsed.count());
        packets += elapsed.count();
        raw += rawSeconds(recordBytes(mesh), true);
    }
    reportRatio(state, packets, raw);
}

void read(benchmark::State& state) {
    const TopoMesh& mesh = torus();
    if (!writePackets(mesh)) {
        state.SkipWithError("packet write failed");
        return;
    }
    rawSeconds(recordBytes(mesh), true);
    double packets = 0.0;
    double raw = 0.0;
    for (auto _ : state) {
        ko::vector<ko::Reference<TopoMesh>> meshes;
        const auto start = Clock::now();
        {
            ioPacketRegistry registry;
            TopoMesh::registerTypes(registry, nullptr, nullptr);
            ioReadContext context(packetFile());
            if (!context.readAll(registry) || context.invalidPacketCount() != 0) {
                state.SkipWithError(context.error().toString().c_str());
                return;
            }
            meshes = TopoMesh::takeReadMeshes(registry);
        }
        const std::chrono::duration<double> elapsed = Clock::now() - start;
        if (meshes.size() != 1 || meshes[0]->numVertices() != mesh.numVertices() ||
            meshes[0]->numEdges() != mesh.numEdges() || meshes[0]->numFaces() != mesh.numFaces()) {
            state.SkipWithError("the mesh read is not the mesh written");
            return;
        }
        state.SetIterationTime(elapsed.count());
        packets += elapsed.count();
        state.PauseTiming();
        meshes.clear();
        state.ResumeTiming();
        raw += rawSeconds(recordBytes(mesh), false);
    }
    reportRatio(state, packets, raw);
}

const bool registered = [] {
    for (const auto& [name, function] : {std::pair{"BM_TopoMeshPackets/Write", &write},
                                         std::pair{"BM_TopoMeshPackets/Read", &read}}) {
        benchmark::RegisterBenchmark(name, function)
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(2);
    }
    return true;
}();

} // namespace
