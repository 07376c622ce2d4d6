#include "tessar/linear/ParamPlane.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

TEST(ParamPlane, EvaluationAndProjection) {
    // A 4 × 2 rectangle at depth -3, centred on the z axis.
    const ParamPlane plane({-2, -1, -3}, {4, 0, 0}, {0, 2, 0});
    EXPECT_EQ(plane.normal, Normal::unitZ());
    EXPECT_EQ(plane.eval(0.5, 0.5), Point(0, 0, -3));
    EXPECT_EQ(plane.eval(1, 0), Point(2, -1, -3));
    double u = 0.0;
    double v = 0.0;
    ASSERT_TRUE(plane.projectParam(Point(1, 0.5, 7), u, v));
    EXPECT_EQ(u, 0.75);
    EXPECT_EQ(v, 0.75);
    // Skewed edges: the parameters of eval(u, v) pushed off along the normal come back.
    const ParamPlane skewed({1, 2, 3}, {1, 1, 0}, {0, 1, 1});
    ASSERT_TRUE(skewed.projectParam(skewed.eval(0.3, -2.0) + Vector(skewed.normal) * 5.0, u, v));
    EXPECT_NEAR(u, 0.3, 1e-14);
    EXPECT_NEAR(v, -2.0, 1e-14);
    EXPECT_FALSE(ParamPlane({}, {1, 0, 0}, {2, 0, 0}).projectParam(Point(), u, v));
    EXPECT_EQ(plane.asPlane().signedDistance(Point(0, 0, 0)), 3.0);
}

TEST(ParamPlane, TransformKeepsParametersAndTransformsTheNormal) {
    const ParamPlane plane({1, 0, 0}, Normal(Vector(1, 1, 0)), {1, -1, 0}, {0, 0, 1});
    // A stretch of y by 2 and a move: the normal goes through the inverse transpose,
    // (1, 1/2, 0) normalised, and stays perpendicular to the edges.
    const AffineMatrix m({1, 0, 0}, {0, 2, 0}, {0, 0, 1}, {0, 0, 5});
    const ParamPlane moved = plane * m;
    EXPECT_EQ(moved.eval(0.25, 2.0), plane.eval(0.25, 2.0) * m);
    EXPECT_TRUE(near(moved.normal, Normal(2 / std::sqrt(5.0), 1 / std::sqrt(5.0), 0), 1e-15));
    EXPECT_NEAR(dot(moved.normal, moved.uEdge), 0.0, 1e-15);

    // A quarter turn about z turns the normal with the plane.
    const AffineMatrix turn = AffineMatrix::makeRotation({0, 0, 1}, std::numbers::pi / 2);
    EXPECT_TRUE(near((plane * turn).normal, Normal(Vector(-1, 1, 0)), 1e-15));

    // A singular matrix flattens the edges but leaves the normal as it was.
    ParamPlane flat = plane;
    EXPECT_FALSE(flat.transform(AffineMatrix::makeScale(1, 1, 0)));
    EXPECT_EQ(flat.normal, plane.normal);
    EXPECT_EQ(flat.vEdge, Vector());
}

} // namespace
} // namespace koLinear
