#pragma once

#include <type_traits>

#include "tessar/linear/LinearScalar.h"
#include "tessar/linear/Vector.h"

namespace koLinear {

/// A position in space (three scalars). Points differ by vectors: point − point is a vector,
/// point ± vector a point; weighted sums of points are made with `combine`.
///
/// `Point` holds doubles; `PointFlt` holds floats, the form in which meshes store their
/// vertices, and computes in float: PointFlt − PointFlt is a `VectorFlt`. Conversions between
/// the two are explicit both ways.
template <LinearScalar T>
class BasicPoint {
public:
    T x = 0;
    T y = 0;
    T z = 0;

    /// The origin.
    constexpr BasicPoint() noexcept = default;
    constexpr BasicPoint(T x, T y, T z) noexcept : x(x), y(y), z(z) {}
    /// Each component of `p` rounded to the nearest float, or widened exactly to double.
    constexpr explicit BasicPoint(const BasicPoint<detail::OtherScalar<T>>& p) noexcept
        : x(static_cast<T>(p.x)), y(static_cast<T>(p.y)), z(static_cast<T>(p.z)) {}
    /// The point at displacement `v` from the origin.
    constexpr explicit BasicPoint(const BasicVector<T>& v) noexcept : x(v.x), y(v.y), z(v.z) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator BasicVector<T>() const noexcept { return {x, y, z}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr T& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr T operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Moving by a vector
    /// @{
    constexpr BasicPoint& operator+=(const BasicVector<T>& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr BasicPoint& operator-=(const BasicVector<T>& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    /// @}

    /// Exact comparison of the three components; see `equivalent` for a tolerance.
    constexpr bool operator==(const BasicPoint&) const noexcept = default;
};

using Point = BasicPoint<double>;
using PointFlt = BasicPoint<float>;

/// \name Point arithmetic, in the point's scalar
/// The first point argument fixes the scalar, as for vectors.
/// @{
template <LinearScalar T>
constexpr BasicPoint<T> operator+(BasicPoint<T> p,
                                  const std::type_identity_t<BasicVector<T>>& v) noexcept {
    return p += v;
}
template <LinearScalar T>
constexpr BasicPoint<T> operator-(BasicPoint<T> p,
                                  const std::type_identity_t<BasicVector<T>>& v) noexcept {
    return p -= v;
}
template <LinearScalar T>
constexpr BasicVector<T> operator-(const BasicPoint<T>& a,
                                   const std::type_identity_t<BasicPoint<T>>& b) noexcept {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// The affine combination wa·a + wb·b. The weights should sum to 1 for the result to be
/// independent of the origin; that is not checked.
template <LinearScalar T>
constexpr BasicPoint<T> combine(const BasicPoint<T>& a, std::type_identity_t<T> wa,
                                const std::type_identity_t<BasicPoint<T>>& b,
                                std::type_identity_t<T> wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z};
}

/// The affine combination wa·a + wb·b + wc·c of double points (barycentric weights, summing
/// to 1).
constexpr Point combine(const Point& a, double wa, const Point& b, double wb, const Point& c,
                        double wc) noexcept {
    return {wa * a.x + wb * b.x + wc * c.x, wa * a.y + wb * b.y + wc * c.y,
            wa * a.z + wb * b.z + wc * c.z};
}
/// @}

/// \name Distances, in the point's scalar
/// @{
template <LinearScalar T>
constexpr T distance2(const BasicPoint<T>& a,
                      const std::type_identity_t<BasicPoint<T>>& b) noexcept {
    return (a - b).length2();
}
template <LinearScalar T>
T distance(const BasicPoint<T>& a, const std::type_identity_t<BasicPoint<T>>& b) noexcept {
    return (a - b).length();
}

/// True when the distance between `a` and `b` is strictly below `tol` (use `epsilonTol`, or
/// `epsilonTolFlt` for floats); a tolerance of 0 makes nothing equivalent, not even equal
/// points.
template <LinearScalar T>
bool equivalent(const BasicPoint<T>& a, const std::type_identity_t<BasicPoint<T>>& b,
                std::type_identity_t<T> tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
