#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace koLinear {

/// A closed interval [min, max] of doubles, for parameter domains and coordinate extents.
///
/// A range with min > max is empty. `setUnbounded()` (also the state of a default-made range)
/// puts min at the largest double and max at its negative: the empty range from which
/// extending accumulates, so extending it by a value gives exactly that value.
class Range1d {
public:
    double min = std::numeric_limits<double>::max();
    double max = -std::numeric_limits<double>::max();

    /// The empty range of `setUnbounded()`.
    constexpr Range1d() noexcept = default;
    /// The range [min, max] as given (empty when min > max).
    constexpr Range1d(double min, double max) noexcept : min(min), max(max) {}

    /// \name Setting
    /// @{
    constexpr void set(double newMin, double newMax) noexcept {
        min = newMin;
        max = newMax;
    }
    /// The empty range ready for accumulation: min = +DBL_MAX, max = −DBL_MAX.
    constexpr void setUnbounded() noexcept { *this = Range1d(); }

    /// Grows the range to include `v`; a NaN is ignored.
    constexpr void extend(double v) noexcept {
        if (v < min) {
            min = v;
        }
        if (v > max) {
            max = v;
        }
    }
    /// Grows the range to include all of `r`; an empty `r` changes nothing.
    constexpr void extend(const Range1d& r) noexcept {
        if (r.isEmpty()) {
            return;
        }
        extend(r.min);
        extend(r.max);
    }
    /// Moves min down and max up by `d` (a negative `d` shrinks the range).
    constexpr void enlarge(double d) noexcept {
        min -= d;
        max += d;
    }
    /// @}

    /// \name Queries
    /// @{

    /// True when min > max, or either bound is NaN.
    constexpr bool isEmpty() const noexcept { return !(min <= max); }
    constexpr double mid() const noexcept { return 0.5 * min + 0.5 * max; }
    /// max − min, negative for an empty range.
    constexpr double size() const noexcept { return max - min; }
    /// True when min ≤ v ≤ max.
    constexpr bool contains(double v) const noexcept { return min <= v && v <= max; }
    /// True when `r` is not empty and lies within this range (boundaries may touch).
    constexpr bool contains(const Range1d& r) const noexcept {
        return !r.isEmpty() && min <= r.min && r.max <= max;
    }
    /// True when the two closed ranges share at least one value (touching counts).
    constexpr bool intersects(const Range1d& r) const noexcept {
        return !intersection(r).isEmpty();
    }
    /// The common part of the two ranges, empty when they do not intersect.
    constexpr Range1d intersection(const Range1d& r) const noexcept {
        return {std::max(min, r.min), std::min(max, r.max)};
    }
    /// `v` moved into the range: min below it, max above it. The range must not be empty.
    constexpr double clamp(double v) const noexcept { return v < min ? min : (v > max ? max : v); }
    /// @}

    constexpr bool operator==(const Range1d&) const noexcept = default;
};

/// True when both bounds of `a` differ from those of `b` by strictly less than `tol`.
inline bool equivalent(const Range1d& a, const Range1d& b, double tol) noexcept {
    return std::fabs(a.min - b.min) < tol && std::fabs(a.max - b.max) < tol;
}

} // namespace koLinear
