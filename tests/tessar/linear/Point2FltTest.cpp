#include "tessar/linear/Point2Flt.h"

#include <cmath>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Point2Flt, ConversionRoundsToNearestEven) {
    // Halfway cases, as for PointFlt: 1 + 2^-24 rounds down to 1, 1 + 3 * 2^-24 up to
    // 1 + 2^-22.
    const double half = std::ldexp(1.0, -24);
    const Point2Flt p(Point2(1.0 + half, 1.0 + 3.0 * half));
    EXPECT_EQ(p.x, 1.0f);
    EXPECT_EQ(p.y, 1.0f + std::ldexp(1.0f, -22));
    EXPECT_EQ(Point2Flt(4, 6) - Point2Flt(1, 2), Vector2Flt(3, 4));
    EXPECT_EQ(distance(Point2Flt(1, 2), Point2Flt(4, 6)), 5.0f);
}

} // namespace
} // namespace koLinear
