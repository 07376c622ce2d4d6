#include "tessar/linear/Point.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

#include "tessar/linear/HPoint.h"
#include "tessar/linear/PointFlt.h"

namespace koLinear {
namespace {

TEST(Point, DifferencesCombinationsAndStrictEquivalence) {
    const Point p(1, 2, 3);
    const Point q(4, 6, 3);
    EXPECT_EQ(q - p, Vector(3, 4, 0));
    EXPECT_EQ(q - Vector(3, 4, 0), p);
    EXPECT_EQ(distance(p, q), 5.0);
    EXPECT_EQ(distance2(p, q), 25.0);
    EXPECT_EQ(combine(Point(1, 0, 0), 0.25, Point(0, 1, 0), 0.25, Point(0, 0, 1), 0.5),
              Point(0.25, 0.25, 0.5));
    static_assert(!std::is_convertible_v<Vector, Point>);
    static_assert(!std::is_convertible_v<Point, Vector>);
    EXPECT_FALSE(equivalent(p, Point(1, 2.5, 3), 0.5));
    EXPECT_TRUE(equivalent(p, Point(1, 2.5, 3), std::nextafter(0.5, 1.0)));
}

TEST(PointFlt, NarrowingRoundsToNearestEvenAndDistancesAreFloat) {
    // 1 + 2^-24 lies halfway between the floats 1 and 1 + 2^-23 and rounds to the even one,
    // 1; 1 + 3 * 2^-24 lies halfway between 1 + 2^-23 and 1 + 2^-22 and rounds up to the
    // even one. Truncation would give 1 + 2^-23 for the second.
    const double half = std::ldexp(1.0, -24);
    const float up = 1.0f + std::ldexp(1.0f, -22);
    EXPECT_EQ(PointFlt(Point(1.0 + half, 1.0 + 3.0 * half, -(1.0 + 3.0 * half))),
              PointFlt(1.0f, up, -up));
    // 0.1 is not a float: the nearest float comes back, widened exactly.
    EXPECT_EQ(Point(PointFlt(Point(0.1, 0, 0))).x, static_cast<double>(0.1f));
    static_assert(!std::is_convertible_v<Point, PointFlt>);
    static_assert(!std::is_convertible_v<PointFlt, Point>);
    EXPECT_EQ(distance(PointFlt(1, 2, 3), PointFlt(4, 6, 3)), 5.0f);
    EXPECT_FALSE(equivalent(PointFlt(1, 2, 3), PointFlt(1, 2, 3.5f), 0.5f));
    EXPECT_TRUE(equivalent(PointFlt(1, 2, 3), PointFlt(1, 2, 3.25f), 0.5f));
}

TEST(HPoint, InsideViewOnItsBoundaries) {
    // Every coordinate on the boundary |c| = w counts as inside; the depth is only tested
    // when asked for; w must be strictly positive (with w < 0 no |c| ≤ w holds anyway).
    const double w = 2.0;
    const double beyond = std::nextafter(w, 3.0);
    EXPECT_TRUE(HPoint(w, -w, w, w).insideView(true));
    EXPECT_TRUE(HPoint(-w, w, -w, w).insideView(true));
    EXPECT_FALSE(HPoint(beyond, 0, 0, w).insideView(false));
    EXPECT_FALSE(HPoint(0, -beyond, 0, w).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, -beyond, w).insideView(true));
    EXPECT_TRUE(HPoint(0, 0, beyond, w).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, 0, 0).insideView(false));
}

TEST(HPoint, DehomogenizeDividesByW) {
    EXPECT_EQ(HPoint(Point(1, 2, 3)), HPoint(1, 2, 3, 1));
    EXPECT_EQ(HPoint(1, 0, -1, -4).dehomogenize(), Point(-0.25, 0, 0.25));
    Point out(7, 7, 7);
    EXPECT_FALSE(HPoint(1, 2, 3, 0).dehomogenize(out));
    EXPECT_EQ(out, Point(7, 7, 7));
    EXPECT_TRUE(HPoint(3, 6, 9, 3).dehomogenize(out));
    EXPECT_EQ(out, Point(1, 2, 3));
}

} // namespace
} // namespace koLinear
