#pragma once

#include <cmath>

namespace koLinear {

/// A displacement in space (three doubles). Unlike a `Point` it has a length and direction,
/// adds to points and is transformed by matrices without their translation.
class Vector {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    /// The zero vector.
    constexpr Vector() noexcept = default;
    constexpr Vector(double x, double y, double z) noexcept : x(x), y(y), z(z) {}

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr double& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr double operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Length
    /// @{
    double length() const noexcept { return std::sqrt(length2()); }
    constexpr double length2() const noexcept { return x * x + y * y + z * z; }

    /// Scales the vector to unit length and returns the length it had. A zero vector is left
    /// unchanged and 0 is returned.
    double normalize() noexcept {
        const double len = length();
        if (len > 0.0) {
            x /= len;
            y /= len;
            z /= len;
        }
        return len;
    }

    /// A unit vector in the same direction; the zero vector for the zero vector.
    Vector normalized() const noexcept {
        Vector result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic
    /// @{
    constexpr Vector operator-() const noexcept { return {-x, -y, -z}; }
    constexpr Vector& operator+=(const Vector& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr Vector& operator-=(const Vector& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    constexpr Vector& operator*=(double s) noexcept {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    /// Divides each component by `s` (no check for zero).
    constexpr Vector& operator/=(double s) noexcept {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }
    /// @}

    /// Exact comparison of the three components; see `equivalent` for a tolerance.
    constexpr bool operator==(const Vector&) const noexcept = default;
};

/// \name Vector arithmetic
/// @{
constexpr Vector operator+(Vector a, const Vector& b) noexcept { return a += b; }
constexpr Vector operator-(Vector a, const Vector& b) noexcept { return a -= b; }
constexpr Vector operator*(Vector v, double s) noexcept { return v *= s; }
constexpr Vector operator*(double s, Vector v) noexcept { return v *= s; }
constexpr Vector operator/(Vector v, double s) noexcept { return v /= s; }

constexpr double dot(const Vector& a, const Vector& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The right-handed cross product a × b.
constexpr Vector cross(const Vector& a, const Vector& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// @}

/// \name Comparisons with a tolerance
/// @{

/// True when the distance between the tips of `a` and `b`, |a − b|, is strictly below `tol`.
/// A tolerance of 0 makes nothing equivalent, not even equal vectors.
inline bool equivalent(const Vector& a, const Vector& b, double tol) noexcept {
    return (a - b).length() < tol;
}

/// True when the sine of the angle between `a` and `b` is strictly below `tol` (use
/// `parallelTol`). Opposite directions are parallel too. A zero vector has no direction and
/// is parallel to nothing.
constexpr bool isParallel(const Vector& a, const Vector& b, double tol) noexcept {
    // |a × b| = |a| |b| sin(angle); compared squared to avoid the square roots.
    return cross(a, b).length2() < tol * tol * a.length2() * b.length2();
}

/// The angle between `a` and `b` in radians, in [0, pi]; 0 when either is zero.
inline double angle(const Vector& a, const Vector& b) noexcept {
    // atan2 keeps full accuracy near 0 and pi, where acos of the cosine does not.
    return std::atan2(cross(a, b).length(), dot(a, b));
}

/// @}

} // namespace koLinear
