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

TEST(MeshBoundaries, AnswersPerBoundaryExtractsAndCopies) {
    ko::Reference<MeshBoundaries> boundaries(new MeshBoundaries);
    EXPECT_EQ(boundaries->size(), 0);
    MeshSequence& sequence = boundaries->getSequence();
    const int lengths[] = {3, 4};
    const int points[] = {5, 6, 7, 1, 2, 3, 4};
    sequence.lengths().setCount(2);
    std::copy_n(lengths, 2, sequence.lengths().elements());
    sequence.points().setCount(7);
    std::copy_n(points, 7, sequence.points().elements());

    EXPECT_EQ(boundaries->getStart(1), boundaries->getStart(0) + 3);
    EXPECT_EQ(boundaries->getEnd(1) - boundaries->getStart(1), 4);
    EXPECT_EQ(boundaries->numBytesUsed(), (7 + 2 + 2 * 2) * 4);

    MeshSequence out;
    boundaries->extract(1, out);
    EXPECT_EQ(values(out.points()), (std::vector<int>{1, 2, 3, 4}));
    ASSERT_NE(out.starts(), nullptr);
    out.auxiliary().setCount(3);
    boundaries->extract(0, out); // replaces everything, the caches too
    EXPECT_EQ(values(out.lengths()), (std::vector<int>{3}));
    EXPECT_EQ(values(out.points()), (std::vector<int>{5, 6, 7}));
    EXPECT_EQ(out.getSizeInBytes(), (3 + 1) * 4);

    ko::Reference<MeshBoundaries> copy(new MeshBoundaries(*boundaries));
    EXPECT_EQ(copy->refs(), 1);
    *copy = *copy; // self-assignment changes nothing
    boundaries->extract(1, boundaries->getSequence());
    EXPECT_EQ(std::vector<int>(boundaries->getStart(0), boundaries->getEnd(0)),
              (std::vector<int>{1, 2, 3, 4}));
    *boundaries = *copy;
    ASSERT_EQ(boundaries->size(), 2);
    EXPECT_EQ(boundaries->getStart(1)[0], 1);
}

} // namespace
} // namespace koGeom
