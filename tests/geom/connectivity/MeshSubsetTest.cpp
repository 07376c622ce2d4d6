#include "geom/connectivity/MeshSubset.h"

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

TEST(MeshSubset, CopiesBothListsAndFailsOnNegativeCounts) {
    std::vector<int> refs = {4, 0, 9};
    const MeshSubset subset(3, refs.data(), 2, refs.data() + 1);
    refs.assign(3, -1);
    EXPECT_EQ(std::vector<int>(subset.getVertexRefs(), subset.getVertexRefs() + 3),
              (std::vector<int>{4, 0, 9}));
    EXPECT_EQ(std::vector<int>(subset.getTriangleRefs(), subset.getTriangleRefs() + 2),
              (std::vector<int>{0, 9}));
    EXPECT_THROW(MeshSubset(3, refs.data(), -2, nullptr), std::bad_alloc);
    // The vertex copy is released when the triangle copy fails (the leak checker sees it).
    heapProbe::FailureScope failing(1);
    EXPECT_THROW(MeshSubset(3, refs.data(), 2, refs.data()), std::bad_alloc);
}

} // namespace
} // namespace koGeom
