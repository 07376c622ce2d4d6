#pragma once

#include "tessar/linear/Tuple2.h"

namespace koLinear {

/// A position in the plane (two doubles). Point2 − Point2 is a `Tuple2`, Point2 ± Tuple2 a
/// Point2.
class Point2 {
public:
    double x = 0.0;
    double y = 0.0;

    /// The origin.
    constexpr Point2() noexcept = default;
    constexpr Point2(double x, double y) noexcept : x(x), y(y) {}
    /// The point at displacement `t` from the origin.
    constexpr explicit Point2(const Tuple2& t) noexcept : x(t.x), y(t.y) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator Tuple2() const noexcept { return {x, y}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr double& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr double operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Moving by a displacement
    /// @{
    constexpr Point2& operator+=(const Tuple2& t) noexcept {
        x += t.x;
        y += t.y;
        return *this;
    }
    constexpr Point2& operator-=(const Tuple2& t) noexcept {
        x -= t.x;
        y -= t.y;
        return *this;
    }
    /// @}

    constexpr bool operator==(const Point2&) const noexcept = default;
};

/// \name Point2 arithmetic
/// @{
constexpr Point2 operator+(Point2 p, const Tuple2& t) noexcept { return p += t; }
constexpr Point2 operator-(Point2 p, const Tuple2& t) noexcept { return p -= t; }
constexpr Tuple2 operator-(const Point2& a, const Point2& b) noexcept {
    return {a.x - b.x, a.y - b.y};
}

/// The affine combination wa·a + wb·b (weights summing to 1, not checked).
constexpr Point2 combine(const Point2& a, double wa, const Point2& b, double wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y};
}

/// The affine combination wa·a + wb·b + wc·c (weights summing to 1, not checked).
constexpr Point2 combine(const Point2& a, double wa, const Point2& b, double wb, const Point2& c,
                         double wc) noexcept {
    return {wa * a.x + wb * b.x + wc * c.x, wa * a.y + wb * b.y + wc * c.y};
}
/// @}

/// \name Distances
/// @{
constexpr double distance2(const Point2& a, const Point2& b) noexcept { return (a - b).length2(); }
inline double distance(const Point2& a, const Point2& b) noexcept { return (a - b).length(); }

/// True when the distance between `a` and `b` is strictly below `tol`.
inline bool equivalent(const Point2& a, const Point2& b, double tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
