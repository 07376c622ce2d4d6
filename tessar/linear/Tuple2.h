#pragma once

#include <cmath>

namespace koLinear {

/// A pair of doubles, used as a 2-D displacement (the difference of two `Point2`s), a size
/// or a pair of parameters. It has the arithmetic of a 2-D vector.
class Tuple2 {
public:
    double x = 0.0;
    double y = 0.0;

    constexpr Tuple2() noexcept = default;
    constexpr Tuple2(double x, double y) noexcept : x(x), y(y) {}

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr double& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr double operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Length
    /// @{
    double length() const noexcept { return std::sqrt(length2()); }
    constexpr double length2() const noexcept { return x * x + y * y; }

    /// Scales to unit length and returns the old length; a zero tuple is left unchanged and 0
    /// is returned.
    double normalize() noexcept {
        const double len = length();
        if (len > 0.0) {
            x /= len;
            y /= len;
        }
        return len;
    }

    /// A unit tuple in the same direction; zero for zero.
    Tuple2 normalized() const noexcept {
        Tuple2 result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic
    /// @{
    constexpr Tuple2 operator-() const noexcept { return {-x, -y}; }
    constexpr Tuple2& operator+=(const Tuple2& t) noexcept {
        x += t.x;
        y += t.y;
        return *this;
    }
    constexpr Tuple2& operator-=(const Tuple2& t) noexcept {
        x -= t.x;
        y -= t.y;
        return *this;
    }
    constexpr Tuple2& operator*=(double s) noexcept {
        x *= s;
        y *= s;
        return *this;
    }
    /// Divides both components by `s` (no check for zero).
    constexpr Tuple2& operator/=(double s) noexcept {
        x /= s;
        y /= s;
        return *this;
    }
    /// @}

    constexpr bool operator==(const Tuple2&) const noexcept = default;
};

/// \name Tuple2 arithmetic
/// @{
constexpr Tuple2 operator+(Tuple2 a, const Tuple2& b) noexcept { return a += b; }
constexpr Tuple2 operator-(Tuple2 a, const Tuple2& b) noexcept { return a -= b; }
constexpr Tuple2 operator*(Tuple2 t, double s) noexcept { return t *= s; }
constexpr Tuple2 operator*(double s, Tuple2 t) noexcept { return t *= s; }
constexpr Tuple2 operator/(Tuple2 t, double s) noexcept { return t /= s; }

constexpr double dot(const Tuple2& a, const Tuple2& b) noexcept { return a.x * b.x + a.y * b.y; }

/// The z component of the 3-D cross product of (a, 0) and (b, 0): positive when b turns
/// counter-clockwise from a.
constexpr double cross(const Tuple2& a, const Tuple2& b) noexcept { return a.x * b.y - a.y * b.x; }
/// @}

/// \name Comparisons with a tolerance
/// @{

/// True when |a − b| is strictly below `tol`.
inline bool equivalent(const Tuple2& a, const Tuple2& b, double tol) noexcept {
    return (a - b).length() < tol;
}

/// True when the sine of the angle between `a` and `b` is strictly below `tol`; opposite
/// directions count as parallel, a zero tuple is parallel to nothing.
constexpr bool isParallel(const Tuple2& a, const Tuple2& b, double tol) noexcept {
    const double sine = cross(a, b);
    return sine * sine < tol * tol * a.length2() * b.length2();
}

/// @}

} // namespace koLinear
