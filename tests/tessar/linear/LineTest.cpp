#include "tessar/linear/Line.h"

#include <random>

#include <gtest/gtest.h>

#include "tessar/linear/ParamLine.h"

namespace koLinear {
namespace {

TEST(Line, EvaluationAndProjectionByHand) {
    // The line x = 1, z = 0 running along +y.
    const Line line({1, 0, 0}, Normal::unitY());
    EXPECT_EQ(projectParam(Point(3, -5, 7), line), -5.0);
    EXPECT_EQ(distance2(Point(1, 5, 3), line), 9.0);
    // Transformed lines keep a unit direction.
    const Line moved = line * AffineMatrix({1, 0, 0}, {0, 4, 0}, {0, 0, 1}, {0, 0, 2});
    EXPECT_EQ(moved, Line({1, 0, 2}, Normal::unitY()));
}

TEST(Line, RangeShadowMatchesItsCornersOnBothKindsOfLine) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 50; ++i) {
        Range3d box;
        box.extend(Point(10 * unit(random), 10 * unit(random), 10 * unit(random)));
        box.extend(Point(10 * unit(random), 10 * unit(random), 10 * unit(random)));
        const Point origin(unit(random), unit(random), unit(random));
        const Vector direction(unit(random), unit(random), unit(random));
        // The shadow of the box against a scan of its eight corners.
        auto expectShadowOfCorners = [&box](const auto& line) {
            Range1d scan;
            for (int c = 0; c < 8; ++c) {
                scan.extend(line.projectParam(box.corner(c)));
            }
            const Range1d shadow = projectParam(box, line);
            EXPECT_NEAR(shadow.min, scan.min, 1e-12);
            EXPECT_NEAR(shadow.max, scan.max, 1e-12);
        };
        expectShadowOfCorners(Line(origin, Normal(direction)));
        expectShadowOfCorners(ParamLine(origin, direction * 3.0));
    }
    EXPECT_TRUE(projectParam(Range3d(), Line()).isEmpty());
    EXPECT_TRUE(projectParam(Range3d(), ParamLine()).isEmpty());
}

TEST(ParamLine, ProjectionOntoTheSegmentIsClampedToZeroOne) {
    // The segment from (0, 0, 0) to (2, 0, 0): parameter = x / 2.
    const ParamLine segment(Point(0, 0, 0), Point(2, 0, 0));
    EXPECT_EQ(segment.project(Point(-3, 1, 0)), Point(-3, 0, 0));
    EXPECT_EQ(segment.projectBoundedParam(Point(-3, 1, 0)), 0.0);
    EXPECT_EQ(segment.projectBounded(Point(5, 1, 0)), Point(2, 0, 0));
    EXPECT_EQ(segment.projectBounded(Point(0.5, 1, 1)), Point(0.5, 0, 0));
    // A zero direction projects everything onto its origin.
    const ParamLine point(Point(1, 1, 1), Vector());
    EXPECT_EQ(point.projectBounded(Point(4, 5, 6)), Point(1, 1, 1));
    EXPECT_EQ(projectParam(Range3d({0, 0, 0}, {1, 1, 1}), point), Range1d(0, 0));
    // A transformed parametric line keeps its parameters: eval(t) moves with the matrix.
    const AffineMatrix m({0, 1, 0}, {-3, 0, 0}, {0, 0, 2}, {1, 2, 3});
    EXPECT_EQ((segment * m).eval(0.75), segment.eval(0.75) * m);
    EXPECT_EQ(ParamLine(Line({1, 2, 3}, Normal::unitZ())).eval(2.0), Point(1, 2, 5));
}

} // namespace
} // namespace koLinear
