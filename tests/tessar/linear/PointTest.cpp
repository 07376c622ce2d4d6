#include "tessar/linear/Point.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Point, DifferencesAndCombinations) {
    const Point p(1, 2, 3);
    const Point q(4, 6, 3);
    EXPECT_EQ(q - p, Vector(3, 4, 0));
    EXPECT_EQ(p + Vector(3, 4, 0), q);
    EXPECT_EQ(q - Vector(3, 4, 0), p);
    EXPECT_EQ(distance(p, q), 5.0);
    EXPECT_EQ(distance2(p, q), 25.0);
    EXPECT_EQ(combine(Point(0, 0, 0), 0.5, Point(2, 4, 6), 0.5), Point(1, 2, 3));
    EXPECT_EQ(combine(Point(1, 0, 0), 0.25, Point(0, 1, 0), 0.25, Point(0, 0, 1), 0.5),
              Point(0.25, 0.25, 0.5));
    EXPECT_EQ(Vector(p), Vector(1, 2, 3));
    static_assert(!std::is_convertible_v<Vector, Point>);
    static_assert(!std::is_convertible_v<Point, Vector>);
}

TEST(Point, EquivalentIsStrict) {
    EXPECT_FALSE(equivalent(Point(0, 0, 0), Point(0, 0.5, 0), 0.5));
    EXPECT_TRUE(equivalent(Point(0, 0, 0), Point(0, 0.5, 0), std::nextafter(0.5, 1.0)));
    EXPECT_FALSE(equivalent(Point(1, 2, 3), Point(1, 2, 3), 0.0));
}

} // namespace
} // namespace koLinear
