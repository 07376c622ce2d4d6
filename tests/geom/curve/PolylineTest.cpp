#include "geom/curve/Polyline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tessar/core/Reference.h"

#include "geom/curve/Polyline2d.h"

namespace koGeom {
namespace {

using koLinear::Point;
using koLinear::Point2;

// Random points of either polyline's kind, with a fixed seed.
template <class P>
std::vector<P> randomPoints(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> coordinate(-10.0, 10.0);
    std::vector<P> points(n);
    for (P& p : points) {
        for (int axis = 0; axis < int(sizeof(P) / sizeof(double)); ++axis) {
            p[axis] = coordinate(random);
        }
    }
    return points;
}

// The evaluation and measuring code is shared by both polylines; each check runs on both.
template <class T>
class PolylineKinds : public ::testing::Test {};
using Kinds = ::testing::Types<Polyline, Polyline2d>;
TYPED_TEST_SUITE(PolylineKinds, Kinds);

TYPED_TEST(PolylineKinds, ArcLengthParametersMeasureLengthAndPlacePoints) {
    using P = decltype(TypeParam().eval(0.0));
    const std::vector<P> points = randomPoints<P>(40, 3);
    TypeParam line;
    line.initializeArcLength(40, points.data());
    const double total = line.getLength();
    ASSERT_DOUBLE_EQ(line.getDomain().max, total);
    std::mt19937 random(5);
    std::uniform_real_distribution<double> param(-10.0, total + 10.0);
    for (int trial = 0; trial < 300; ++trial) {
        const double a = param(random);
        const double b = param(random);
        // Under arc-length parameters a part's length is its parameter interval, clipped.
        const double expected = std::max(0.0, std::min(b, total) - std::max(a, 0.0));
        EXPECT_NEAR(line.getLength(a, b), expected, 1e-9) << a << " " << b;
        // The span by a linear scan, and the point at its distance along that span.
        int span = 0;
        while (span < 38 && line.getVertex(span + 1).param <= a) {
            ++span;
        }
        EXPECT_EQ(line.findSpan(a), span) << a;
        const P& start = line.getVertex(span).point;
        if (a > 0.0 && a < total) {
            EXPECT_NEAR(distance(line.eval(a), start), a - line.getVertex(span).param, 1e-9);
        }
        int found = -1;
        double w0 = 0.0;
        double w1 = 0.0;
        line.getInterpolants(a, found, w0, w1);
        EXPECT_EQ(found, span);
        const P onLine = combine(start, w0, line.getVertex(span + 1).point, w1);
        if (a > 0.0 && a < total) {
            EXPECT_LT(distance(onLine, line.eval(a)), 1e-9);
        } else {
            EXPECT_TRUE(w0 < 0.0 || w1 < 0.0); // extrapolated, not clamped
        }
    }
    EXPECT_NEAR(line.getLength(3, 17),
                line.getLength(line.getVertex(3).param, line.getVertex(17).param), 1e-9);
}

TYPED_TEST(PolylineKinds, EmptyAndSingleVertexPolylinesAnswerSafely) {
    using P = decltype(TypeParam().eval(0.0));
    TypeParam line;
    EXPECT_EQ(line.eval(2.0), P());
    EXPECT_EQ(line.findSpan(2.0), -1);
    EXPECT_EQ(line.getLength(), 0.0);
    EXPECT_EQ(line.getLength(-5.0, 5.0), 0.0);
    EXPECT_TRUE(line.getDomain().isEmpty());
    EXPECT_TRUE(line.getBoundingBox().isEmpty());
    EXPECT_FALSE(line.getClosed());
    const std::vector<P> one = randomPoints<P>(1, 9);
    line.initializeUniform(1, one.data());
    int span = 7;
    double w0 = 0.0;
    double w1 = 1.0;
    line.getInterpolants(0.5, span, w0, w1);
    EXPECT_EQ(span, -1);
    EXPECT_EQ(w0, 1.0);
    EXPECT_EQ(w1, 0.0);
    EXPECT_EQ(line.eval(0.5), one[0]);
}

TEST(Polyline, RightAngleWorkedByHand) {
    const Point points[3] = {Point(0, 0, 0), Point(3, 0, 0), Point(3, 4, 0)};
    Polyline line;
    line.initializeArcLength(3, points);
    EXPECT_EQ(line.getVertex(1).param, 3.0);
    EXPECT_EQ(line.getVertex(2).param, 7.0);
    EXPECT_EQ(line.getLength(), 7.0);
    EXPECT_EQ(line.eval(-1.0), points[0]);
    EXPECT_EQ(line.eval(8.0), points[2]);
    EXPECT_EQ(line.eval(5.0), Point(3, 2, 0));
    EXPECT_EQ(line.findSpan(7.0), 1);
    EXPECT_EQ(line.getLength(1.5, 5.0), 3.5);
    EXPECT_EQ(line.getLength(0, 1), 3.0);
    EXPECT_EQ(line.getLength(2, 1), 0.0);
    const koLinear::Range3d& box = line.getBoundingBox();
    EXPECT_EQ(box.min, Point(0, 0, 0));
    EXPECT_EQ(box.max, Point(3, 4, 0));
}

TEST(Polyline, DeliberateClosedFlagIsRefreshedOnlyWithTheBox) {
    const Point points[3] = {Point(0, 0, 0), Point(1, 0, 0), Point(1, 1, 0)};
    const double params[3] = {0, 1, 2};
    ko::Reference<Polyline> line(new Polyline(3, points, params));
    EXPECT_FALSE(line->getClosed());
    line->getVertex(2).point = points[0]; // edited in place, not announced
    EXPECT_FALSE(line->getClosed());
    EXPECT_EQ(line->getBoundingBox().max, Point(1, 1, 0));
    line->modified();
    EXPECT_TRUE(line->getClosed());
    EXPECT_EQ(line->getBoundingBox().max, Point(1, 0, 0));

    const Polyline copy(*line);
    EXPECT_EQ(copy.refs(), 0);
    EXPECT_TRUE(copy.getClosed());
    Polyline assigned;
    assigned = copy;
    EXPECT_EQ(assigned.getVertex(2).point, points[0]);
    EXPECT_EQ(assigned.getDomain(), koLinear::Range1d(0, 2));
}

} // namespace
} // namespace koGeom
