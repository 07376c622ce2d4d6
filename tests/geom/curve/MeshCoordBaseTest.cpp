#include "geom/curve/MeshCoordBase.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "tessar/linear/Point.h"

namespace koGeom {
namespace {

using koLinear::Point;
using Corners = std::array<Point, 3>;

const Corners right = {Point(0, 0, 0), Point(1, 0, 0), Point(0, 1, 0)};

Corners randomTriangle(std::mt19937& random) {
    std::uniform_real_distribution<double> coordinate(-5.0, 5.0);
    Corners c;
    for (Point& p : c) {
        p = Point(coordinate(random), coordinate(random), coordinate(random));
    }
    return c;
}

void expectWeights(const MeshCoordBase& w, double w0, double w1, double w2) {
    EXPECT_NEAR(w.w0(), w0, 1e-12);
    EXPECT_NEAR(w.w1(), w1, 1e-12);
    EXPECT_NEAR(w.w2(), w2, 1e-12);
}

TEST(MeshCoordBase, SetFromPointRoundTripsOnRandomTriangles) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> weight(-0.5, 1.5);
    for (int trial = 0; trial < 200; ++trial) {
        const Corners c = randomTriangle(random);
        const double w0 = weight(random);
        const double w1 = weight(random);
        const MeshCoordBase original(w0, w1, 1.0 - w0 - w1);
        const Point x = original.evaluateBase(c.data());
        MeshCoordBase found;
        ASSERT_TRUE(found.setFromPointBase(c[0], c[1], c[2], x));
        EXPECT_NEAR(found.w0(), original.w0(), 1e-9) << trial;
        EXPECT_NEAR(found.w1(), original.w1(), 1e-9) << trial;
        EXPECT_LT(distance(found.evaluateBase(c.data()), x), 1e-9) << trial;
    }
    MeshCoordBase w;
    ASSERT_TRUE(w.setFromPointBase(right[0], right[1], right[2], right[1]));
    EXPECT_EQ(w, MeshCoordBase(0, 1, 0)); // exactly, by the corner shortcut
    ASSERT_TRUE(w.setFromPointBase(right[0], right[1], right[2], Point(1 / 3.0, 1 / 3.0, 0)));
    expectWeights(w, 1 / 3.0, 1 / 3.0, 1 / 3.0);
}

TEST(MeshCoordBase, ProjectFindsTheNearestPointOfTheTriangleAsDenseSamplingDoes) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> coordinate(-8.0, 8.0);
    constexpr int steps = 150;
    for (int trial = 0; trial < 40; ++trial) {
        // The nearest point, as long as no corner is obtuse (see the case below).
        Corners c = randomTriangle(random);
        while (dot(c[1] - c[0], c[2] - c[0]) <= 0 || dot(c[0] - c[1], c[2] - c[1]) <= 0 ||
               dot(c[0] - c[2], c[1] - c[2]) <= 0) {
            c = randomTriangle(random);
        }
        const Point x(coordinate(random), coordinate(random), coordinate(random));
        MeshCoordBase w;
        ASSERT_TRUE(w.projectBase(c[0], c[1], c[2], x));
        EXPECT_NEAR(w.w0() + w.w1() + w.w2(), 1.0, 1e-12);
        EXPECT_GE(std::min({w.w0(), w.w1(), w.w2()}), -1e-12) << trial;
        double nearest = distance(x, c[0]);
        for (int i = 0; i <= steps; ++i) {
            for (int j = 0; i + j <= steps; ++j) {
                const MeshCoordBase sample(i / double(steps), j / double(steps),
                                           (steps - i - j) / double(steps));
                nearest = std::min(nearest, distance(x, sample.evaluateBase(c.data())));
            }
        }
        EXPECT_LE(distance(x, w.evaluateBase(c.data())), nearest + 1e-12) << trial;
    }
}

