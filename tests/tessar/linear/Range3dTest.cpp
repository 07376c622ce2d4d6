#include "tessar/linear/Range3d.h"

#include <cfloat>
#include <limits>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Range3d, AccumulatesFromUnbounded) {
    Range3d r({0, 0, 0}, {1, 1, 1});
    r.setUnbounded();
    EXPECT_EQ(r.min, Point(DBL_MAX, DBL_MAX, DBL_MAX));
    EXPECT_EQ(r.max, Point(-DBL_MAX, -DBL_MAX, -DBL_MAX));
    EXPECT_TRUE(r.isEmpty());
    r.extend(Point(1, 2, 3));
    EXPECT_EQ(r, Range3d({1, 2, 3}, {1, 2, 3}));
    EXPECT_FALSE(r.isEmpty());
    r.extend(Point(-1, 4, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(r, Range3d({-1, 2, 3}, {1, 4, 3}));
    r.extend(Range3d({0, 0, 0}, {0, 0, 10}));
    r.extend(Range3d());
    EXPECT_EQ(r, Range3d({-1, 0, 0}, {1, 4, 10}));
    EXPECT_EQ(r.size(), Vector(2, 4, 10));
    EXPECT_EQ(r.mid(), Point(0, 2, 5));
    EXPECT_TRUE(Range3d({0, 0, 1}, {1, 1, 0}).isEmpty());
}

TEST(Range3d, CornersContainmentAndIntersection) {
    const Range3d r({0, 1, 2}, {3, 4, 5});
    // Bit 0 picks max x, bit 1 max y, bit 2 max z.
    EXPECT_EQ(r.corner(0), r.min);
    EXPECT_EQ(r.corner(5), Point(3, 1, 5));
    EXPECT_EQ(r.corner(6), Point(0, 4, 5));
    EXPECT_EQ(r.corner(7), r.max);
    EXPECT_TRUE(r.contains(Point(3, 4, 5)));
    EXPECT_FALSE(r.contains(Point(3, 4, 5.5)));
    EXPECT_FALSE(r.contains(Range3d({1, 1, 2}, {3, 2, 6})));
    EXPECT_TRUE(r.intersects(Range3d({3, 4, 5}, {6, 6, 6})));
    EXPECT_FALSE(r.intersects(Range3d({1, 1, 6}, {2, 2, 7})));
    EXPECT_EQ(r.intersection(Range3d({1, -5, 4}, {9, 2, 9})), Range3d({1, 1, 4}, {3, 2, 5}));
}

} // namespace
} // namespace koLinear
