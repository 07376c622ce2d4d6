#pragma once

#include <cmath>
#include <type_traits>

#include "tessar/linear/LinearScalar.h"

namespace koLinear {

/// A displacement in space (three scalars). Unlike a point it has a length and direction,
/// adds to points and is transformed by matrices without their translation.
///
/// `Vector` holds doubles; `VectorFlt` holds floats and carries out all its arithmetic in
/// float. Conversions between the two are explicit both ways, so that mixed expressions never
/// change precision unnoticed.
template <LinearScalar T>
class BasicVector {
public:
    T x = 0;
    T y = 0;
    T z = 0;

    /// The zero vector.
    constexpr BasicVector() noexcept = default;
    constexpr BasicVector(T x, T y, T z) noexcept : x(x), y(y), z(z) {}
    /// Each component of `v` rounded to the nearest float, or widened exactly to double.
    constexpr explicit BasicVector(const BasicVector<detail::OtherScalar<T>>& v) noexcept
        : x(static_cast<T>(v.x)), y(static_cast<T>(v.y)), z(static_cast<T>(v.z)) {}

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr T& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr T operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Length, in the vector's scalar
    /// @{
    T length() const noexcept { return std::sqrt(length2()); }
    constexpr T length2() const noexcept { return x * x + y * y + z * z; }

    /// Scales the vector to unit length and returns the length it had. A zero vector is left
    /// unchanged and 0 is returned.
    T normalize() noexcept {
        const T len = length();
        if (len > 0) {
            x /= len;
            y /= len;
            z /= len;
        }
        return len;
    }

    /// A unit vector in the same direction; the zero vector for the zero vector.
    BasicVector normalized() const noexcept {
        BasicVector result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic, in the vector's scalar
    /// @{
    constexpr BasicVector operator-() const noexcept { return {-x, -y, -z}; }
    constexpr BasicVector& operator+=(const BasicVector& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr BasicVector& operator-=(const BasicVector& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    constexpr BasicVector& operator*=(T s) noexcept {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    /// Divides each component by `s` (no check for zero).
    constexpr BasicVector& operator/=(T s) noexcept {
        x /= s;
        y /= s;
        z /= s;
        return *this;
    }
    /// @}

    /// Exact comparison of the three components; see `equivalent` for a tolerance.
    constexpr bool operator==(const BasicVector&) const noexcept = default;
};

using Vector = BasicVector<double>;
using VectorFlt = BasicVector<float>;

/// \name Vector arithmetic, in the vector's scalar
/// The first vector argument fixes the scalar; the other arguments then convert as for an
/// ordinary function (a `Normal` to a `Vector`, a double to a float).
/// @{
template <LinearScalar T>
constexpr BasicVector<T> operator+(BasicVector<T> a,
                                   const std::type_identity_t<BasicVector<T>>& b) noexcept {
    return a += b;
}
template <LinearScalar T>
constexpr BasicVector<T> operator-(BasicVector<T> a,
                                   const std::type_identity_t<BasicVector<T>>& b) noexcept {
    return a -= b;
}
template <LinearScalar T>
constexpr BasicVector<T> operator*(BasicVector<T> v, std::type_identity_t<T> s) noexcept {
    return v *= s;
}
template <LinearScalar T>
constexpr BasicVector<T> operator*(std::type_identity_t<T> s, BasicVector<T> v) noexcept {
    return v *= s;
}
template <LinearScalar T>
constexpr BasicVector<T> operator/(BasicVector<T> v, std::type_identity_t<T> s) noexcept {
    return v /= s;
}

template <LinearScalar T>
constexpr T dot(const BasicVector<T>& a, const std::type_identity_t<BasicVector<T>>& b) noexcept {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// The right-handed cross product a × b.
template <LinearScalar T>
constexpr BasicVector<T> cross(const BasicVector<T>& a,
                               const std::type_identity_t<BasicVector<T>>& b) noexcept {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
/// @}

/// \name Comparisons with a tolerance
/// @{

/// True when the distance between the tips of `a` and `b`, |a − b|, computed in the vector's
/// scalar, is strictly below `tol` (use `epsilonTol`, or `epsilonTolFlt` for floats). A
/// tolerance of 0 makes nothing equivalent, not even equal vectors.
template <LinearScalar T>
bool equivalent(const BasicVector<T>& a, const std::type_identity_t<BasicVector<T>>& b,
                std::type_identity_t<T> tol) noexcept {
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
