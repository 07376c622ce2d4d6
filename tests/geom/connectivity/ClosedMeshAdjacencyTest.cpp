// Vertex-to-triangle adjacency built the way a client builds it, from (vertex, triangle)
// pairs of a generated closed mesh, checked against a brute-force count.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "geom/connectivity/MeshAdjTris.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/storage/ArrayOfSets.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

TEST(ClosedMeshAdjacency, VertexTrianglesMatchABruteForceCount) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::makeTorus(*mesh, 250, 200);
    const int numTriangles = mesh->getNumTriangles();
    const int numVertices = mesh->getNumVertices();
    ASSERT_EQ(numTriangles, 100000);
    const int* corners = mesh->getTrianglesRaw();

    std::vector<int> pairs;
    pairs.reserve(6 * static_cast<std::size_t>(numTriangles));
    for (int t = 0; t < numTriangles; ++t) {
        for (int k = 0; k < 3; ++k) {
            pairs.push_back(corners[3 * t + k]);
            pairs.push_back(t);
        }
    }
    ArrayOfSets sets;
    sets.assignFromPairs(numVertices, 3 * numTriangles, pairs.data());
    ko::Reference<MeshAdjTris> adjacency(new MeshAdjTris(sets));
    EXPECT_EQ(sets.getNumSets(), 0);

    // Brute force: every vertex's triangles, in triangle order, by scanning the whole list.
    std::vector<std::vector<int>> expected(static_cast<std::size_t>(numVertices));
    for (int t = 0; t < numTriangles; ++t) {
        for (int k = 0; k < 3; ++k) {
            expected[static_cast<std::size_t>(corners[3 * t + k])].push_back(t);
        }
    }
    int largest = 0;
    std::vector<int> copied;
    for (int v = 0; v < numVertices; ++v) {
        const std::vector<int>& triangles = expected[static_cast<std::size_t>(v)];
        largest = std::max(largest, static_cast<int>(triangles.size()));
        ASSERT_EQ(adjacency->numTris(v), static_cast<int>(triangles.size())) << v;
        copied.assign(3 * triangles.size(), -1);
        adjacency->copyTriangles(v, copied.data(), corners);
        for (std::size_t i = 0; i < triangles.size(); ++i) {
            for (int k = 0; k < 3; ++k) {
                ASSERT_EQ(copied[3 * i + static_cast<std::size_t>(k)],
                          corners[3 * triangles[i] + k]);
            }
        }
    }
    EXPECT_EQ(largest, 6); // a closed regular torus: six triangles round every vertex
    EXPECT_EQ(adjacency->maxTris(), largest);
}

} // namespace
} // namespace koGeom
