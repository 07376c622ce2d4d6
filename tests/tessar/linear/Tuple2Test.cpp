#include "tessar/linear/Tuple2.h"

#include <gtest/gtest.h>

#include "tessar/linear/Tolerance.h"

namespace koLinear {
namespace {

TEST(Tuple2, CrossSignParallelismAndLength) {
    // 3*2 - 4*(-1) = 10: (-1, 2) lies counter-clockwise from (3, 4).
    EXPECT_EQ(cross(Tuple2(3, 4), Tuple2(-1, 2)), 10.0);
    EXPECT_EQ(cross(Tuple2(-1, 2), Tuple2(3, 4)), -10.0);
    Tuple2 t(3, 4);
    EXPECT_EQ(t.normalize(), 5.0);
    EXPECT_EQ(t, Tuple2(0.6, 0.8));
    EXPECT_TRUE(isParallel(Tuple2(3, 4), Tuple2(-6, -8), parallelTol));
    EXPECT_FALSE(isParallel(Tuple2(1, 0), Tuple2(1, 2e-10), parallelTol));
    EXPECT_TRUE(isParallel(Tuple2(1, 0), Tuple2(1, 0.5e-10), parallelTol));
    EXPECT_FALSE(equivalent(Tuple2(0, 0), Tuple2(0.5, 0), 0.5));
}

} // namespace
} // namespace koLinear
