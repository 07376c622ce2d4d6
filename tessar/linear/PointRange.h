#pragma once

#include <algorithm>
#include <concepts>
#include <limits>
#include <type_traits>

#include "tessar/linear/Point.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Range1d.h"

namespace koLinear {

/// An axis-aligned box [min, max] of double points, with the conventions of `Range1d` on each
/// axis: `Range2d` is a rectangle in the plane, `Range3d` a box in space. A range is empty
/// when min > max on some axis; `setUnbounded()` (the state of a default-made range) puts min
/// at +DBL_MAX and max at −DBL_MAX on every axis, so extending it by a point gives exactly
/// that point.
template <class P>
requires std::same_as<P, Point2> || std::same_as<P, Point>
class PointRange {
    // The difference of two corners: a `Tuple2` or a `Vector`.
    using Extent = decltype(P() - P());

public:
    P min = filled(std::numeric_limits<double>::max());
    P max = filled(-std::numeric_limits<double>::max());

    /// The empty range of `setUnbounded()`.
    constexpr PointRange() noexcept = default;
    /// The range with corners `min` and `max` as given.
    constexpr PointRange(const P& min, const P& max) noexcept : min(min), max(max) {}

    /// \name Setting
    /// @{
    constexpr void set(const P& newMin, const P& newMax) noexcept {
        min = newMin;
        max = newMax;
    }
    /// The empty range ready for accumulation: min = +DBL_MAX, max = −DBL_MAX on every axis.
    constexpr void setUnbounded() noexcept { *this = PointRange(); }

    /// Grows the range to include `p`; NaN coordinates are ignored axis by axis.
    constexpr void extend(const P& p) noexcept {
        for (int i = 0; i < axisCount; ++i) {
            if (p[i] < min[i]) {
                min[i] = p[i];
            }
            if (p[i] > max[i]) {
                max[i] = p[i];
            }
        }
    }
    /// Grows the range to include all of `r`; an empty `r` changes nothing.
    constexpr void extend(const PointRange& r) noexcept {
        if (r.isEmpty()) {
            return;
        }
        extend(r.min);
        extend(r.max);
    }
    /// Moves min down and max up by `d` on every axis.
    constexpr void enlarge(double d) noexcept {
        for (int i = 0; i < axisCount; ++i) {
            min[i] -= d;
            max[i] += d;
        }
    }
    /// @}

    /// \name Queries
    /// @{

    /// True when min > max on some axis, or a bound is NaN.
    constexpr bool isEmpty() const noexcept {
        for (int i = 0; i < axisCount; ++i) {
            if (!(min[i] <= max[i])) {
                return true;
            }
        }
        return false;
    }
    constexpr P mid() const noexcept { return combine(min, 0.5, max, 0.5); }
    /// max − min per axis, negative on an empty axis.
    constexpr Extent size() const noexcept { return max - min; }
    /// The extent along axis `i` (0 x, 1 y, 2 z; not checked).
    constexpr Range1d axis(int i) const noexcept { return {min[i], max[i]}; }
    /// Corner `i`: x from max when bit 0 is set, else from min; y likewise with bit 1 and z
    /// with bit 2. Corner 0 is min, the last corner (3 or 7) is max.
    constexpr P corner(int i) const noexcept {
        P result = min;
        for (int k = 0; k < axisCount; ++k) {
            if (i & (1 << k)) {
                result[k] = max[k];
            }
        }
        return result;
    }
    /// True when `p` lies in the closed box.
    constexpr bool contains(const P& p) const noexcept {
        for (int i = 0; i < axisCount; ++i) {
            if (!(min[i] <= p[i] && p[i] <= max[i])) {
                return false;
            }
        }
        return true;
    }
    /// True when `r` is not empty and lies within this box (boundaries may touch).
    constexpr bool contains(const PointRange& r) const noexcept {
        return !r.isEmpty() && contains(r.min) && contains(r.max);
    }
    /// True when the two closed boxes share at least one point.
    constexpr bool intersects(const PointRange& r) const noexcept {
        return !intersection(r).isEmpty();
    }
    /// The common part, empty when they do not intersect.
    constexpr PointRange intersection(const PointRange& r) const noexcept {
        PointRange result;
        for (int i = 0; i < axisCount; ++i) {
            result.min[i] = std::max(min[i], r.min[i]);
            result.max[i] = std::min(max[i], r.max[i]);
        }
        return result;
    }
    /// @}

    constexpr bool operator==(const PointRange&) const noexcept = default;

private:
    static constexpr int axisCount = std::same_as<P, Point> ? 3 : 2;

    // The point with every coordinate at `value`.
    static constexpr P filled(double value) noexcept {
        P result;
        for (int i = 0; i < axisCount; ++i) {
            result[i] = value;
        }
        return result;
    }
};

using Range2d = PointRange<Point2>;
using Range3d = PointRange<Point>;

/// True when both corners of `a` are each within a distance strictly below `tol` of the
/// same corner of `b`.
template <class P>
bool equivalent(const PointRange<P>& a, const std::type_identity_t<PointRange<P>>& b,
                double tol) noexcept {
    return equivalent(a.min, b.min, tol) && equivalent(a.max, b.max, tol);
}

} // namespace koLinear
