#include "tessar/linear/Point.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

#include "tessar/linear/HPoint.h"
#include "tessar/linear/PointFlt.h"

namespace koLinear {
namespace {

TEST(Point, CombinationsAndStrictEquivalence) {
    EXPECT_EQ(combine(Point(1, 0, 0), 0.25, Point(0, 1, 0), 0.25, Point(0, 0, 1), 0.5),
              Point(0.25, 0.25, 0.5));
    static_assert(!std::is_convertible_v<Vector, Point> && !std::is_convertible_v<Point, Vector>);
    EXPECT_FALSE(equivalent(Point(1, 2, 3), Point(1, 2.5, 3), 0.5));
    EXPECT_TRUE(equivalent(Point(1, 2, 3), Point(1, 2.5, 3), std::nextafter(0.5, 1.0)));
    EXPECT_FALSE(equivalent(PointFlt(1, 2, 3), PointFlt(1, 2, 3.5f), 0.5f));
}

TEST(PointFlt, NarrowingRoundsToNearestEven) {
    // 1 + 2^-24 lies halfway between the floats 1 and 1 + 2^-23 and rounds to the even one,
    // 1; 1 + 3 * 2^-24 lies halfway between 1 + 2^-23 and 1 + 2^-22 and rounds up to the
    // even one. Truncation would give 1 + 2^-23 for the second.
    const double half = std::ldexp(1.0, -24);
    const float up = 1.0f + std::ldexp(1.0f, -22);
    EXPECT_EQ(PointFlt(Point(1.0 + half, 1.0 + 3.0 * half, -(1.0 + 3.0 * half))),
              PointFlt(1.0f, up, -up));
    static_assert(!std::is_convertible_v<Point, PointFlt> &&
                  !std::is_convertible_v<PointFlt, Point>);
}

TEST(HPoint, InsideViewOnItsBoundariesAndDehomogenize) {
    // Every coordinate on the boundary |c| = w counts as inside; the depth is only tested
    // when asked for; w must be strictly positive.
    const double w = 2.0;
    const double beyond = std::nextafter(w, 3.0);
    EXPECT_TRUE(HPoint(w, -w, w, w).insideView(true));
    EXPECT_TRUE(HPoint(-w, w, -w, w).insideView(true));
    EXPECT_FALSE(HPoint(beyond, 0, 0, w).insideView(false));
    EXPECT_FALSE(HPoint(0, -beyond, 0, w).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, -beyond, w).insideView(true));
    EXPECT_TRUE(HPoint(0, 0, beyond, w).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, 0, 0).insideView(false));
    Point out(7, 7, 7);
    EXPECT_FALSE(HPoint(1, 2, 3, 0).dehomogenize(out));
    EXPECT_EQ(out, Point(7, 7, 7));
    EXPECT_EQ(HPoint(1, 0, -1, -4).dehomogenize(), Point(-0.25, 0, 0.25));
}

} // namespace
} // namespace koLinear
