#include "tessar/linear/Range3d.h"

#include <cfloat>
#include <limits>

#include <gtest/gtest.h>

#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range2d.h"

namespace koLinear {
namespace {

TEST(Range1d, AccumulatesFromUnbounded) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Range1d r(3, 4);
    r.setUnbounded();
    EXPECT_EQ(r, Range1d(DBL_MAX, -DBL_MAX));
    r.extend(5.0);
    EXPECT_EQ(r, Range1d(5, 5));
    EXPECT_FALSE(r.isEmpty());
    // NaNs and empty ranges add nothing, an inverted range included.
    r.extend(-1.0);
    r.extend(nan);
    r.extend(Range1d());
    r.extend(Range1d(20, 10));
    EXPECT_EQ(r, Range1d(-1, 5));
    EXPECT_EQ(r.size(), 6.0);
    EXPECT_EQ(r.mid(), 2.0);
    r.extend(Range1d(4, 9));
    EXPECT_EQ(r, Range1d(-1, 9));
    EXPECT_TRUE(Range1d(1, nan).isEmpty());
}

TEST(Range1d, ContainmentAndIntersectionAreClosed) {
    const Range1d r(0, 1);
    EXPECT_TRUE(r.contains(0.0));
    EXPECT_TRUE(r.contains(1.0));
    EXPECT_FALSE(r.contains(1.0000001));
    EXPECT_TRUE(r.intersects(Range1d(1, 2)));
    EXPECT_FALSE(r.intersects(Range1d(1.5, 2)));
    EXPECT_EQ(r.intersection(Range1d(0.5, 2)), Range1d(0.5, 1));
    EXPECT_EQ(r.clamp(-3.0), 0.0);
    EXPECT_EQ(r.clamp(7.0), 1.0);
}

TEST(Range2d, AccumulatesFromUnboundedAndAnswersQueries) {
    Range2d r({0, 0}, {1, 1});
    r.setUnbounded();
    EXPECT_EQ(r, Range2d({DBL_MAX, DBL_MAX}, {-DBL_MAX, -DBL_MAX}));
    r.extend(Point2(2, -1));
    EXPECT_EQ(r, Range2d({2, -1}, {2, -1}));
    r.extend(Point2(-2, 3));
    EXPECT_EQ(r, Range2d({-2, -1}, {2, 3}));
    EXPECT_EQ(r.size(), Tuple2(4, 4));
    EXPECT_EQ(r.mid(), Point2(0, 1));
    EXPECT_EQ(r.corner(1), Point2(2, -1));
    EXPECT_EQ(r.corner(2), Point2(-2, 3));
    // Empty as soon as one axis is inverted; touching boxes intersect.
    EXPECT_TRUE(Range2d({0, 2}, {1, 1}).isEmpty());
    EXPECT_TRUE(r.intersects(Range2d({2, 3}, {5, 5})));
    EXPECT_FALSE(r.intersects(Range2d({0, 4}, {1, 5})));
}

TEST(Range3d, AccumulatesFromUnbounded) {
    Range3d r({0, 0, 0}, {1, 1, 1});
    r.setUnbounded();
    EXPECT_EQ(r, Range3d({DBL_MAX, DBL_MAX, DBL_MAX}, {-DBL_MAX, -DBL_MAX, -DBL_MAX}));
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
    EXPECT_EQ(r.corner(5), Point(3, 1, 5));
    EXPECT_EQ(r.corner(2), Point(0, 4, 2));
    EXPECT_TRUE(r.contains(Point(3, 4, 5)));
    EXPECT_FALSE(r.contains(Point(3, 4, 5.5)));
    EXPECT_FALSE(r.contains(Range3d({1, 1, 2}, {3, 2, 6})));
    EXPECT_TRUE(r.intersects(Range3d({3, 4, 5}, {6, 6, 6})));
    EXPECT_FALSE(r.intersects(Range3d({1, 1, 6}, {2, 2, 7})));
    EXPECT_EQ(r.intersection(Range3d({1, -5, 4}, {9, 2, 9})), Range3d({1, 1, 4}, {3, 2, 5}));
}

} // namespace
} // namespace koLinear
