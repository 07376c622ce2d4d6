#include "geom/curve/MeshCoordBase.h"

#include <cmath>

#include "tessar/linear/ParamLine.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Vector.h"

namespace koGeom {

using koLinear::Point;
using koLinear::Vector;

namespace {

// A non-degenerate triangle ready for weighing points: its corners, its normal (twice its
// area in length) and the inverse of that length.
struct Triangle {
    const Point& p0;
    const Point& p1;
    const Point& p2;
    Vector normal;
    double inverseLength = 0.0;

    Triangle(const Point& a, const Point& b, const Point& c) noexcept
        : p0(a), p1(b), p2(c), normal(cross(c - b, a - b)) {}

    // False for a degenerate triangle, whose normal is too short to divide by.
    bool setUp() noexcept {
        const double length2 = normal.length2();
        if (length2 < koLinear::epsilon2Tol) {
            return false;
        }
        inverseLength = 1.0 / std::sqrt(length2);
        return true;
    }

    // The area of the triangle (a, b, x) as a fraction of this one's, negative when it turns
    // the other way round.
    double signedFraction(const Point& a, const Point& b, const Point& x) const noexcept {
        const Vector c = cross(a - x, b - x);
        const double sign = dot(c, normal) < 0.0 ? -1.0 : 1.0;
        return sign * c.length() * inverseLength;
    }

    // The weights of `x`, a point of the triangle's plane; a point at a corner gets exactly
    // that corner's weights.
    MeshCoordBase weigh(const Point& x) const noexcept {
        if (equivalent(x, p0, koLinear::epsilonTol)) {
            return {1.0, 0.0, 0.0};
        }
        if (equivalent(x, p1, koLinear::epsilonTol)) {
            return {0.0, 1.0, 0.0};
        }
        if (equivalent(x, p2, koLinear::epsilonTol)) {
            return {0.0, 0.0, 1.0};
        }
        const double w0 = signedFraction(p1, p2, x);
        const double w1 = signedFraction(p2, p0, x);
        return {w0, w1, 1.0 - w0 - w1};
    }

    // The weights of the point of segment a–b nearest to `x`.
    MeshCoordBase weighNearestOn(const Point& a, const Point& b, const Point& x) const noexcept {
        return weigh(koLinear::ParamLine(a, b).projectBounded(x));
    }
};

// The index of the smallest of d[0], d[1], d[2] (the lower-numbered among equals) when it is
// below tolerance², else -1.
int nearestWithin(const double d[3], double tolerance) noexcept {
    const double tolerance2 = tolerance * tolerance;
    for (int i = 0; i < 3; ++i) {
        if (tolerance2 > d[i] && d[i] <= d[(i + 1) % 3] && d[i] <= d[(i + 2) % 3]) {
            return i;
        }
    }
    return -1;
}

bool storeNearest(const double d[3], double tolerance, int* which) noexcept {
    const int nearest = nearestWithin(d, tolerance);
    if (nearest < 0) {
        return false;
    }
    if (which != nullptr) {
        *which = nearest;
    }
    return true;
}

} // namespace

Point MeshCoordBase::evaluateBase(const Point corners[3]) const noexcept {
    return koLinear::combine(corners[0], w_[0], corners[1], w_[1], corners[2], w_[2]);
}

bool MeshCoordBase::setFromPointBase(const Point& p0, const Point& p1, const Point& p2,
                                     const Point& x) noexcept {
    Triangle triangle(p0, p1, p2);
    if (!triangle.setUp()) {
        return setInvalid();
    }
    *this = triangle.weigh(x);
    return true;
}

bool MeshCoordBase::projectBase(const Point& p0, const Point& p1, const Point& p2,
                                const Point& x) noexcept {
    Triangle triangle(p0, p1, p2);
    if (!triangle.setUp()) {
        return setInvalid();
    }
    const Vector unitNormal = triangle.normal * triangle.inverseLength;
    const Point inPlane = x - unitNormal * dot(x - p0, unitNormal);
    const MeshCoordBase w = triangle.weigh(inPlane);
    // Outside the triangle, the sign pattern of the weights tells which corner's wedge or
    // which edge's side the point lies in; a zero weight counts as outside.
    const bool in0 = w.w0() > 0.0;
    const bool in1 = w.w1() > 0.0;
    const bool in2 = w.w2() > 0.0;
    if (!in0 && !in1) {
        setWeights(0.0, 0.0, 1.0);
    } else if (!in0 && !in2) {
        setWeights(0.0, 1.0, 0.0);
    } else if (!in0) {
        *this = triangle.weighNearestOn(p1, p2, inPlane);
    } else if (!in1 && !in2) {
        setWeights(1.0, 0.0, 0.0);
    } else if (!in1) {
        *this = triangle.weighNearestOn(p0, p2, inPlane);
    } else if (!in2) {
        *this = triangle.weighNearestOn(p0, p1, inPlane);
    } else {
        *this = w;
    }
    return true;
}

bool MeshCoordBase::onEdgeBase(const Point corners[3], double tolerance, int* edge) const noexcept {
    const Point x = evaluateBase(corners);
    double d[3];
    for (int i = 0; i < 3; ++i) {
        const koLinear::ParamLine side(corners[i], corners[(i + 1) % 3]);
        d[i] = distance2(x, side.projectBounded(x));
    }
    return storeNearest(d, tolerance, edge);
}

bool MeshCoordBase::onVertexBase(const Point corners[3], double tolerance,
                                 int* vertex) const noexcept {
    const Point x = evaluateBase(corners);
    const double d[3] = {distance2(x, corners[0]), distance2(x, corners[1]),
                         distance2(x, corners[2])};
    return storeNearest(d, tolerance, vertex);
}

} // namespace koGeom
