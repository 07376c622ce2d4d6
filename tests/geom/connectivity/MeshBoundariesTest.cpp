#include "geom/connectivity/MeshBoundaries.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tessar/core/Reference.h"

namespace koGeom {
namespace {

std::vector<int> values(const Array<int>& array) {
    return std::vector<int>(array.elements(), array.elements() + array.count());
}

// Boundaries (5, 6, 7) and (1, 2, 3, 4).
ko::Reference<MeshBoundaries> twoBoundaries() {
    ko::Reference<MeshBoundaries> boundaries(new MeshBoundaries);
    MeshSequence& sequence = boundaries->getSequence();
    sequence.lengths().setCount(2);
    sequence.lengths().elements()[0] = 3;
    sequence.lengths().elements()[1] = 4;
    sequence.points().setCount(7);
    const int points[] = {5, 6, 7, 1, 2, 3, 4};
    std::copy_n(points, 7, sequence.points().elements());
    return boundaries;
}

TEST(MeshBoundaries, AnswersPerBoundaryAndExtractsOneAlone) {
    ko::Reference<MeshBoundaries> empty(new MeshBoundaries);
    EXPECT_EQ(empty->size(), 0);

    ko::Reference<MeshBoundaries> boundaries = twoBoundaries();
    ASSERT_EQ(boundaries->size(), 2);
    EXPECT_EQ(boundaries->getStart(0), boundaries->getSequence().points().elements());
    EXPECT_EQ(boundaries->getStart(1), boundaries->getStart(0) + 3);
    EXPECT_EQ(boundaries->getEnd(1) - boundaries->getStart(1), 4);
    EXPECT_EQ(boundaries->numBytesUsed(), (7 + 2 + 2 * 2) * 4);

    MeshSequence out;
    out.auxiliary().setCount(3);
    boundaries->extract(1, out);
    EXPECT_EQ(values(out.lengths()), (std::vector<int>{4}));
    EXPECT_EQ(values(out.points()), (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(out.auxiliary().count(), 0);
    ASSERT_NE(out.starts(), nullptr);
    boundaries->extract(0, out); // replaces the built starts too
    EXPECT_EQ(values(out.points()), (std::vector<int>{5, 6, 7}));
    EXPECT_EQ(out.numStarts(), 0);
    EXPECT_EQ(out.starts()[0], out.points().elements());

    boundaries->extract(1, boundaries->getSequence());
    EXPECT_EQ(boundaries->size(), 1);
    EXPECT_EQ(std::vector<int>(boundaries->getStart(0), boundaries->getEnd(0)),
              (std::vector<int>{1, 2, 3, 4}));
}

TEST(MeshBoundaries, CopiesAndAssignsTheSequence) {
    ko::Reference<MeshBoundaries> boundaries = twoBoundaries();
    ko::Reference<MeshBoundaries> copy(new MeshBoundaries(*boundaries));
    EXPECT_EQ(copy->refs(), 1);
    EXPECT_EQ(values(copy->getSequence().points()), values(boundaries->getSequence().points()));

    *boundaries = *boundaries; // self-assignment changes nothing
    EXPECT_EQ(boundaries->getLength(1), 4);

    ko::Reference<MeshBoundaries> target(new MeshBoundaries);
    *target = *boundaries;
    ASSERT_EQ(target->size(), 2);
    EXPECT_EQ(target->getStart(1)[0], 1);
    EXPECT_NE(target->getStart(0), boundaries->getStart(0));
}

} // namespace
} // namespace koGeom
