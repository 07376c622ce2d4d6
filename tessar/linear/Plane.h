#pragma once

#include <cmath>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// An infinite plane: a point on it and a unit normal. The normal picks a side: signed
/// distances are positive on the side it points to.
class Plane {
public:
    Point origin;
    Normal normal = Normal::unitZ();

    /// The plane z = 0 with normal +z.
    constexpr Plane() noexcept = default;
    /// The plane through `origin` with `normal` (unit length, as every `Normal`).
    constexpr Plane(const Point& origin, const Normal& normal) noexcept
        : origin(origin), normal(normal) {}
    /// The plane through `a`, `b` and `c`, with its origin at `a` and its normal along
    /// (b − a) × (c − a): the side from which a, b, c turn counter-clockwise. Three
    /// collinear points give the zero normal.
    Plane(const Point& a, const Point& b, const Point& c) noexcept
        : origin(a), normal(cross(b - a, c - a)) {}

    /// The distance from the plane to `p`, positive on the side the normal points to.
    constexpr double signedDistance(const Point& p) const noexcept {
        return dot(p - origin, normal);
    }

    /// The foot of the perpendicular from `p` to the plane.
    constexpr Point project(const Point& p) const noexcept {
        return p - normal * signedDistance(p);
    }

    /// Turns the normal to the other side; the plane's points are unchanged.
    constexpr void reverse() noexcept { normal.reverse(); }

    /// Transforms the plane by `m`: the origin as a point, the normal through `m`'s normal
    /// matrix and renormalised. Returns false and leaves the plane unchanged when `m` is
    /// singular.
    bool transform(const AffineMatrix& m) noexcept {
        AffineMatrix normalTransform;
        if (!m.normalMatrix(normalTransform)) {
            return false;
        }
        origin = origin * m;
        normal = Normal(normal * normalTransform);
        return true;
    }

    constexpr bool operator==(const Plane&) const noexcept = default;
};

/// The unsigned distance from `p` to `plane`.
inline double distance(const Point& p, const Plane& plane) noexcept {
    return std::fabs(plane.signedDistance(p));
}

/// \name Intersections
/// @{

/// The line where `a` and `b` meet: its direction is a.normal × b.normal, normalised, and its
/// origin is the point of the line nearest to a's origin. Returns false and leaves `out`
/// unchanged when the planes are parallel within `parallelTol` (see `isParallel`).
inline bool intersect(const Plane& a, const Plane& b, Line& out) noexcept {
    if (!isParallel(a.normal, b.normal, parallelTol)) {
        // Work relative to a's origin. The point sought is c1·na + c2·nb (it is nearest to
        // a's origin, so it has no component along the line) and lies on both planes:
        //   c1 + k·c2 = 0 and k·c1 + c2 = h, with k = na·nb and h = nb·(b.origin − a.origin).
        const double k = dot(a.normal, b.normal);
        const double h = dot(b.normal, b.origin - a.origin);
        const double c2 = h / (1.0 - k * k);
        const double c1 = -k * c2;
        out = Line(a.origin + c1 * Vector(a.normal) + c2 * Vector(b.normal),
                   Normal(cross(a.normal, b.normal)));
        return true;
    }
    return false;
}

/// Sets `t` to the parameter at which `line` crosses `plane` and returns true; returns false
/// and leaves `t` unchanged when the line is parallel to the plane within `parallelTol` (the
/// sine of the angle between them).
inline bool intersect(const Line& line, const Plane& plane, double& t) noexcept {
    const double along = dot(line.direction, plane.normal);
    if (!(std::fabs(along) >= parallelTol)) {
        return false;
    }
    t = -plane.signedDistance(line.origin) / along;
    return true;
}
/// @}

} // namespace koLinear
