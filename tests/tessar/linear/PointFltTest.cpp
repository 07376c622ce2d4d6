#include "tessar/linear/PointFlt.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(PointFlt, NarrowingRoundsToNearestEven) {
    // 1 + 2^-24 lies halfway between the floats 1 and 1 + 2^-23 and rounds to the even one,
    // 1; 1 + 3 * 2^-24 lies halfway between 1 + 2^-23 and 1 + 2^-22 and rounds up to the
    // even one. Truncation would give 1 + 2^-23 for the second.
    const double half = std::ldexp(1.0, -24);
    const PointFlt p(Point(1.0 + half, 1.0 + 3.0 * half, -(1.0 + 3.0 * half)));
    EXPECT_EQ(p.x, 1.0f);
    EXPECT_EQ(p.y, 1.0f + std::ldexp(1.0f, -22));
    EXPECT_EQ(p.z, -(1.0f + std::ldexp(1.0f, -22)));

    // 0.1 is not a float: the nearest float comes back, widened exactly.
    const Point widened(PointFlt(Point(0.1, 0, 0)));
    EXPECT_EQ(widened.x, static_cast<double>(0.1f));
    EXPECT_NE(widened.x, 0.1);
    static_assert(!std::is_convertible_v<Point, PointFlt>);
    static_assert(!std::is_convertible_v<PointFlt, Point>);
}

TEST(PointFlt, DistancesInFloat) {
    EXPECT_EQ(PointFlt(4, 6, 3) - PointFlt(1, 2, 3), VectorFlt(3, 4, 0));
    static_assert(std::is_same_v<decltype(distance(PointFlt(), PointFlt())), float>);
    EXPECT_EQ(distance(PointFlt(1, 2, 3), PointFlt(4, 6, 3)), 5.0f);
    EXPECT_FALSE(equivalent(PointFlt(1, 2, 3), PointFlt(1, 2, 3.5f), 0.5f));
    EXPECT_TRUE(equivalent(PointFlt(1, 2, 3), PointFlt(1, 2, 3.25f), 0.5f));
}

} // namespace
} // namespace koLinear
