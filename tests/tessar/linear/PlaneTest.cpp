#include "tessar/linear/Plane.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "tessar/linear/ParamPlane.h"
#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

TEST(Plane, DistancesAndProjection) {
    const Plane plane({0, 0, 2}, Normal::unitZ());
    EXPECT_EQ(plane.project(Point(5, 6, -1)), Point(5, 6, 2));
    Plane reversed = plane;
    reversed.reverse();
    EXPECT_EQ(reversed.signedDistance(Point(5, 5, 5)), -3.0);

    // Counter-clockwise seen from +z gives the normal +z.
    EXPECT_EQ(Plane(Point(1, 1, 0), Point(2, 1, 0), Point(1, 2, 0)).normal, Normal::unitZ());
    EXPECT_EQ(Plane(Point(), Point(1, 1, 1), Point(2, 2, 2)).normal, Normal());
    // The plane x + y = 1 under a stretch of y by 2 becomes x + y/2 = 1: (0, 2, 0) lies in it.
    // A singular matrix leaves the plane as it was.
    Plane moved({1, 0, 0}, Normal(Vector(1, 1, 0)));
    ASSERT_TRUE(moved.transform(AffineMatrix::makeScale(1, 2, 1)));
    EXPECT_NEAR(moved.signedDistance(Point(0, 2, 0)), 0.0, 1e-15);
    const Plane before = moved;
    EXPECT_FALSE(moved.transform(AffineMatrix::makeScale(1, 0, 1)));
    EXPECT_EQ(moved, before);
}

TEST(Plane, TwoPlanesMeetInALine) {
    // z = 0 and x = 1: direction z × x = y; from a's origin (5, 5, 0) the nearest point of
    // the line is (1, 5, 0).
    const Plane floor({5, 5, 0}, Normal::unitZ());
    const Plane wall({1, -7, 3}, Normal::unitX());
    Line line;
    ASSERT_TRUE(intersect(floor, wall, line));
    EXPECT_TRUE(near(line.direction, Normal::unitY(), 1e-15));
    EXPECT_TRUE(near(line.origin, Point(1, 5, 0), 1e-15));

    const Line untouched({9, 9, 9}, Normal::unitX());
    line = untouched;
    EXPECT_FALSE(intersect(floor, Plane({0, 0, 1}, -Normal::unitZ()), line));
    EXPECT_FALSE(intersect(floor, Plane({0, 0, 1}, Normal(Vector(0, 0.5e-10, 1))), line));
    EXPECT_EQ(line, untouched);
    EXPECT_TRUE(intersect(floor, Plane({0, 0, 1}, Normal(Vector(0, 2e-10, 1))), line));

    // Random planes: the line lies in both, and its origin is the point nearest a's origin.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 50; ++i) {
        const Plane a(Point(unit(random), unit(random), unit(random)),
                      Normal(Vector(unit(random), unit(random), unit(random))));
        const Plane b(Point(unit(random), unit(random), unit(random)),
                      Normal(Vector(unit(random), unit(random), unit(random))));
        ASSERT_TRUE(intersect(a, b, line));
        for (double t : {-2.0, 0.0, 3.0}) {
            EXPECT_NEAR(a.signedDistance(line.eval(t)), 0.0, 1e-9);
            EXPECT_NEAR(b.signedDistance(line.eval(t)), 0.0, 1e-9);
        }
        EXPECT_NEAR(line.projectParam(a.origin), 0.0, 1e-9);
    }
}

TEST(Plane, LineCrossesPlane) {
    const Plane plane({0, 0, 1}, Normal::unitZ());
    double t = -1.0;
    ASSERT_TRUE(intersect(Line({2, 3, 5}, -Normal::unitZ()), plane, t));
    EXPECT_EQ(t, 4.0);
    ASSERT_TRUE(intersect(Line({0, 0, 0}, Normal(Vector(1, 0, 1))), plane, t));
    EXPECT_NEAR(t, std::sqrt(2.0), 1e-15);
    t = -1.0;
    EXPECT_FALSE(intersect(Line({0, 0, 5}, Normal::unitX()), plane, t));
    EXPECT_EQ(t, -1.0);
}

TEST(ParamPlane, EvaluationAndProjection) {
    // A 4 × 2 rectangle at depth -3, centred on the z axis.
    const ParamPlane plane({-2, -1, -3}, {4, 0, 0}, {0, 2, 0});
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
    EXPECT_TRUE(near(moved.normal, Normal(2 / std::sqrt(5.0), 1 / std::sqrt(5.0), 0), 1e-15));

    // A singular matrix flattens the edges but leaves the normal as it was.
    ParamPlane flat = plane;
    EXPECT_FALSE(flat.transform(AffineMatrix::makeScale(1, 1, 0)));
    EXPECT_EQ(flat.normal, plane.normal);
    EXPECT_EQ(flat.vEdge, Vector());
}

} // namespace
} // namespace koLinear
