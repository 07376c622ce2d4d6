#include "tessar/linear/Point2.h"

#include <gtest/gtest.h>

#include "tessar/linear/Tuple2.h"

namespace koLinear {
namespace {

TEST(Point2, DifferencesAndCombinations) {
    const Point2 p(1, 2);
    const Point2 q(4, 6);
    EXPECT_EQ(q - p, Tuple2(3, 4));
    EXPECT_EQ(p + Tuple2(3, 4), q);
    EXPECT_EQ(q - Tuple2(3, 4), p);
    EXPECT_EQ(distance(p, q), 5.0);
    EXPECT_EQ(distance2(p, q), 25.0);
    EXPECT_EQ(combine(p, 0.5, q, 0.5), Point2(2.5, 4));
    EXPECT_EQ(combine(Point2(1, 0), 0.25, Point2(0, 1), 0.25, Point2(0, 0), 0.5),
              Point2(0.25, 0.25));
    EXPECT_FALSE(equivalent(p, Point2(1, 2.5), 0.5));
    EXPECT_TRUE(equivalent(p, Point2(1, 2.25), 0.5));
    EXPECT_EQ(Tuple2(p), Tuple2(1, 2));
    EXPECT_EQ(Point2(Tuple2(1, 2)), p);
}

}  // namespace
}  // namespace koLinear
