#pragma once

#include <cmath>
#include <type_traits>

#include "tessar/linear/LinearScalar.h"

namespace koLinear {

/// A pair of scalars with the arithmetic of a 2-D vector: a displacement in the plane (the
/// difference of two 2-D points), a size or a pair of parameters.
///
/// `Tuple2` holds doubles; `Vector2Flt` holds floats and carries out all its arithmetic in
/// float. Conversions between the two are explicit both ways.
template <LinearScalar T>
class BasicVector2 {
public:
    T x = 0;
    T y = 0;

    constexpr BasicVector2() noexcept = default;
    constexpr BasicVector2(T x, T y) noexcept : x(x), y(y) {}
    /// Each component of `t` rounded to the nearest float, or widened exactly to double.
    constexpr explicit BasicVector2(const BasicVector2<detail::OtherScalar<T>>& t) noexcept
        : x(static_cast<T>(t.x)), y(static_cast<T>(t.y)) {}

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr T& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr T operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Length, in the pair's scalar
    /// @{
    T length() const noexcept { return std::sqrt(length2()); }
    constexpr T length2() const noexcept { return x * x + y * y; }

    /// Scales to unit length and returns the old length; a zero pair is left unchanged and 0
    /// is returned.
    T normalize() noexcept {
        const T len = length();
        if (len > 0) {
            x /= len;
            y /= len;
        }
        return len;
    }

    /// A unit pair in the same direction; zero for zero.
    BasicVector2 normalized() const noexcept {
        BasicVector2 result = *this;
        result.normalize();
        return result;
    }
    /// @}

    /// \name Arithmetic, in the pair's scalar
    /// @{
    constexpr BasicVector2 operator-() const noexcept { return {-x, -y}; }
    constexpr BasicVector2& operator+=(const BasicVector2& t) noexcept {
        x += t.x;
        y += t.y;
        return *this;
    }
    constexpr BasicVector2& operator-=(const BasicVector2& t) noexcept {
        x -= t.x;
        y -= t.y;
        return *this;
    }
    constexpr BasicVector2& operator*=(T s) noexcept {
        x *= s;
        y *= s;
        return *this;
    }
    /// Divides both components by `s` (no check for zero).
    constexpr BasicVector2& operator/=(T s) noexcept {
        x /= s;
        y /= s;
        return *this;
    }
    /// @}

    constexpr bool operator==(const BasicVector2&) const noexcept = default;
};

using Tuple2 = BasicVector2<double>;
using Vector2Flt = BasicVector2<float>;

/// \name 2-D vector arithmetic, in the pair's scalar
/// The first pair argument fixes the scalar; the other arguments then convert as for an
/// ordinary function.
/// @{
template <LinearScalar T>
constexpr BasicVector2<T> operator+(BasicVector2<T> a,
                                    const std::type_identity_t<BasicVector2<T>>& b) noexcept {
    return a += b;
}
template <LinearScalar T>
constexpr BasicVector2<T> operator-(BasicVector2<T> a,
                                    const std::type_identity_t<BasicVector2<T>>& b) noexcept {
    return a -= b;
}
template <LinearScalar T>
constexpr BasicVector2<T> operator*(BasicVector2<T> t, std::type_identity_t<T> s) noexcept {
    return t *= s;
}
template <LinearScalar T>
constexpr BasicVector2<T> operator*(std::type_identity_t<T> s, BasicVector2<T> t) noexcept {
    return t *= s;
}
template <LinearScalar T>
constexpr BasicVector2<T> operator/(BasicVector2<T> t, std::type_identity_t<T> s) noexcept {
    return t /= s;
}

template <LinearScalar T>
constexpr T dot(const BasicVector2<T>& a, const std::type_identity_t<BasicVector2<T>>& b) noexcept {
    return a.x * b.x + a.y * b.y;
}

/// The z component of the 3-D cross product of (a, 0) and (b, 0): positive when b turns
/// counter-clockwise from a.
template <LinearScalar T>
constexpr T cross(const BasicVector2<T>& a,
                  const std::type_identity_t<BasicVector2<T>>& b) noexcept {
    return a.x * b.y - a.y * b.x;
}
/// @}

/// \name Comparisons with a tolerance
/// @{

/// True when |a − b|, computed in the pair's scalar, is strictly below `tol`.
template <LinearScalar T>
bool equivalent(const BasicVector2<T>& a, const std::type_identity_t<BasicVector2<T>>& b,
                std::type_identity_t<T> tol) noexcept {
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
