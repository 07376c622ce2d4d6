#pragma once

#include <cmath>

#include "tessar/linear/Vector.h"

namespace koLinear {

/// A displacement in space in single precision (three floats), with the arithmetic of
/// `Vector` carried out in float. Conversions to and from `Vector` are explicit both ways,
/// so that mixed expressions never change precision unnoticed.
class VectorFlt {
public:
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    /// The zero vector.
    constexpr VectorFlt() noexcept = default;
    constexpr VectorFlt(float x, float y, float z) noexcept : x(x), y(y), z(z) {}
    /// Each component of `v` rounded to the nearest float.
    constexpr explicit VectorFlt(const Vector& v) noexcept
        : x(static_cast<float>(v.x)), y(static_cast<float>(v.y)), z(static_cast<float>(v.z)) {}
    /// Each component widened exactly to double.
    constexpr explicit operator Vector() const noexcept { return {x, y, z}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr float& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr float operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Length, in float
    /// @{
    float length() const noexcept { return std::sqrt(length2()); }
    constexpr float length2() const noexcept { return x * x + y * y + z * z; }

    /// Scales to unit length and returns the old length; a zero vector is left unchanged and
    /// 0 is returned.
    float normalize() noexcept {
        const float len = length();
        if (len > 0.0f) {
            x /= len;
            y /= len;
            z /= len;
        }
        return len;
    }

    /// A unit vector in the same direction; zero for zero.
    VectorFlt normalized() const noexcept {
        VectorFlt result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic
    /// @{
    constexpr VectorFlt operator-() const noexcept { return {-x, -y, -z}; }
    constexpr VectorFlt& operator+=(const VectorFlt& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr VectorFlt& operator-=(const VectorFlt& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    constexpr VectorFlt& operator*=(float s) noexcept {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    /// Divides each component by `s` (no check for zero).
    constexpr VectorFlt& operator/=(float s) noexcept {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }
    /// @}

    constexpr bool operator==(const VectorFlt&) const noexcept = default;
};

/// \name VectorFlt arithmetic, in float
/// @{
constexpr VectorFlt operator+(VectorFlt a, const VectorFlt& b) noexcept { return a += b; }
constexpr VectorFlt operator-(VectorFlt a, const VectorFlt& b) noexcept { return a -= b; }
constexpr VectorFlt operator*(VectorFlt v, float s) noexcept { return v *= s; }
constexpr VectorFlt operator*(float s, VectorFlt v) noexcept { return v *= s; }
constexpr VectorFlt operator/(VectorFlt v, float s) noexcept { return v /= s; }

constexpr float dot(const VectorFlt& a, const VectorFlt& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The right-handed cross product a × b.
constexpr VectorFlt cross(const VectorFlt& a, const VectorFlt& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// True when |a − b|, computed in float, is strictly below `tol` (use `epsilonTolFlt`).
inline bool equivalent(const VectorFlt& a, const VectorFlt& b, float tol) noexcept {
    return (a - b).length() < tol;
}
/// @}

} // namespace koLinear
