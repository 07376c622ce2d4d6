#include "tessar/linear/Range2d.h"

#include <cfloat>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Range2d, AccumulatesFromUnboundedAndAnswersQueries) {
    Range2d r({0, 0}, {1, 1});
    r.setUnbounded();
    EXPECT_EQ(r.min, Point2(DBL_MAX, DBL_MAX));
    EXPECT_EQ(r.max, Point2(-DBL_MAX, -DBL_MAX));
    r.extend(Point2(2, -1));
    EXPECT_EQ(r, Range2d({2, -1}, {2, -1}));
    r.extend(Point2(-2, 3));
    EXPECT_EQ(r, Range2d({-2, -1}, {2, 3}));
    EXPECT_EQ(r.size(), Tuple2(4, 4));
    EXPECT_EQ(r.mid(), Point2(0, 1));
    EXPECT_EQ(r.corner(1), Point2(2, -1));
    EXPECT_EQ(r.corner(2), Point2(-2, 3));
    // Empty as soon as one axis is inverted.
    EXPECT_TRUE(Range2d({0, 2}, {1, 1}).isEmpty());
    EXPECT_TRUE(r.intersects(Range2d({2, 3}, {5, 5})));
    EXPECT_FALSE(r.intersects(Range2d({0, 4}, {1, 5})));
}

} // namespace
} // namespace koLinear
