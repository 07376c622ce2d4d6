#pragma once

#include <algorithm>
#include <limits>

#include "tessar/linear/Point2.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Tuple2.h"

namespace koLinear {

/// An axis-aligned rectangle [min, max] in the plane, with the conventions of `Range1d` on
/// each axis: empty when min > max on some axis; `setUnbounded()` (the state of a
/// default-made range) puts min at +DBL_MAX and max at −DBL_MAX on both axes, so extending
/// it by a point gives exactly that point.
class Range2d {
public:
    Point2 min{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Point2 max{-std::numeric_limits<double>::max(), -std::numeric_limits<double>::max()};

    /// The empty range of `setUnbounded()`.
    constexpr Range2d() noexcept = default;
    /// The range with corners `min` and `max` as given.
    constexpr Range2d(const Point2& min, const Point2& max) noexcept : min(min), max(max) {}

    /// \name Setting
    /// @{
    constexpr void set(const Point2& newMin, const Point2& newMax) noexcept {
        min = newMin;
        max = newMax;
    }
    /// The empty range ready for accumulation: min = +DBL_MAX, max = −DBL_MAX on both axes.
    constexpr void setUnbounded() noexcept { *this = Range2d(); }

    /// Grows the range to include `p`; NaN coordinates are ignored axis by axis.
    constexpr void extend(const Point2& p) noexcept {
        for (int i = 0; i < 2; ++i) {
            if (p[i] < min[i]) {
                min[i] = p[i];
            }
            if (p[i] > max[i]) {
                max[i] = p[i];
            }
        }
    }
    /// Grows the range to include all of `r`; an empty `r` changes nothing.
    constexpr void extend(const Range2d& r) noexcept {
        if (r.isEmpty()) {
            return;
        }
        extend(r.min);
        extend(r.max);
    }
    /// Moves min down and max up by `d` on both axes.
    constexpr void enlarge(double d) noexcept {
        min -= Tuple2(d, d);
        max += Tuple2(d, d);
    }
    /// @}

    /// \name Queries
    /// @{

    /// True when min > max on some axis, or a bound is NaN.
    constexpr bool isEmpty() const noexcept { return !(min.x <= max.x && min.y <= max.y); }
    constexpr Point2 mid() const noexcept { return combine(min, 0.5, max, 0.5); }
    /// max − min per axis, negative on an empty axis.
    constexpr Tuple2 size() const noexcept { return max - min; }
    /// The extent along axis `i` (0 x, 1 y; not checked).
    constexpr Range1d axis(int i) const noexcept { return {min[i], max[i]}; }
    /// Corner `i`: x from max when bit 0 is set, else from min; y likewise with bit 1.
    constexpr Point2 corner(int i) const noexcept {
        return {(i & 1) ? max.x : min.x, (i & 2) ? max.y : min.y};
    }
    /// True when `p` lies in the closed rectangle.
    constexpr bool contains(const Point2& p) const noexcept {
        return min.x <= p.x && p.x <= max.x && min.y <= p.y && p.y <= max.y;
    }
    /// True when `r` is not empty and lies within this range (boundaries may touch).
    constexpr bool contains(const Range2d& r) const noexcept {
        return !r.isEmpty() && contains(r.min) && contains(r.max);
    }
    /// True when the two closed rectangles share at least one point.
    constexpr bool intersects(const Range2d& r) const noexcept {
        return !intersection(r).isEmpty();
    }
    /// The common part, empty when they do not intersect.
    constexpr Range2d intersection(const Range2d& r) const noexcept {
        return {{std::max(min.x, r.min.x), std::max(min.y, r.min.y)},
                {std::min(max.x, r.max.x), std::min(max.y, r.max.y)}};
    }
    /// @}

    constexpr bool operator==(const Range2d&) const noexcept = default;
};

/// True when both corners of `a` are each within a distance strictly below `tol` of the
/// same corner of `b`.
inline bool equivalent(const Range2d& a, const Range2d& b, double tol) noexcept {
    return equivalent(a.min, b.min, tol) && equivalent(a.max, b.max, tol);
}

} // namespace koLinear
