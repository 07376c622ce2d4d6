#include "geom/connectivity/MeshSubset.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "tessar/core/Reference.h"
#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

TEST(MeshSubset, CopiesBothListsAndFailsOnNegativeCounts) {
    std::vector<int> vertices = {4, 0, 9};
    std::vector<int> triangles = {2, 7};
    const ko::Reference<MeshSubset> subset(new MeshSubset(3, vertices.data(), 2, triangles.data()));
    vertices[0] = -1;
    triangles[1] = -1;
    ASSERT_EQ(subset->getNumVertices(), 3);
    ASSERT_EQ(subset->getNumTriangles(), 2);
    EXPECT_EQ(std::vector<int>(subset->getVertexRefs(), subset->getVertexRefs() + 3),
              (std::vector<int>{4, 0, 9}));
    EXPECT_EQ(std::vector<int>(subset->getTriangleRefs(), subset->getTriangleRefs() + 2),
              (std::vector<int>{2, 7}));

    EXPECT_THROW(MeshSubset(-1, nullptr, 0, nullptr), std::bad_alloc);
    EXPECT_THROW(MeshSubset(3, vertices.data(), -2, nullptr), std::bad_alloc);
    {
        // The vertex copy is released when the triangle copy fails (the leak checker sees it).
        heapProbe::FailureScope failing(1);
        EXPECT_THROW(MeshSubset(3, vertices.data(), 2, triangles.data()), std::bad_alloc);
    }
}

} // namespace
} // namespace koGeom
