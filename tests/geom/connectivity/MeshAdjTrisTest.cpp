#include "geom/connectivity/MeshAdjTris.h"
#include "geom/connectivity/MeshTriAdjTris.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "tessar/core/Reference.h"

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
    EXPECT_EQ(sets.getNumSets(), 0);
    EXPECT_EQ(sets.getSets().count(), 0);
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
    EXPECT_EQ(empty->maxTris(), 5);
    EXPECT_EQ(table->maxTris(), 0);
    EXPECT_EQ(table->numBytesUsed(), 72);
}

} // namespace
} // namespace koGeom
