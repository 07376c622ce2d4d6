#include "tessar/linear/Tuple2.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tessar/linear/Point2.h"
#include "tessar/linear/Point2Flt.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Vector2Flt.h"

namespace koLinear {
namespace {

TEST(Tuple2, CrossSignParallelismAndStrictEquivalence) {
    // 3*2 - 4*(-1) = 10: (-1, 2) lies counter-clockwise from (3, 4).
    EXPECT_EQ(cross(Tuple2(3, 4), Tuple2(-1, 2)), 10.0);
    EXPECT_EQ(cross(Vector2Flt(3, 4), Vector2Flt(-1, 2)), 10.0f);
    EXPECT_TRUE(isParallel(Tuple2(3, 4), Tuple2(-6, -8), parallelTol));
    EXPECT_FALSE(isParallel(Tuple2(1, 0), Tuple2(1, 2e-10), parallelTol));
    EXPECT_TRUE(isParallel(Tuple2(1, 0), Tuple2(1, 0.5e-10), parallelTol));
    EXPECT_FALSE(equivalent(Tuple2(0, 0), Tuple2(0.5, 0), 0.5));
    EXPECT_FALSE(equivalent(Point2(1, 2), Point2(1, 2.5), 0.5));
    EXPECT_EQ(combine(Point2(1, 0), 0.25, Point2(0, 1), 0.25, Point2(0, 0), 0.5),
              Point2(0.25, 0.25));
}

TEST(Point2Flt, ConversionRoundsToNearestEven) {
    // Halfway cases, as for PointFlt: 1 + 2^-24 rounds down to 1, 1 + 3 * 2^-24 up to
    // 1 + 2^-22.
    const double half = std::ldexp(1.0, -24);
    EXPECT_EQ(Point2Flt(Point2(1.0 + half, 1.0 + 3.0 * half)),
              Point2Flt(1.0f, 1.0f + std::ldexp(1.0f, -22)));
    EXPECT_EQ(Vector2Flt(Tuple2(0.1, -1.0 / 3.0)), Vector2Flt(0.1f, -1.0f / 3.0f));
}

} // namespace
} // namespace koLinear
