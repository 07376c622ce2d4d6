#include "geom/curve/Polyline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "geom/curve/Polyline2d.h"

namespace koGeom {
namespace {

using koLinear::Point;
using koLinear::Point2;
using Order = Polyline2d::Order;

// The evaluation and measuring code is shared by both polylines; each check runs on both.
template <class T>
class PolylineKinds : public ::testing::Test {};
using Kinds = ::testing::Types<Polyline, Polyline2d>;
TYPED_TEST_SUITE(PolylineKinds, Kinds);

TYPED_TEST(PolylineKinds, ArcLengthParametersAgreeWithALinearScan) {
    using P = decltype(TypeParam().eval(0.0));
    std::mt19937 random(3);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
    std::vector<P> points(40);
    for (P& p : points) {
        for (int axis = 0; axis < int(sizeof(P) / sizeof(double)); ++axis)
            p[axis] = coordinate(random);
    }
    TypeParam line;
    line.initializeArcLength(40, points.data());
    const double total = line.getLength();
    std::uniform_real_distribution<double> param(-10.0, total + 10.0);
    for (int trial = 0; trial < 300; ++trial) {
        const double a = param(random), b = param(random);
        // Under arc-length parameters a part's length is its parameter interval, clipped.
        EXPECT_NEAR(line.getLength(a, b), std::max(0.0, std::min(b, total) - std::max(a, 0.0)),
                    1e-9);
        int span = 0, found = -1;
        while (span < 38 && line.getVertex(span + 1).param <= a) ++span;
        double w0 = 0.0, w1 = 0.0;
        line.getInterpolants(a, found, w0, w1);
        EXPECT_TRUE(found == span && line.findSpan(a) == span);
        const P& start = line.getVertex(span).point;
        if (a > 0.0 && a < total) {
            EXPECT_NEAR(distance(line.eval(a), start), a - line.getVertex(span).param, 1e-9);
            EXPECT_LT(
                distance(combine(start, w0, line.getVertex(span + 1).point, w1), line.eval(a)),
                1e-9);
        } else {
            EXPECT_TRUE(w0 < 0.0 || w1 < 0.0); // extrapolated, not clamped
        }
    }
    TypeParam empty; // empty and single-vertex polylines answer safely
    EXPECT_TRUE(empty.eval(2.0) == P() && empty.findSpan(2.0) == -1 && !empty.getClosed());
    EXPECT_EQ(empty.getLength() + empty.getLength(-5.0, 5.0), 0.0);
    EXPECT_TRUE(empty.getDomain().isEmpty() && empty.getBoundingBox().isEmpty());
    empty.initializeUniform(1, points.data());
    int span = 7;
    double w[2] = {0.0, 1.0};
    empty.getInterpolants(0.5, span, w[0], w[1]);
    EXPECT_TRUE(span == -1 && w[0] == 1.0 && w[1] == 0.0);
}

TEST(Polyline, DeliberateClosedFlagIsRefreshedOnlyWithTheBox) {
    const Point points[3] = {Point(0, 0, 0), Point(3, 0, 0), Point(3, 4, 0)};
    Polyline line; // a right angle worked by hand: evaluation clamps at the ends
    line.initializeArcLength(3, points);
    EXPECT_TRUE(line.eval(-1.0) == points[0] && line.eval(8.0) == points[2]);
    EXPECT_TRUE(line.eval(5.0) == Point(3, 2, 0) && line.findSpan(7.0) == 1);
    EXPECT_FALSE(line.getClosed());
    line.getVertex(2).point = points[0]; // edited in place, not announced
    EXPECT_FALSE(line.getClosed());
    line.modified();
    EXPECT_TRUE(line.getClosed());
    EXPECT_EQ(line.getBoundingBox().max, Point(3, 0, 0));
    Polyline assigned;
    assigned = line;
    EXPECT_TRUE(assigned.getClosed());
}

Polyline2d appended(const std::vector<Point2>& points) {
    Polyline2d line;
    for (const Point2& p : points) line.appendVertex(p);
    return line;
}

TEST(Polyline2d, TurningOrderAndConvexityOfOutlines) {
    constexpr Order cw = Order::Clockwise, ccw = Order::CounterClockwise;
    struct Case {
        Order order;
        bool closed, convex;
        std::vector<Point2> points;
    };
    const std::vector<Case> cases = {
        {ccw, true, true, {{0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}}},
        {cw, true, true, {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}}},
        // Deliberate: open, a turn to the left is convex and a turn to the right is not.
        {ccw, false, true, {{0, 0}, {1, 0}, {1, 1}}},
        {cw, false, false, {{0, 0}, {1, 0}, {1, -1}}},
        {Order::Mixed, true, false, {{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}, {0, 0}}},
        {Order::Unknown, false, false, {{0, 0}, {1, 1e-11}, {2, 0}, {3, 0}}}, // bump within tol
        {cw, false, false, {{0, 0}, {1, 1e-9}, {2, 0}}},                      // bump beyond tol
        {Order::Unknown, false, false, {{0, 0}, {0, 0}}}, // closing needs three vertices
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(testing::PrintToString(int(&k - cases.data())));
        Polyline2d line;
        line.initializeUniform(int(k.points.size()), k.points.data());
        EXPECT_EQ(line.getClosed(), k.closed);
        EXPECT_EQ(line.getOrder(), k.order);
        EXPECT_EQ(line.isConvex(), k.convex);
        EXPECT_EQ(line.isClockwise() + 2 * line.isCounterClockwise(),
                  k.order == Order::Mixed ? 0 : int(k.order));
    }
}

TEST(Polyline2d, DeliberateOrderQueriesReadTheCachesAsTheyStand) {
    // Deliberate: appending leaves vertex 0 out of the repeat test, so the outline closes; the
    // repeat of the last vertex, of a later one, or one within tolerance, is dropped.
    Polyline2d line = appended({{0, 0}, {0, 0}, {1, 0}, {1, 1}, {0, 1}, {0, 0}});
    for (const Point2& repeat : {Point2(1, 0), Point2(0, 0), Point2(1, 1 + 1e-11)}) {
        line.appendVertex(repeat);
    }
    ASSERT_EQ(line.getNumVertices(), 5);
    EXPECT_EQ(line.getLastVertex().param, 4.0);
    EXPECT_FALSE(line.isConvex()); // appending marked the caches stale
    EXPECT_EQ(line.getBoundingBox().max, Point2(1, 1));
    EXPECT_TRUE(line.isConvex());
    line.modified();
    EXPECT_EQ(line.getOrder(), Order::Unknown);
    EXPECT_TRUE(line.getClosed() && line.isConvex());
    // Unlike the box and order, the closed flag is worked out afresh on every query.
    line.getLastVertex().point = Point2(0, 5);
    EXPECT_FALSE(line.getClosed());
    EXPECT_EQ(line.getBoundingBox().max, Point2(1, 1));
    // Re-parametrising keeps every cache; copies carry them.
    line.getVertex(1).param = 0.5;
    line.makeUniform();
    EXPECT_EQ(line.getVertex(1).param, 1.0);
    EXPECT_EQ(Polyline2d(line).getOrder(), Order::CounterClockwise);
    // The box query refreshes nothing while the box is up to date; the closed query does.
    const Point2 straight[3] = {{0, 0}, {1, 0}, {2, 0}};
    line.initializeUniform(3, straight);
    EXPECT_EQ(line.getBoundingBox().max, Point2(2, 0));
    line.getLastVertex().point = Point2(2, 1); // a left turn, edited in place
    EXPECT_EQ(line.getBoundingBox().max, Point2(2, 0));
    EXPECT_EQ(line.getOrder(), Order::Unknown);
    EXPECT_FALSE(line.getClosed());
    EXPECT_EQ(line.getOrder(), Order::CounterClockwise);
}

} // namespace
} // namespace koGeom
