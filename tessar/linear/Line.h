#pragma once

#include <cmath>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range3d.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// An infinite line: a point on it and a unit direction. Its parameter is arc length: the
/// point at parameter t is origin + t · direction.
class Line {
public:
    Point origin;
    Normal direction = Normal::unitX();

    /// The x axis.
    constexpr Line() noexcept = default;
    /// The line through `origin` along `direction` (unit length, as every `Normal`).
    constexpr Line(const Point& origin, const Normal& direction) noexcept
        : origin(origin), direction(direction) {}

    /// The point at parameter `t`.
    constexpr Point eval(double t) const noexcept { return origin + direction * t; }

    /// The parameter of the point of the line nearest to `p`.
    constexpr double projectParam(const Point& p) const noexcept {
        return dot(p - origin, direction);
    }

    /// The point of the line nearest to `p`.
    constexpr Point project(const Point& p) const noexcept { return eval(projectParam(p)); }

    constexpr bool operator==(const Line&) const noexcept = default;
};

/// \name Projection onto a line
/// @{

/// The parameter of the point of `line` nearest to `p`.
constexpr double projectParam(const Point& p, const Line& line) noexcept {
    return line.projectParam(p);
}

/// The interval of parameters covered by the projections of all points of the box `r` onto
/// `line` (the shadow of the box on the line); empty when `r` is empty.
inline Range1d projectParam(const Range3d& r, const Line& line) noexcept {
    if (r.isEmpty()) {
        return {};
    }
    const double centre = line.projectParam(r.mid());
    const Vector half = r.size() * 0.5;
    const double reach = std::fabs(line.direction.x) * half.x +
                         std::fabs(line.direction.y) * half.y +
                         std::fabs(line.direction.z) * half.z;
    return {centre - reach, centre + reach};
}
/// @}

/// \name Distance from a line
/// @{
constexpr double distance2(const Point& p, const Line& line) noexcept {
    return distance2(p, line.project(p));
}
inline double distance(const Point& p, const Line& line) noexcept {
    return distance(p, line.project(p));
}
/// @}

/// The line transformed: its origin as a point, its direction as a vector, renormalised. A
/// singular matrix that flattens the direction gives the zero direction.
inline Line operator*(const Line& line, const AffineMatrix& m) noexcept {
    return {line.origin * m, Normal(line.direction * m)};
}

} // namespace koLinear
