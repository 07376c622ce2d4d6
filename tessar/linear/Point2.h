#pragma once

#include <type_traits>

#include "tessar/linear/LinearScalar.h"
#include "tessar/linear/Tuple2.h"

namespace koLinear {

/// A position in the plane (two scalars). Point − point is a 2-D vector, point ± vector a
/// point.
///
/// `Point2` holds doubles and differs by `Tuple2`s; `Point2Flt` holds floats, the form in
/// which meshes store texture coordinates, computes in float and differs by `Vector2Flt`s.
/// Conversions between the two are explicit both ways.
template <LinearScalar T>
class BasicPoint2 {
public:
    T x = 0;
    T y = 0;

    /// The origin.
    constexpr BasicPoint2() noexcept = default;
    constexpr BasicPoint2(T x, T y) noexcept : x(x), y(y) {}
    /// Each component of `p` rounded to the nearest float, or widened exactly to double.
    constexpr explicit BasicPoint2(const BasicPoint2<detail::OtherScalar<T>>& p) noexcept
        : x(static_cast<T>(p.x)), y(static_cast<T>(p.y)) {}
    /// The point at displacement `t` from the origin.
    constexpr explicit BasicPoint2(const BasicVector2<T>& t) noexcept : x(t.x), y(t.y) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator BasicVector2<T>() const noexcept { return {x, y}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr T& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr T operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Moving by a displacement
    /// @{
    constexpr BasicPoint2& operator+=(const BasicVector2<T>& t) noexcept {
        x += t.x;
        y += t.y;
        return *this;
    }
    constexpr BasicPoint2& operator-=(const BasicVector2<T>& t) noexcept {
        x -= t.x;
        y -= t.y;
        return *this;
    }
    /// @}

    constexpr bool operator==(const BasicPoint2&) const noexcept = default;
};

using Point2 = BasicPoint2<double>;
using Point2Flt = BasicPoint2<float>;

/// \name 2-D point arithmetic, in the point's scalar
/// The first point argument fixes the scalar, as for 2-D vectors.
/// @{
template <LinearScalar T>
constexpr BasicPoint2<T> operator+(BasicPoint2<T> p,
                                   const std::type_identity_t<BasicVector2<T>>& t) noexcept {
    return p += t;
}
template <LinearScalar T>
constexpr BasicPoint2<T> operator-(BasicPoint2<T> p,
                                   const std::type_identity_t<BasicVector2<T>>& t) noexcept {
    return p -= t;
}
template <LinearScalar T>
constexpr BasicVector2<T> operator-(const BasicPoint2<T>& a,
                                    const std::type_identity_t<BasicPoint2<T>>& b) noexcept {
    return {a.x - b.x, a.y - b.y};
}

/// The affine combination wa·a + wb·b (weights summing to 1, not checked).
template <LinearScalar T>
constexpr BasicPoint2<T> combine(const BasicPoint2<T>& a, std::type_identity_t<T> wa,
                                 const std::type_identity_t<BasicPoint2<T>>& b,
                                 std::type_identity_t<T> wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y};
}

/// The affine combination wa·a + wb·b + wc·c of double points (weights summing to 1, not
/// checked).
constexpr Point2 combine(const Point2& a, double wa, const Point2& b, double wb, const Point2& c,
                         double wc) noexcept {
    return {wa * a.x + wb * b.x + wc * c.x, wa * a.y + wb * b.y + wc * c.y};
}
/// @}

/// \name Distances, in the point's scalar
/// @{
template <LinearScalar T>
constexpr T distance2(const BasicPoint2<T>& a,
                      const std::type_identity_t<BasicPoint2<T>>& b) noexcept {
    return (a - b).length2();
}
template <LinearScalar T>
T distance(const BasicPoint2<T>& a, const std::type_identity_t<BasicPoint2<T>>& b) noexcept {
    return (a - b).length();
}

/// True when the distance between `a` and `b` is strictly below `tol`.
template <LinearScalar T>
bool equivalent(const BasicPoint2<T>& a, const std::type_identity_t<BasicPoint2<T>>& b,
                std::type_identity_t<T> tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
