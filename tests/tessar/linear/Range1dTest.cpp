#include "tessar/linear/Range1d.h"

#include <cfloat>
#include <limits>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Range1d, AccumulatesFromUnbounded) {
    Range1d r(3, 4);
    r.setUnbounded();
    EXPECT_EQ(r.min, DBL_MAX);
    EXPECT_EQ(r.max, -DBL_MAX);
    EXPECT_TRUE(r.isEmpty());
    EXPECT_EQ(r, Range1d());
    r.extend(5.0);
    EXPECT_EQ(r, Range1d(5, 5));
    EXPECT_FALSE(r.isEmpty());
    // NaNs and empty ranges add nothing, an inverted range included.
    r.extend(-1.0);
    r.extend(std::numeric_limits<double>::quiet_NaN());
    r.extend(Range1d());
    r.extend(Range1d(20, 10));
    EXPECT_EQ(r, Range1d(-1, 5));
    EXPECT_EQ(r.size(), 6.0);
    EXPECT_EQ(r.mid(), 2.0);
    r.extend(Range1d(4, 9));
    EXPECT_EQ(r, Range1d(-1, 9));
    EXPECT_TRUE(Range1d(1, std::numeric_limits<double>::quiet_NaN()).isEmpty());
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

} // namespace
} // namespace koLinear
