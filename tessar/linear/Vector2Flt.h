#pragma once

#include <cmath>

#include "tessar/linear/Tuple2.h"

namespace koLinear {

/// A 2-D displacement in single precision (two floats), with the arithmetic of `Tuple2`
/// carried out in float. Conversions to and from `Tuple2` are explicit both ways.
class Vector2Flt {
public:
    float x = 0.0f;
    float y = 0.0f;

    constexpr Vector2Flt() noexcept = default;
    constexpr Vector2Flt(float x, float y) noexcept : x(x), y(y) {}
    /// Each component of `t` rounded to the nearest float.
    constexpr explicit Vector2Flt(const Tuple2& t) noexcept
        : x(static_cast<float>(t.x)), y(static_cast<float>(t.y)) {}
    /// Each component widened exactly to double.
    constexpr explicit operator Tuple2() const noexcept { return {x, y}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr float& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr float operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Length, in float
    /// @{
    float length() const noexcept { return std::sqrt(length2()); }
    constexpr float length2() const noexcept { return x * x + y * y; }

    /// Scales to unit length and returns the old length; zero is left unchanged and 0 is
    /// returned.
    float normalize() noexcept {
        const float len = length();
        if (len > 0.0f) {
            x /= len;
            y /= len;
        }
        return len;
    }
    Vector2Flt normalized() const noexcept {
        Vector2Flt result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic
    /// @{
    constexpr Vector2Flt operator-() const noexcept { return {-x, -y}; }
    constexpr Vector2Flt& operator+=(const Vector2Flt& v) noexcept {
        x += v.x;
        y += v.y;
        return *this;
    }
    constexpr Vector2Flt& operator-=(const Vector2Flt& v) noexcept {
        x -= v.x;
        y -= v.y;
        return *this;
    }
    constexpr Vector2Flt& operator*=(float s) noexcept {
        x *= s;
        y *= s;
        return *this;
    }
    /// Divides both components by `s` (no check for zero).
    constexpr Vector2Flt& operator/=(float s) noexcept {
        x /= s;
        y /= s;
        return *this;
    }
    /// @}

    constexpr bool operator==(const Vector2Flt&) const noexcept = default;
};

/// \name Vector2Flt arithmetic, in float
/// @{
constexpr Vector2Flt operator+(Vector2Flt a, const Vector2Flt& b) noexcept { return a += b; }
constexpr Vector2Flt operator-(Vector2Flt a, const Vector2Flt& b) noexcept { return a -= b; }
constexpr Vector2Flt operator*(Vector2Flt v, float s) noexcept { return v *= s; }
constexpr Vector2Flt operator*(float s, Vector2Flt v) noexcept { return v *= s; }
constexpr Vector2Flt operator/(Vector2Flt v, float s) noexcept { return v /= s; }

constexpr float dot(const Vector2Flt& a, const Vector2Flt& b) noexcept {
    return a.x * b.x + a.y * b.y;
}

/// The z component of the cross product of (a, 0) and (b, 0).
constexpr float cross(const Vector2Flt& a, const Vector2Flt& b) noexcept {
    return a.x * b.y - a.y * b.x;
}

/// True when |a − b|, computed in float, is strictly below `tol`.
inline bool equivalent(const Vector2Flt& a, const Vector2Flt& b, float tol) noexcept {
    return (a - b).length() < tol;
}
/// @}

} // namespace koLinear
