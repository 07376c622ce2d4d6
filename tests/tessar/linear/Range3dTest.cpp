#include "tessar/linear/Range3d.h"

#include <cfloat>
#include <limits>

#include <gtest/gtest.h>

#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range2d.h"

namespace koLinear {
namespace {

TEST(Range1d, AccumulatesFromUnboundedAndIsClosed) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    Range1d r(3, 4);
    r.setUnbounded();
    EXPECT_EQ(r, Range1d(DBL_MAX, -DBL_MAX));
    // NaNs and empty ranges add nothing, an inverted range included.
    for (const Range1d& add : {Range1d(5, 5), Range1d(-1, -1), Range1d(nan, nan), Range1d(),
                               Range1d(20, 10), Range1d(4, 5)}) {
        r.extend(add);
    }
    r.extend(nan);
    EXPECT_EQ(r, Range1d(-1, 5));
    EXPECT_TRUE(Range1d(1, nan).isEmpty());
    EXPECT_TRUE(r.contains(5.0) && r.intersects(Range1d(5, 6)));
    EXPECT_FALSE(r.contains(5.0000001) || r.intersects(Range1d(5.5, 6)));
    EXPECT_EQ(r.intersection(Range1d(0.5, 9)), Range1d(0.5, 5));
    EXPECT_EQ(r.clamp(-3.0), -1.0);
}

TEST(Range2d, AccumulatesFromUnboundedAndAnswersQueries) {
    Range2d r({0, 0}, {1, 1});
    r.setUnbounded();
    r.extend(Point2(2, -1));
    EXPECT_EQ(r, Range2d({2, -1}, {2, -1}));
    r.extend(Point2(-2, 3));
    EXPECT_EQ(r.corner(1), Point2(2, -1));
    EXPECT_EQ(r.corner(2), Point2(-2, 3));
    // Empty as soon as one axis is inverted; touching boxes intersect.
    EXPECT_TRUE(Range2d({0, 2}, {1, 1}).isEmpty());
    EXPECT_TRUE(r.intersects(Range2d({2, 3}, {5, 5})));
    EXPECT_FALSE(r.intersects(Range2d({0, 4}, {1, 5})));
}

TEST(Range3d, AccumulatesCornersContainmentAndIntersection) {
    Range3d r({0, 0, 0}, {1, 1, 1});
    r.setUnbounded();
    r.extend(Point(1, 2, 3));
    EXPECT_EQ(r, Range3d({1, 2, 3}, {1, 2, 3}));
    r.extend(Point(-1, 4, std::numeric_limits<double>::quiet_NaN()));
    r.extend(Range3d({0, 0, 0}, {0, 0, 10}));
    r.extend(Range3d());
    EXPECT_EQ(r, Range3d({-1, 0, 0}, {1, 4, 10}));
    EXPECT_TRUE(Range3d({0, 0, 1}, {1, 1, 0}).isEmpty());
    const Range3d b({0, 1, 2}, {3, 4, 5});
    // Bit 0 picks max x, bit 1 max y, bit 2 max z.
    EXPECT_EQ(b.corner(5), Point(3, 1, 5));
    EXPECT_EQ(b.corner(2), Point(0, 4, 2));
    EXPECT_TRUE(b.contains(Point(3, 4, 5)));
    EXPECT_FALSE(b.contains(Point(3, 4, 5.5)));
    EXPECT_FALSE(b.contains(Range3d({1, 1, 2}, {3, 2, 6})));
    EXPECT_TRUE(b.intersects(Range3d({3, 4, 5}, {6, 6, 6})));
    EXPECT_FALSE(b.intersects(Range3d({1, 1, 6}, {2, 2, 7})));
    EXPECT_EQ(b.intersection(Range3d({1, -5, 4}, {9, 2, 9})), Range3d({1, 1, 4}, {3, 2, 5}));
}

} // namespace
} // namespace koLinear
