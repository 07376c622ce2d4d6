#include "geom/connectivity/MeshAdjTris.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

TEST(MeshAdjTris, TakesTheSetsAndCopiesTrianglesInSetOrder) {
    ko::Reference<MeshAdjTris> empty(new MeshAdjTris);
    EXPECT_EQ(empty->maxTris(), 0);

    // Five triangles; vertex 0 lists triangle 4 before triangle 1.
    const int triangles[] = {0, 1, 2, 3, 0, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13};
    const int pairs[] = {0, 4, 0, 1, 1, 2};
    ArrayOfSets sets;
    sets.assignFromPairs(2, 3, pairs);
    ko::Reference<MeshAdjTris> table(new MeshAdjTris(sets));
    EXPECT_EQ(sets.getNumSets(), 0);
    EXPECT_EQ(sets.getSets().count(), 0);
    EXPECT_EQ(table->maxTris(), 2);
    EXPECT_EQ(table->numBytesUsed(), 4 * (2 + 3) + 72);

    std::vector<int> corners(6);
    table->copyTriangles(0, corners.data(), triangles);
    EXPECT_EQ(corners, (std::vector<int>{11, 12, 13, 3, 0, 4}));

    table->swap(*empty);
    EXPECT_EQ(table->maxTris(), 0);
    EXPECT_EQ(empty->maxTris(), 2);
    EXPECT_EQ(empty->numTris(1), 1);
    EXPECT_EQ(empty->triIndices(1)[0], 2);
}

TEST(MeshAdjTris, CopyTrianglesMatchesAScanOfTheTriangleList) {
    std::mt19937 random(3);
    const int numVertices = 40;
    const int numTriangles = 120;
    std::vector<int> triangles(3 * numTriangles);
    for (int& corner : triangles) {
        corner = static_cast<int>(random() % numVertices);
    }
    // (vertex, triangle) pairs of every corner, in shuffled order.
    std::vector<int> order(3 * numTriangles);
    for (int k = 0; k < 3 * numTriangles; ++k) {
        order[k] = k;
    }
    std::shuffle(order.begin(), order.end(), random);
    std::vector<int> pairs;
    for (int k : order) {
        pairs.push_back(triangles[k]);
        pairs.push_back(k / 3);
    }
    ArrayOfSets sets;
    sets.assignFromPairs(numVertices, 3 * numTriangles, pairs.data());
    ko::Reference<MeshAdjTris> table(new MeshAdjTris(sets));

    int largest = 0;
    for (int vertex = 0; vertex < numVertices; ++vertex) {
        std::vector<int> expected;
        for (int k : order) {
            if (triangles[k] == vertex) {
                const int t = k / 3;
                expected.insert(expected.end(), &triangles[3 * t], &triangles[3 * t + 3]);
            }
        }
        largest = std::max(largest, static_cast<int>(expected.size()) / 3);
        ASSERT_EQ(table->numTris(vertex) * 3, static_cast<int>(expected.size()));
        std::vector<int> corners(expected.size());
        table->copyTriangles(vertex, corners.data(), triangles.data());
        ASSERT_EQ(corners, expected) << "vertex " << vertex;
    }
    EXPECT_EQ(table->maxTris(), largest);
}

} // namespace
} // namespace koGeom
