#include "tessar/linear/Point2Flt.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tessar/linear/Point2.h"
#include "tessar/linear/Vector2Flt.h"

namespace koLinear {
namespace {

TEST(Point2Flt, ConversionRoundsAndArithmeticIsFloat) {
    const double half = std::ldexp(1.0, -24);
    const Point2Flt p(Point2(1.0 + half, 1.0 + 3.0 * half));
    EXPECT_EQ(p.x, 1.0f);
    EXPECT_EQ(p.y, 1.0f + std::ldexp(1.0f, -22));
    EXPECT_EQ(Point2(Point2Flt(0.5f, 0.25f)), Point2(0.5, 0.25));

    const Point2Flt a(1, 2);
    const Point2Flt b(4, 6);
    EXPECT_EQ(b - a, Vector2Flt(3, 4));
    EXPECT_EQ(a + Vector2Flt(3, 4), b);
    EXPECT_EQ(distance(a, b), 5.0f);
    EXPECT_EQ(combine(a, 0.5f, b, 0.5f), Point2Flt(2.5f, 4));
    EXPECT_FALSE(equivalent(a, Point2Flt(1.5f, 2), 0.5f));
}

}  // namespace
}  // namespace koLinear
