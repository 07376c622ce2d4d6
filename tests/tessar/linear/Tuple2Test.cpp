#include "tessar/linear/Tuple2.h"

#include <gtest/gtest.h>

#include "tessar/linear/Tolerance.h"

namespace koLinear {
namespace {

TEST(Tuple2, VectorArithmeticInThePlane) {
    const Tuple2 a(3, 4);
    const Tuple2 b(-1, 2);
    EXPECT_EQ(a + b, Tuple2(2, 6));
    EXPECT_EQ(a - b, Tuple2(4, 2));
    EXPECT_EQ(a * 2.0, Tuple2(6, 8));
    EXPECT_EQ(a / 2.0, Tuple2(1.5, 2));
    EXPECT_EQ(-b, Tuple2(1, -2));
    EXPECT_EQ(dot(a, b), 5.0);
    // 3*2 - 4*(-1) = 10: b lies counter-clockwise from a.
    EXPECT_EQ(cross(a, b), 10.0);
    EXPECT_EQ(cross(b, a), -10.0);

    Tuple2 c = a;
    EXPECT_EQ(c.normalize(), 5.0);
    EXPECT_EQ(c, Tuple2(0.6, 0.8));
    c[0] = 1.0;
    EXPECT_EQ(c[0], 1.0);

    EXPECT_FALSE(equivalent(Tuple2(0, 0), Tuple2(0.5, 0), 0.5));
    EXPECT_TRUE(equivalent(Tuple2(0, 0), Tuple2(0.25, 0), 0.5));
    EXPECT_TRUE(isParallel(a, Tuple2(-6, -8), parallelTol));
    EXPECT_FALSE(isParallel(Tuple2(1, 0), Tuple2(1, 2e-10), parallelTol));
    EXPECT_TRUE(isParallel(Tuple2(1, 0), Tuple2(1, 0.5e-10), parallelTol));
}

}  // namespace
}  // namespace koLinear
