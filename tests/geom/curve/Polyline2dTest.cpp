#include "geom/curve/Polyline2d.h"

#include <gtest/gtest.h>

#include <vector>

namespace koGeom {
namespace {

using koLinear::Point2;
using Order = Polyline2d::Order;

Polyline2d appended(const std::vector<Point2>& points) {
    Polyline2d line;
    for (const Point2& p : points) {
        line.appendVertex(p);
    }
    return line;
}

TEST(Polyline2d, DeliberateAppendLeavesTheFirstVertexOutOfTheRepeatTest) {
    Polyline2d line = appended({{0, 0}, {0, 0}, {1, 0}, {1, 1}, {0, 0}});
    ASSERT_EQ(line.getNumVertices(), 4); // the second (0, 0) repeated the last vertex
    EXPECT_EQ(line.getLastVertex().point, Point2(0, 0));
    EXPECT_EQ(line.getLastVertex().param, 3.0);
    EXPECT_TRUE(line.getClosed());
    for (const Point2& repeat : {Point2(1, 0), Point2(0, 0), Point2(1, 1 + 1e-11)}) {
        line.appendVertex(repeat);
        EXPECT_EQ(line.getNumVertices(), 4);
    }
    line.appendVertex({2, 2});
    EXPECT_EQ(line.getNumVertices(), 5);
    EXPECT_FALSE(line.getClosed());
    EXPECT_FALSE(line.debugHasDuplicateVertices());
}

TEST(Polyline2d, TurningOrderAndConvexityOfOutlines) {
    struct Case {
        const char* name;
        std::vector<Point2> points;
        Order order;
        bool closed;
        bool convex;
    };
    const std::vector<Case> cases = {
        {"closed square, counter-clockwise",
         {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}},
         Order::CounterClockwise,
         true,
         true},
        {"closed square, clockwise",
         {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}},
         Order::Clockwise,
         true,
         true},
        // Deliberate: open, one turn left is convex, one turn right is not.
        {"open left turn", {{0, 0}, {1, 0}, {1, 1}}, Order::CounterClockwise, false, true},
        {"open right turn", {{0, 0}, {1, 0}, {1, -1}}, Order::Clockwise, false, false},
        {"L outline",
         {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}, {0, 0}},
         Order::Mixed,
         true,
         false},
        {"straight, with a bump below the tolerance",
         {{0, 0}, {1, 1e-11}, {2, 0}, {3, 0}},
         Order::Unknown,
         false,
         false},
        {"a bump above the tolerance", {{0, 0}, {1, 1e-9}, {2, 0}}, Order::Clockwise, false, false},
        {"two points meeting are not closed", {{0, 0}, {0, 0}}, Order::Unknown, false, false},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        Polyline2d line;
        line.initializeUniform(int(k.points.size()), k.points.data());
        EXPECT_EQ(line.getClosed(), k.closed);
        EXPECT_EQ(line.getOrder(), k.order);
        EXPECT_EQ(line.isConvex(), k.convex);
        EXPECT_EQ(line.isClockwise(), k.order == Order::Clockwise);
        EXPECT_EQ(line.isCounterClockwise(), k.order == Order::CounterClockwise);
    }
}

TEST(Polyline2d, DeliberateOrderQueriesReadTheCachesAsTheyStand) {
    Polyline2d line = appended({{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}});
    EXPECT_EQ(line.getOrder(), Order::Unknown); // appending marked the caches stale
    EXPECT_FALSE(line.isConvex());
    const koLinear::Range2d& box = line.getBoundingBox();
    EXPECT_EQ(box.max, Point2(1, 1));
    EXPECT_TRUE(line.isConvex());
    line.modified();
    EXPECT_FALSE(line.isConvex());
    EXPECT_TRUE(line.getClosed());
    EXPECT_TRUE(line.isConvex());

    // Unlike the box and order, the closed flag is worked out afresh on every query.
    line.getLastVertex().point = Point2(0, 5);
    EXPECT_FALSE(line.getClosed());
    EXPECT_EQ(line.getOrder(), Order::CounterClockwise);
    EXPECT_EQ(line.getBoundingBox().max, Point2(1, 1));

    // Re-parametrising keeps every cache.
    line.getVertex(1).param = 10.0;
    line.makeUniform();
    for (int i = 0; i < line.getNumVertices(); ++i) {
        EXPECT_EQ(line.getVertex(i).param, double(i));
    }
    EXPECT_EQ(line.getOrder(), Order::CounterClockwise);

    const Polyline2d copy(line);
    EXPECT_EQ(copy.getOrder(), Order::CounterClockwise);
    Polyline2d other;
    other.swap(line);
    EXPECT_EQ(line.getNumVertices(), 0);
    EXPECT_EQ(line.getOrder(), Order::Unknown);
    EXPECT_EQ(other.getOrder(), Order::CounterClockwise);
}

} // namespace
} // namespace koGeom
