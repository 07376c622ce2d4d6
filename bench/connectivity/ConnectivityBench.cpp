// Bit vectors, index remaps and adjacency building on mesh-sized inputs, each measured beside
// memcpy of the bytes it moves.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstring>
#include <random>
#include <vector>

#include "bench/support/MemcpyBaseline.h"
#include "geom/storage/ArrayOfSets.h"
#include "geom/storage/BitVector.h"
#include "geom/storage/Remap.h"

namespace {

constexpr int numElements = 10'000'000;

// The triangle corners of a grid of columns × rows quads, two triangles a quad, in row order,
// as a mesh built row by row stores them.
struct GridMesh {
    GridMesh(int columns, int rows) : numVertices((columns + 1) * (rows + 1)) {
        corners.reserve(static_cast<std::size_t>(columns) * rows * 6);
        for (int row = 0; row < rows; ++row) {
            for (int column = 0; column < columns; ++column) {
                const int corner = row * (columns + 1) + column;
                const int above = corner + columns + 1;
                corners.insert(corners.end(), {corner, corner + 1, above + 1});
                corners.insert(corners.end(), {corner, above + 1, above});
            }
        }
    }
    int numTriangles() const { return static_cast<int>(corners.size() / 3); }

    int numVertices;
    std::vector<int> corners;
};

koGeom::BitVector randomBits(int size, std::mt19937& random) {
    koGeom::BitVector bits(size);
    for (int i = 0; i < size; ++i) {
        if (random() % 2 != 0) {
            bits.setBit(i);
        }
    }
    return bits;
}

std::size_t wordBytes(int size) { return 4 * (static_cast<std::size_t>(size) / 32 + 1); }

// Bytes: the words, read and written in place.
void bitVectorSetBit(benchmark::State& state) {
    koGeom::BitVector bits(numElements);
    formworkBench::runAgainstMemcpy(
        state, wordBytes(numElements), [&] { bits.clearBits(); },
        [&] {
            for (int i = 0; i < numElements; ++i) {
                bits.setBit(i);
            }
            benchmark::DoNotOptimize(bits.numSet());
        });
}

// Bytes: both vectors' words; the left one is read and written, the right one read.
void bitVectorOr(benchmark::State& state) {
    std::mt19937 random(1);
    const koGeom::BitVector original = randomBits(numElements, random);
    const koGeom::BitVector other = randomBits(numElements, random);
    koGeom::BitVector bits;
    formworkBench::runAgainstMemcpy(
        state, 2 * wordBytes(numElements), [&] { bits = original; },
        [&] {
            bits |= other;
            benchmark::DoNotOptimize(bits.numSet());
        });
}

// The vertex indices of the triangles of a grid mesh (3.33 million triangles, 10 million
// indices) through the compacting map of a deletion of 3 per cent of its vertices.
// Bytes: the index array, read and written in place (memcpy of as many bytes reads and writes
// as many); the map's 6.7 MB of reads are not counted.
void remapIndices(benchmark::State& state) {
    const GridMesh grid(1290, 1292);
    std::mt19937 random(2);
    koGeom::BitVector deleted(grid.numVertices);
    for (int i = 0; i < grid.numVertices; ++i) {
        if (random() % 100 < 3) {
            deleted.setBit(i);
        }
    }
    koGeom::Remap compact;
    compact.setDeleteMap(deleted);
    std::vector<int> indices(grid.corners.size());
    const std::size_t bytes = indices.size() * sizeof(int);
    formworkBench::runAgainstMemcpy(
        state, bytes, [&] { std::memcpy(indices.data(), grid.corners.data(), bytes); },
        [&] {
            compact(indices.data(), static_cast<int>(indices.size()));
            benchmark::ClobberMemory();
        });
    state.counters["indices"] = static_cast<double>(indices.size());
}

// The triangles around each vertex of a grid mesh of 2 million triangles, from one (vertex,
// triangle) pair per corner. Bytes: the pairs read, the members and offsets written.
void assignFromPairs(benchmark::State& state) {
    const GridMesh grid(1000, 1000);
    std::vector<int> pairs;
    pairs.reserve(grid.corners.size() * 2);
    for (std::size_t corner = 0; corner < grid.corners.size(); ++corner) {
        pairs.push_back(grid.corners[corner]);
        pairs.push_back(static_cast<int>(corner / 3));
    }
    const int numPairs = static_cast<int>(grid.corners.size());
    koGeom::ArrayOfSets table;
    const std::size_t bytes = sizeof(int) * (pairs.size() + numPairs + grid.numVertices);
    formworkBench::runAgainstMemcpy(
        state, bytes, [] {},
        [&] {
            table.assignFromPairs(grid.numVertices, numPairs, pairs.data());
            benchmark::ClobberMemory();
        });
    state.counters["pairs"] = numPairs;
}

BENCHMARK(bitVectorSetBit)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(bitVectorOr)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(remapIndices)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(assignFromPairs)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
