#include "tessar/linear/Point2.h"

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Point2, DifferencesCombinationsAndStrictEquivalence) {
    EXPECT_EQ(Point2(4, 6) - Point2(1, 2), Tuple2(3, 4));
    EXPECT_EQ(Point2(1, 2) + Tuple2(3, 4), Point2(4, 6));
    EXPECT_EQ(distance(Point2(1, 2), Point2(4, 6)), 5.0);
    EXPECT_EQ(combine(Point2(1, 0), 0.25, Point2(0, 1), 0.25, Point2(0, 0), 0.5),
              Point2(0.25, 0.25));
    EXPECT_FALSE(equivalent(Point2(1, 2), Point2(1, 2.5), 0.5));
    EXPECT_TRUE(equivalent(Point2(1, 2), Point2(1, 2.25), 0.5));
}

} // namespace
} // namespace koLinear
