#pragma once

#include <algorithm>
#include <limits>

#include "tessar/linear/Point.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// An axis-aligned box [min, max] in space, with the conventions of `Range1d` on each axis:
/// empty when min > max on some axis; `setUnbounded()` (the state of a default-made range)
/// puts min at +DBL_MAX and max at −DBL_MAX on every axis, so extending it by a point gives
/// exactly that point.
class Range3d {
public:
    Point min{std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
              std::numeric_limits<double>::max()};
    Point max{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max(),
              -std::numeric_limits<double>::max()};

    /// The empty range of `setUnbounded()`.
    constexpr Range3d() noexcept = default;
    /// The range with corners `min` and `max` as given.
    constexpr Range3d(const Point& min, const Point& max) noexcept : min(min), max(max) {}

    /// \name Setting
    /// @{
    constexpr void set(const Point& newMin, const Point& newMax) noexcept {
        min = newMin;
        max = newMax;
    }
    /// The empty range ready for accumulation: min = +DBL_MAX, max = −DBL_MAX on every axis.
    constexpr void setUnbounded() noexcept { *this = Range3d(); }

    /// Grows the range to include `p`; NaN coordinates are ignored axis by axis.
    constexpr void extend(const Point& p) noexcept {
        for (int i = 0; i < 3; ++i) {
            if (p[i] < min[i]) {
                min[i] = p[i];
            }
            if (p[i] > max[i]) {
                max[i] = p[i];
            }
        }
    }
    /// Grows the range to include all of `r`; an empty `r` changes nothing.
    constexpr void extend(const Range3d& r) noexcept {
        if (r.isEmpty()) {
            return;
        }
        extend(r.min);
        extend(r.max);
    }
    /// Moves min down and max up by `d` on every axis.
    constexpr void enlarge(double d) noexcept {
        min -= Vector(d, d, d);
        max += Vector(d, d, d);
    }
    /// @}

    /// \name Queries
    /// @{

    /// True when min > max on some axis, or a bound is NaN.
    constexpr bool isEmpty() const noexcept {
        return !(min.x <= max.x && min.y <= max.y && min.z <= max.z);
    }
    constexpr Point mid() const noexcept { return combine(min, 0.5, max, 0.5); }
    /// max − min per axis, negative on an empty axis.
    constexpr Vector size() const noexcept { return max - min; }
    /// The extent along axis `i` (0 x, 1 y, 2 z; not checked).
    constexpr Range1d axis(int i) const noexcept { return {min[i], max[i]}; }
    /// Corner `i` (0 to 7): x from max when bit 0 is set, else from min; y with bit 1, z with
    /// bit 2. Corner 0 is min, corner 7 is max.
    constexpr Point corner(int i) const noexcept {
        return {(i & 1) ? max.x : min.x, (i & 2) ? max.y : min.y, (i & 4) ? max.z : min.z};
    }
    /// True when `p` lies in the closed box.
    constexpr bool contains(const Point& p) const noexcept {
        return min.x <= p.x && p.x <= max.x && min.y <= p.y && p.y <= max.y && min.z <= p.z &&
               p.z <= max.z;
    }
    /// True when `r` is not empty and lies within this box (boundaries may touch).
    constexpr bool contains(const Range3d& r) const noexcept {
        return !r.isEmpty() && contains(r.min) && contains(r.max);
    }
    /// True when the two closed boxes share at least one point.
    constexpr bool intersects(const Range3d& r) const noexcept {
        return !intersection(r).isEmpty();
    }
    /// The common part, empty when they do not intersect.
    constexpr Range3d intersection(const Range3d& r) const noexcept {
        return {{std::max(min.x, r.min.x), std::max(min.y, r.min.y), std::max(min.z, r.min.z)},
                {std::min(max.x, r.max.x), std::min(max.y, r.max.y), std::min(max.z, r.max.z)}};
    }
    /// @}

    constexpr bool operator==(const Range3d&) const noexcept = default;
};

/// True when both corners of `a` are each within a distance strictly below `tol` of the
/// same corner of `b`.
inline bool equivalent(const Range3d& a, const Range3d& b, double tol) noexcept {
    return equivalent(a.min, b.min, tol) && equivalent(a.max, b.max, tol);
}

} // namespace koLinear
