#include "geom/curve/MeshCoordBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "tessar/linear/Point.h"

namespace koGeom {
namespace {

using koLinear::Point;
using Corners = std::array<Point, 3>;

bool near(const MeshCoordBase& a, const MeshCoordBase& b, double tolerance) {
    return std::fabs(a.w0() - b.w0()) + std::fabs(a.w1() - b.w1()) + std::fabs(a.w2() - b.w2()) <
           tolerance;
}

TEST(MeshCoordBase, SetFromPointAndProjectAgreeWithBruteForceOnRandomTriangles) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-5.0, 5.0), weight(-0.5, 1.5);
    const auto point = [&](double s = 1.0) {
        return Point(s * coordinate(random), s * coordinate(random), s * coordinate(random));
    };
    constexpr int steps = 150;
    for (int trial = 0; trial < 200; ++trial) {
        Corners c = {point(), point(), point()};
        const double w0 = weight(random), w1 = weight(random);
        const MeshCoordBase original(w0, w1, 1.0 - w0 - w1);
        MeshCoordBase w;
        ASSERT_TRUE(w.setFromPointBase(c[0], c[1], c[2], original.evaluateBase(c.data())));
        EXPECT_TRUE(near(w, original, 1e-9)) << trial;
        if (trial >= 40) continue;
        // Projection finds the nearest point of the triangle, as long as no corner is obtuse
        // (see the case below), as dense sampling does.
        while (dot(c[1] - c[0], c[2] - c[0]) <= 0 || dot(c[0] - c[1], c[2] - c[1]) <= 0 ||
               dot(c[0] - c[2], c[1] - c[2]) <= 0) {
            c = {point(), point(), point()};
        }
        const Point x = point(1.6);
        ASSERT_TRUE(w.projectBase(c[0], c[1], c[2], x));
        EXPECT_NEAR(w.w0() + w.w1() + w.w2(), 1.0, 1e-12);
        EXPECT_GE(std::min({w.w0(), w.w1(), w.w2()}), -1e-12) << trial;
        double nearest = distance(x, c[0]);
        for (int i = 0; i <= steps; ++i) {
            for (int j = 0; i + j <= steps; ++j) {
                const MeshCoordBase s(i / double(steps), j / double(steps),
                                      (steps - i - j) / double(steps));
                nearest = std::min(nearest, distance(x, s.evaluateBase(c.data())));
            }
        }
        EXPECT_LE(distance(x, w.evaluateBase(c.data())), nearest + 1e-12) << trial;
    }
    MeshCoordBase w;
    const Corners right = {Point(0, 0, 0), Point(1, 0, 0), Point(0, 1, 0)};
    ASSERT_TRUE(w.setFromPointBase(right[0], right[1], right[2], right[1]));
    EXPECT_EQ(w, MeshCoordBase(0, 1, 0)); // exactly, by the corner shortcut
    // In the wedge beyond an obtuse corner the corner is the answer, though the point is
    // nearer the middle of edge 1–2 (1.83 away against 2.20).
    ASSERT_TRUE(w.projectBase(Point(0, 0, 0), Point(4, 0, 0), Point(2, 1, 0), Point(3.9, 2.1, 0)));
    EXPECT_EQ(w, MeshCoordBase(0, 0, 1));
    // Two corners alike, or three in a line: false, and the coordinate is left invalid.
    const Point a(1, 2, 3), b(4, 5, 6);
    for (const Corners& c : {Corners{a, a, b}, Corners{a, b, b}, Corners{a, b, Point(7, 8, 9)}}) {
        w = MeshCoordBase(0.2, 0.3, 0.5);
        EXPECT_FALSE(w.setFromPointBase(c[0], c[1], c[2], a) || w.valid());
        w = MeshCoordBase(0.2, 0.3, 0.5);
        EXPECT_FALSE(w.projectBase(c[0], c[1], c[2], a) || w.valid());
    }
}

} // namespace
} // namespace koGeom
