#pragma once

#include <algorithm>
#include <cmath>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range3d.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// A parametric line: an origin and a direction vector of any length. The point at
/// parameter t is origin + t · direction, so parameters 0 to 1 run along the segment from
/// the origin to origin + direction.
///
/// Projections onto a line with a zero direction give parameter 0 (the origin).
class ParamLine {
public:
    Point origin;
    Vector direction{1.0, 0.0, 0.0};

    /// The unit segment along the x axis.
    constexpr ParamLine() noexcept = default;
    constexpr ParamLine(const Point& origin, const Vector& direction) noexcept
        : origin(origin), direction(direction) {}
    /// The segment from `from` (parameter 0) to `to` (parameter 1).
    constexpr ParamLine(const Point& from, const Point& to) noexcept
        : origin(from), direction(to - from) {}
    /// The line `line` with its unit direction: parameters stay arc lengths.
    constexpr explicit ParamLine(const Line& line) noexcept
        : origin(line.origin), direction(line.direction) {}

    /// The point at parameter `t`.
    constexpr Point eval(double t) const noexcept { return origin + direction * t; }

    /// The length of the direction vector: the length of the segment from 0 to 1.
    double length() const noexcept { return direction.length(); }

    /// \name Projection
    /// @{

    /// The parameter of the point of the infinite line nearest to `p`; 0 for a zero
    /// direction.
    constexpr double projectParam(const Point& p) const noexcept {
        const double len2 = direction.length2();
        return len2 > 0.0 ? dot(p - origin, direction) / len2 : 0.0;
    }
    /// The point of the infinite line nearest to `p`.
    constexpr Point project(const Point& p) const noexcept { return eval(projectParam(p)); }

    /// The parameter of the point of the segment (parameters 0 to 1) nearest to `p`: the
    /// projected parameter clamped to [0, 1].
    constexpr double projectBoundedParam(const Point& p) const noexcept {
        return std::clamp(projectParam(p), 0.0, 1.0);
    }
    /// The point of the segment nearest to `p`.
    constexpr Point projectBounded(const Point& p) const noexcept {
        return eval(projectBoundedParam(p));
    }
    /// @}

    constexpr bool operator==(const ParamLine&) const noexcept = default;
};

/// \name Projection onto a parametric line
/// @{

/// The parameter of the point of `line` nearest to `p`.
constexpr double projectParam(const Point& p, const ParamLine& line) noexcept {
    return line.projectParam(p);
}

/// The interval of parameters covered by the projections of all points of the box `r` onto
/// `line`; empty when `r` is empty, [0, 0] for a zero direction.
inline Range1d projectParam(const Range3d& r, const ParamLine& line) noexcept {
    if (r.isEmpty()) {
        return {};
    }
    const double len2 = line.direction.length2();
    if (!(len2 > 0.0)) {
        return {0.0, 0.0};
    }
    const double centre = line.projectParam(r.mid());
    const Vector half = r.size() * 0.5;
    const double reach =
        (std::fabs(line.direction.x) * half.x + std::fabs(line.direction.y) * half.y +
         std::fabs(line.direction.z) * half.z) /
        len2;
    return {centre - reach, centre + reach};
}
/// @}

/// The parametric line transformed: origin as a point, direction as a vector. A parameter
/// names the same point before and after.
constexpr ParamLine operator*(const ParamLine& line, const AffineMatrix& m) noexcept {
    return {line.origin * m, line.direction * m};
}

} // namespace koLinear
