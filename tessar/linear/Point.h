#pragma once

#include "tessar/linear/Vector.h"

namespace koLinear {

/// A position in space (three doubles). Points differ by vectors: Point − Point is a
/// `Vector`, Point ± Vector a Point; weighted sums of points are made with `combine`.
class Point {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    /// The origin.
    constexpr Point() noexcept = default;
    constexpr Point(double x, double y, double z) noexcept : x(x), y(y), z(z) {}
    /// The point at displacement `v` from the origin.
    constexpr explicit Point(const Vector& v) noexcept : x(v.x), y(v.y), z(v.z) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator Vector() const noexcept { return {x, y, z}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr double& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr double operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Moving by a vector
    /// @{
    constexpr Point& operator+=(const Vector& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr Point& operator-=(const Vector& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    /// @}

    /// Exact comparison of the three components; see `equivalent` for a tolerance.
    constexpr bool operator==(const Point&) const noexcept = default;
};

/// \name Point arithmetic
/// @{
constexpr Point operator+(Point p, const Vector& v) noexcept { return p += v; }
constexpr Point operator-(Point p, const Vector& v) noexcept { return p -= v; }
constexpr Vector operator-(const Point& a, const Point& b) noexcept {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// The affine combination wa·a + wb·b. The weights should sum to 1 for the result to be
/// independent of the origin; that is not checked.
constexpr Point combine(const Point& a, double wa, const Point& b, double wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z};
}

/// The affine combination wa·a + wb·b + wc·c (barycentric weights, summing to 1).
constexpr Point combine(const Point& a, double wa, const Point& b, double wb, const Point& c,
                        double wc) noexcept {
    return {wa * a.x + wb * b.x + wc * c.x, wa * a.y + wb * b.y + wc * c.y,
            wa * a.z + wb * b.z + wc * c.z};
}
/// @}

/// \name Distances
/// @{
constexpr double distance2(const Point& a, const Point& b) noexcept { return (a - b).length2(); }
inline double distance(const Point& a, const Point& b) noexcept { return (a - b).length(); }

/// True when the distance between `a` and `b` is strictly below `tol`; a tolerance of 0
/// makes nothing equivalent, not even equal points.
inline bool equivalent(const Point& a, const Point& b, double tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
