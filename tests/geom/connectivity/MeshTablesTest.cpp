#include "geom/connectivity/MeshAdjTris.h"
#include "geom/connectivity/MeshAdjVertices.h"
#include "geom/connectivity/MeshBoundaries.h"
#include "geom/connectivity/MeshTriAdjTris.h"
#include "geom/mesh/MeshSubset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <new>
#include <numeric>
#include <random>
#include <vector>

#include "tessar/core/Reference.h"
#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

TEST(MeshAdjTris, CopyTrianglesMatchesAScanOfTheTriangleList) {
    std::mt19937 random(3);
    const int numVertices = 40;
    std::vector<int> triangles(3 * 120);
    std::generate(triangles.begin(), triangles.end(), [&] { return random() % numVertices; });
    // (vertex, triangle) pairs of every corner, in shuffled order: each set keeps that order.
    std::vector<int> corners(triangles.size());
    std::iota(corners.begin(), corners.end(), 0);
    std::shuffle(corners.begin(), corners.end(), random);
    std::vector<int> pairs;
    for (int k : corners) {
        pairs.insert(pairs.end(), {triangles[k], k / 3});
    }
    ArrayOfSets sets;
    sets.assignFromPairs(numVertices, static_cast<int>(corners.size()), pairs.data());
    ko::Reference<MeshAdjTris> table(new MeshAdjTris(sets));
    EXPECT_EQ(sets.getNumSets() + sets.getSets().count(), 0); // taken over
    EXPECT_EQ(table->numBytesUsed(), 4 * (40 + 360) + 72);

    std::size_t largest = 0;
    for (int vertex = 0; vertex < numVertices; ++vertex) {
        std::vector<int> expected;
        for (int k : corners) {
            if (triangles[k] == vertex) {
                expected.insert(expected.end(), &triangles[k / 3 * 3], &triangles[k / 3 * 3 + 3]);
            }
        }
        largest = std::max(largest, expected.size() / 3);
        ASSERT_EQ(table->numTris(vertex) * 3u, expected.size());
        std::vector<int> copied(expected.size());
        table->copyTriangles(vertex, copied.data(), triangles.data());
        ASSERT_EQ(copied, expected) << "vertex " << vertex;
    }
    EXPECT_EQ(table->maxTris(), static_cast<int>(largest));
}

// The triangle-to-triangle table shares everything but copyTriangles.
TEST(MeshTriAdjTris, RecordsTheLargestSetAndSwaps) {
    const int pairs[] = {0, 1, 2, 0, 2, 1, 0, 2, 2, 3, 2, 4, 2, 5}; // sizes 2, 0, 5
    ArrayOfSets sets;
    sets.assignFromPairs(3, 7, pairs);
    ko::Reference<MeshTriAdjTris> table(new MeshTriAdjTris(sets));
    EXPECT_EQ(table->maxTris(), 5);
    EXPECT_EQ(table->triIndices(2)[4], 5);

    ko::Reference<MeshTriAdjTris> empty(new MeshTriAdjTris);
    empty->swap(*table);
    EXPECT_TRUE(empty->maxTris() == 5 && table->maxTris() == 0 && table->numBytesUsed() == 72);
}

int* onGeneralHeap(std::initializer_list<int> values) {
    int* array = static_cast<int*>(std::malloc(values.size() * sizeof(int)));
    std::copy(values.begin(), values.end(), array);
    return array;
}

TEST(MeshAdjVertices, ReadsRecordsThroughOffsetsAndEstimatesAFixedSize) {
    // Vertex 0's record {1, 2, 3} is stored last, vertex 2's {} in the middle.
    ko::Reference<MeshAdjVertices> table(new MeshAdjVertices(
        3, 3, onGeneralHeap({4, 0, 3}), onGeneralHeap({2, 0, 2, 0, 3, 1, 2, 3})));
    ko::Reference<MeshAdjVertices> swapped(new MeshAdjVertices);
    swapped->swap(*table);
    EXPECT_EQ(table->numBytesUsed(), 40);
    ASSERT_EQ(swapped->numVertices(0), 3);
    EXPECT_EQ(swapped->vertexIndices(0)[2], 3);
    EXPECT_EQ(swapped->vertexIndices(1)[1], 2);
    EXPECT_TRUE(swapped->numVertices(2) == 0 && swapped->maxVerts() == 3);

    // Deliberate: 32 bytes a vertex plus 40, whatever the records hold.
    ko::Reference<MeshAdjVertices> ten(new MeshAdjVertices(
        10, 0, onGeneralHeap({0, 0, 0, 0, 0, 0, 0, 0, 0, 0}), onGeneralHeap({0})));
    EXPECT_EQ(ten->numBytesUsed(), 360);
}

std::vector<int> values(const Array<int>& array) {
    return std::vector<int>(array.elements(), array.elements() + array.count());
}

TEST(MeshBoundaries, AnswersPerBoundaryExtractsAndCopies) {
    ko::Reference<MeshBoundaries> boundaries(new MeshBoundaries);
    MeshSequence& sequence = boundaries->getSequence();
    const int lengths[] = {3, 4};
    const int points[] = {5, 6, 7, 1, 2, 3, 4};
    sequence.lengths().setCount(2);
    std::copy_n(lengths, 2, sequence.lengths().elements());
    sequence.points().setCount(7);
    std::copy_n(points, 7, sequence.points().elements());

    EXPECT_EQ(boundaries->getEnd(1) - boundaries->getStart(0), 7);
    EXPECT_EQ(boundaries->numBytesUsed(), (7 + 2 + 2 * 2) * 4);

    MeshSequence out;
    boundaries->extract(1, out);
    out.starts();
    out.auxiliary().setCount(3);
    boundaries->extract(0, out); // replaces everything, the caches too
    EXPECT_TRUE(values(out.lengths()) == std::vector<int>{3} &&
                values(out.points()) == (std::vector<int>{5, 6, 7}));
    EXPECT_EQ(out.getSizeInBytes(), (3 + 1) * 4);

    ko::Reference<MeshBoundaries> copy(new MeshBoundaries(*boundaries));
    *copy = *copy; // self-assignment changes nothing
    boundaries->extract(1, boundaries->getSequence());
    EXPECT_EQ(std::vector<int>(boundaries->getStart(0), boundaries->getEnd(0)),
              (std::vector<int>{1, 2, 3, 4}));
    *boundaries = *copy;
    ASSERT_EQ(boundaries->size(), 2);
    EXPECT_EQ(boundaries->getStart(1)[0], 1);
}

TEST(MeshSubset, CopiesBothListsAndFailsOnNegativeCounts) {
    std::vector<int> refs = {4, 0, 9};
    const MeshSubset subset(3, refs.data(), 2, refs.data() + 1);
    refs.assign(3, -1);
    EXPECT_TRUE(subset.getVertexRefs()[2] == 9 && subset.getTriangleRefs()[1] == 9);
    EXPECT_THROW(MeshSubset(3, refs.data(), -2, nullptr), std::bad_alloc);
    // The vertex copy is released when the triangle copy fails (the leak checker sees it).
    heapProbe::FailureScope failing(1);
    EXPECT_THROW(MeshSubset(3, refs.data(), 2, refs.data()), std::bad_alloc);
}

} // namespace
} // namespace koGeom
