#include "geom/connectivity/MeshTriAdjTris.h"

#include <gtest/gtest.h>

#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

TEST(MeshTriAdjTris, RecordsTheLargestSetAndSwaps) {
    const int pairs[] = {0, 1, 2, 0, 2, 1, 0, 2, 2, 3, 2, 4, 2, 5}; // sizes 2, 0, 5
    ArrayOfSets sets;
    sets.assignFromPairs(3, 7, pairs);
    ko::Reference<MeshTriAdjTris> table(new MeshTriAdjTris(sets));
    EXPECT_EQ(sets.getNumSets(), 0);
    EXPECT_EQ(table->maxTris(), 5);
    EXPECT_EQ(table->numTris(1), 0);
    ASSERT_EQ(table->numTris(2), 5);
    EXPECT_EQ(table->triIndices(2)[4], 5);
    EXPECT_EQ(table->numBytesUsed(), 4 * (3 + 7) + 72);

    ko::Reference<MeshTriAdjTris> other(new MeshTriAdjTris);
    EXPECT_EQ(other->numBytesUsed(), 72);
    other->swap(*table);
    EXPECT_EQ(other->maxTris(), 5);
    EXPECT_EQ(table->maxTris(), 0);
    EXPECT_EQ(table->numBytesUsed(), 72);
}

} // namespace
} // namespace koGeom
