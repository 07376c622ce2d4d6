#include "tessar/linear/Line.h"

#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Line, EvaluationAndProjectionByHand) {
    // The line x = 1, z = 0 running along +y.
    const Line line({1, 0, 0}, Normal::unitY());
    EXPECT_EQ(line.eval(2.5), Point(1, 2.5, 0));
    EXPECT_EQ(line.projectParam(Point(3, 5, 0)), 5.0);
    EXPECT_EQ(projectParam(Point(3, -5, 7), line), -5.0);
    EXPECT_EQ(line.project(Point(3, 5, 0)), Point(1, 5, 0));
    EXPECT_EQ(distance(Point(3, 5, 0), line), 2.0);
    EXPECT_EQ(distance2(Point(1, 5, 3), line), 9.0);

    // Transformed lines keep a unit direction.
    const Line moved = line * AffineMatrix({1, 0, 0}, {0, 4, 0}, {0, 0, 1}, {0, 0, 2});
    EXPECT_EQ(moved, Line({1, 0, 2}, Normal::unitY()));
}

TEST(Line, RangeProjectsToTheIntervalOfItsCorners) {
    // The unit cube on the diagonal direction (1, 1, 0)/√2 through the origin: corner
    // parameters run from 0 to 2/√2 = √2.
    const Range3d cube({0, 0, 0}, {1, 1, 1});
    const Range1d diagonal = projectParam(cube, Line({}, Normal(Vector(1, 1, 0))));
    EXPECT_NEAR(diagonal.min, 0.0, 1e-15);
    EXPECT_NEAR(diagonal.max, std::sqrt(2.0), 1e-15);
    EXPECT_TRUE(projectParam(Range3d(), Line()).isEmpty());

    // Against a brute-force scan of the eight corners.
    std::mt19937 random(5);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    for (int i = 0; i < 50; ++i) {
        SCOPED_TRACE(i);
        Range3d box;
        box.extend(Point(10 * unit(random), 10 * unit(random), 10 * unit(random)));
        box.extend(Point(10 * unit(random), 10 * unit(random), 10 * unit(random)));
        const Line line(Point(unit(random), unit(random), unit(random)),
                        Normal(Vector(unit(random), unit(random), unit(random))));
        Range1d scan;
        for (int c = 0; c < 8; ++c) {
            scan.extend(line.projectParam(box.corner(c)));
        }
        const Range1d shadow = projectParam(box, line);
        EXPECT_NEAR(shadow.min, scan.min, 1e-12);
        EXPECT_NEAR(shadow.max, scan.max, 1e-12);
    }
}

} // namespace
} // namespace koLinear
