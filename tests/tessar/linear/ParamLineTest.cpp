#include "tessar/linear/ParamLine.h"

#include <random>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(ParamLine, ProjectionOntoTheSegmentIsClampedToZeroOne) {
    // The segment from (0, 0, 0) to (2, 0, 0): parameter = x / 2.
    const ParamLine segment(Point(0, 0, 0), Point(2, 0, 0));
    EXPECT_EQ(segment.direction, Vector(2, 0, 0));
    EXPECT_EQ(segment.eval(0.75), Point(1.5, 0, 0));
    EXPECT_EQ(segment.length(), 2.0);
    EXPECT_EQ(segment.projectParam(Point(1, 5, 0)), 0.5);
    EXPECT_EQ(projectParam(Point(-3, 1, 0), segment), -1.5);
    EXPECT_EQ(segment.project(Point(-3, 1, 0)), Point(-3, 0, 0));
    EXPECT_EQ(segment.projectBoundedParam(Point(-3, 1, 0)), 0.0);
    EXPECT_EQ(segment.projectBounded(Point(-3, 1, 0)), Point(0, 0, 0));
    EXPECT_EQ(segment.projectBoundedParam(Point(5, 1, 0)), 1.0);
    EXPECT_EQ(segment.projectBounded(Point(5, 1, 0)), Point(2, 0, 0));
    EXPECT_EQ(segment.projectBounded(Point(0.5, 1, 1)), Point(0.5, 0, 0));

    const ParamLine point(Point(1, 1, 1), Vector());
    EXPECT_EQ(point.projectParam(Point(4, 5, 6)), 0.0);
    EXPECT_EQ(point.projectBounded(Point(4, 5, 6)), Point(1, 1, 1));
    EXPECT_EQ(projectParam(Range3d({0, 0, 0}, {1, 1, 1}), point), Range1d(0, 0));

    // A transformed parametric line keeps its parameters: eval(t) moves with the matrix.
    const AffineMatrix m({0, 1, 0}, {-3, 0, 0}, {0, 0, 2}, {1, 2, 3});
    EXPECT_EQ((segment * m).eval(0.75), segment.eval(0.75) * m);
    EXPECT_EQ(ParamLine(Line({1, 2, 3}, Normal::unitZ())).eval(2.0), Point(1, 2, 5));
}

TEST(ParamLine, RangeProjectsToTheIntervalOfItsCorners) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 50; ++i) {
        SCOPED_TRACE(i);
        Range3d box;
        box.extend(Point(unit(random), unit(random), unit(random)));
        box.extend(Point(unit(random), unit(random), unit(random)));
        const ParamLine line(Point(unit(random), unit(random), unit(random)),
                             Vector(unit(random), unit(random), unit(random)) * 3.0);
        Range1d scan;
        for (int c = 0; c < 8; ++c) {
            scan.extend(line.projectParam(box.corner(c)));
        }
        const Range1d shadow = projectParam(box, line);
        EXPECT_NEAR(shadow.min, scan.min, 1e-12);
        EXPECT_NEAR(shadow.max, scan.max, 1e-12);
    }
    EXPECT_TRUE(projectParam(Range3d(), ParamLine()).isEmpty());
}

} // namespace
} // namespace koLinear
