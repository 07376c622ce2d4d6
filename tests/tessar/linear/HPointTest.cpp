#include "tessar/linear/HPoint.h"

#include <cmath>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(HPoint, InsideViewOnItsBoundaries) {
    const double w = 2.0;
    const double beyond = std::nextafter(w, 3.0);
    // Every coordinate on the boundary |c| = w counts as inside.
    EXPECT_TRUE(HPoint(w, -w, w, w).insideView(true));
    EXPECT_TRUE(HPoint(-w, w, -w, w).insideView(false));
    EXPECT_FALSE(HPoint(beyond, 0, 0, w).insideView(false));
    EXPECT_FALSE(HPoint(0, -beyond, 0, w).insideView(false));
    // Depth is only tested when asked for.
    EXPECT_FALSE(HPoint(0, 0, beyond, w).insideView(true));
    EXPECT_TRUE(HPoint(0, 0, beyond, w).insideView(false));
    EXPECT_FALSE(HPoint(0, 0, -beyond, w).insideView(true));
    // w must be strictly positive: behind the eye or at infinity is outside.
    EXPECT_FALSE(HPoint(0, 0, 0, 0).insideView(false));
    EXPECT_FALSE(HPoint(-1, -1, -1, -2).insideView(true));
}

TEST(HPoint, DehomogenizeDividesByW) {
    EXPECT_EQ(HPoint(Point(1, 2, 3)), HPoint(1, 2, 3, 1));
    EXPECT_EQ(HPoint(2, 4, 6, 2).dehomogenize(), Point(1, 2, 3));
    EXPECT_EQ(HPoint(1, 0, -1, -4).dehomogenize(), Point(-0.25, 0, 0.25));

    Point out(7, 7, 7);
    EXPECT_FALSE(HPoint(1, 2, 3, 0).dehomogenize(out));
    EXPECT_EQ(out, Point(7, 7, 7));
    EXPECT_TRUE(HPoint(3, 6, 9, 3).dehomogenize(out));
    EXPECT_EQ(out, Point(1, 2, 3));
}

} // namespace
} // namespace koLinear
