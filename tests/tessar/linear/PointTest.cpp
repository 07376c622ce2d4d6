#include "tessar/linear/Point.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

#include "tessar/linear/Vector.h"

namespace koLinear {
namespace {

TEST(Point, DifferencesAndCombinations) {
    const Point p(1, 2, 3);
    const Point q(4, 6, 3);
    EXPECT_EQ(q - p, Vector(3, 4, 0));
    EXPECT_EQ(p + Vector(3, 4, 0), q);
    EXPECT_EQ(q - Vector(3, 4, 0), p);
    Point r = p;
    r += Vector(1, 1, 1);
    r -= Vector(0, 0, 2);
    EXPECT_EQ(r, Point(2, 3, 2));
    r[2] = 9.0;
    EXPECT_EQ(r[0] + r[1] + r[2], 14.0);

    EXPECT_EQ(distance(p, q), 5.0);
    EXPECT_EQ(distance2(p, q), 25.0);

    EXPECT_EQ(combine(Point(0, 0, 0), 0.5, Point(2, 4, 6), 0.5), Point(1, 2, 3));
    EXPECT_EQ(combine(Point(1, 0, 0), 0.25, Point(0, 1, 0), 0.25, Point(0, 0, 1), 0.5),
              Point(0.25, 0.25, 0.5));

    EXPECT_EQ(Point(Vector(1, 2, 3)), p);
    EXPECT_EQ(Vector(p), Vector(1, 2, 3));
    static_assert(!std::is_convertible_v<Vector, Point>);
    static_assert(!std::is_convertible_v<Point, Vector>);
}

TEST(Point, EquivalentIsStrict) {
    const Point a(0, 0, 0);
    const Point b(0, 0.5, 0);
    EXPECT_FALSE(equivalent(a, b, 0.5));
    EXPECT_TRUE(equivalent(a, b, std::nextafter(0.5, 1.0)));
    EXPECT_FALSE(equivalent(a, a, 0.0));
}

}  // namespace
}  // namespace koLinear
