// Compact mesh work at host scale: expanding strips into triangles, bounding a moved mesh,
// and telling listeners about an edit.

#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <vector>

#include "bench/support/MemcpyBaseline.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshModification.h"
#include "geom/spatial/BoundingBox.h"

namespace {

using koGeom::CompactMesh;
using koGeom::MeshModification;

// A million strips of length 10 (eight triangles each) over a ribbon of vertices.
void fullyPopulateTriangleArray(benchmark::State& state) {
    constexpr int numStrips = 1000000;
    constexpr int stripLength = 10;
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    mesh->resizeTriStripArrays(numStrips * stripLength, numStrips);
    int* points = mesh->getTriStripPoints();
    int* lengths = mesh->getTriStripLengths();
    for (int s = 0; s < numStrips; ++s) {
        lengths[s] = stripLength;
        for (int k = 0; k < stripLength; ++k) {
            points[s * stripLength + k] = s * 5 + k;
        }
    }
    const std::size_t outputBytes = sizeof(koGeom::MeshTriangle) * numStrips * (stripLength - 2);
    formworkBench::runAgainstMemcpy(
        state, outputBytes, [&] { mesh->deleteTriangles(); },
        [&] { mesh->fullyPopulateTriangleArray(); });
    state.SetItemsProcessed(state.iterations() * numStrips * (stripLength - 2));
    state.counters["triangles"] = mesh->getNumTriangles();
}
BENCHMARK(fullyPopulateTriangleArray)->UseManualTime()->Unit(benchmark::kMillisecond);

// The host moves 10 million vertices, says so, and asks for the box: the notice invalidates
// the cached range and the box rescans the vertex channel once.
void boundingBoxAfterTransform(benchmark::State& state) {
    constexpr int numVertices = 10000000;
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    mesh->resizeVertexArray(numVertices);
    koGeom::MeshVertex* vertices = mesh->getVertices();
    for (int i = 0; i < numVertices; ++i) {
        vertices[i].set(static_cast<float>(i % 1000), static_cast<float>(i / 1000 % 1000),
                        static_cast<float>(i / 1000000));
    }
    koGeom::BoundingBox box;
    formworkBench::runAgainstMemcpy(
        state, sizeof(koGeom::MeshVertex) * numVertices,
        [&] {
            MeshModification moved(mesh.get(), MeshModification::Type::Transformed, nullptr);
            mesh->modified(moved);
        },
        [&] { mesh->getBoundingBox(box); });
    benchmark::DoNotOptimize(box);
}
BENCHMARK(boundingBoxAfterTransform)->UseManualTime()->Unit(benchmark::kMillisecond);

struct Listener : koRTB::SignalClient {
    void onModified(koGeom::EntityModification& mod) { benchmark::DoNotOptimize(&mod); }
};

// One edit notice through `modified` (the channel walk, then the broadcast) to 10 listeners.
void modifiedBroadcast(benchmark::State& state) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    mesh->resizeVertexArray(100);
    mesh->allocUVArray();
    std::vector<std::unique_ptr<Listener>> listeners;
    for (int i = 0; i < state.range(0); ++i) {
        listeners.push_back(std::make_unique<Listener>());
        mesh->modifiedSignal.connect(*listeners.back(), &Listener::onModified);
    }
    for (auto _ : state) {
        MeshModification mod(mesh.get(), MeshModification::Type::AttributesModified, nullptr);
        mod.uvsModified();
        mesh->modified(mod);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(modifiedBroadcast)->Arg(10);

} // namespace