TEST(MeshCoordBase, ProjectClampsByTheSignsOfTheWeights) {
    struct Case {
        Point x;
        double w0, w1, w2;
    };
    const Case cases[] = {
        {Point(-3, -2, 4), 1, 0, 0},          // beyond corner 0, and above the plane
        {Point(5, -1, 0), 0, 1, 0},           // beyond corner 1
        {Point(-1, 5, -2), 0, 0, 1},          // beyond corner 2
        {Point(1, 1, 7), 0, 0.5, 0.5},        // beyond edge 1–2
        {Point(0.25, -3, 0), 0.75, 0.25, 0},  // beyond edge 0–1
        {Point(0.2, 0.3, -9), 0.5, 0.2, 0.3}, // inside, below the plane
    };
    for (const Case& k : cases) {
        MeshCoordBase w;
        ASSERT_TRUE(w.projectBase(right[0], right[1], right[2], k.x));
        expectWeights(w, k.w0, k.w1, k.w2);
    }
    // In the wedge beyond an obtuse corner the corner is the answer, though the point is
    // nearer the middle of edge 1–2 (1.83 away against 2.20).
    MeshCoordBase w;
    ASSERT_TRUE(w.projectBase(Point(0, 0, 0), Point(4, 0, 0), Point(2, 1, 0), Point(3.9, 2.1, 0)));
    EXPECT_EQ(w, MeshCoordBase(0, 0, 1));
}

TEST(MeshCoordBase, DegenerateTrianglesLeaveTheCoordinateInvalid) {
    const Point a(1, 2, 3);
    const Point b(4, 5, 6);
    const Point onLine(7, 8, 9);
    for (const Corners& c : {Corners{a, a, b}, Corners{a, b, b}, Corners{a, b, onLine}}) {
        MeshCoordBase w(0.2, 0.3, 0.5);
        EXPECT_FALSE(w.setFromPointBase(c[0], c[1], c[2], a));
        EXPECT_FALSE(w.valid());
        w = MeshCoordBase(0.2, 0.3, 0.5);
        EXPECT_FALSE(w.projectBase(c[0], c[1], c[2], a));
        EXPECT_FALSE(w.valid());
    }
}

TEST(MeshCoordBase, OnEdgeAndOnVertexPickTheNearestAndTheLowerOfEquals) {
    struct Case {
        MeshCoordBase w;
        int edge;   // -1: not on an edge within 1e-6
        int vertex; // -1: not at a corner within 1e-6
    };
    const Case cases[] = {
        {{1, 0, 0}, 0, 0},                // corner 0: edges 0 and 2 meet, 0 wins
        {{0, 1, 0}, 0, 1},                // corner 1: edges 0 and 1
        {{0, 0, 1}, 1, 2},                // corner 2: edges 1 and 2
        {{0, 0.5, 0.5}, 1, -1},           // middle of edge 1
        {{0.5, 0, 0.5}, 2, -1},           // middle of edge 2
        {{0.2, 0.3, 0.5}, -1, -1},        // inside
        {{1.5, -0.5, 0}, -1, -1},         // on the line of edge 0 but past corner 0
        {{0.5, 0.5 - 1e-8, 1e-8}, 0, -1}, // within the tolerance of edge 0
    };
    for (const Case& k : cases) {
        int edge = 7;
        int vertex = 7;
        EXPECT_EQ(k.w.onEdgeBase(right.data(), 1e-6, &edge), k.edge >= 0);
        EXPECT_EQ(edge, k.edge >= 0 ? k.edge : 7); // untouched when false
        EXPECT_EQ(k.w.onVertexBase(right.data(), 1e-6, &vertex), k.vertex >= 0);
        EXPECT_EQ(vertex, k.vertex >= 0 ? k.vertex : 7);
        EXPECT_EQ(k.w.onEdgeBase(right.data(), 1e-6, nullptr), k.edge >= 0);
    }
    // The comparison with the tolerance is strict: nothing is within 0.
    EXPECT_FALSE(MeshCoordBase(1, 0, 0).onVertexBase(right.data(), 0.0, nullptr));
    EXPECT_FALSE(MeshCoordBase(0, 0.5, 0.5).onEdgeBase(right.data(), 0.0, nullptr));
}

} // namespace
} // namespace koGeom
