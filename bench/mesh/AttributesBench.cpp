// The range scan of a mesh's vertex channel: getRange3 over ten million three-float vertices
// after an untimed invalidation, against memcpy of the same bytes.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <random>

#include "bench/support/MemcpyBaseline.h"
#include "geom/mesh/MeshAttributes.h"
#include "tests/support/MeshAttributesAccess.h"

namespace {

using koGeomTest::MeshAttributesAccess;

void rangeScan(benchmark::State& state) {
    const int numVertices = static_cast<int>(state.range(0));
    auto vertices = MeshAttributesAccess::create("vertices", 3, numVertices);
    std::mt19937 random(5);
    std::uniform_real_distribution<float> coordinate(-1000.0f, 1000.0f);
    float* values = vertices->asFloat();
    for (int i = 0; i < 3 * numVertices; ++i) {
        values[i] = coordinate(random);
    }
    const std::size_t bytes = sizeof(float) * 3 * static_cast<std::size_t>(numVertices);
    formworkBench::runAgainstMemcpy(
        state, bytes, [&] { vertices->invalidateRange(); },
        [&] { benchmark::DoNotOptimize(vertices->getRange3()); });
}

BENCHMARK(rangeScan)->Arg(10'000'000)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
