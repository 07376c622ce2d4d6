#pragma once

#include <cmath>

#include "tessar/linear/Point.h"

namespace koLinear {

/// A point in homogeneous coordinates (x, y, z, w), the form a point takes between a
/// projection matrix and the division by w. It stands for the point (x/w, y/w, z/w).
class HPoint {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double w = 0.0;

    /// All four coordinates zero (no point).
    constexpr HPoint() noexcept = default;
    constexpr HPoint(double x, double y, double z, double w) noexcept : x(x), y(y), z(z), w(w) {}
    /// The point `p` with w = 1.
    constexpr explicit HPoint(const Point& p) noexcept : x(p.x), y(p.y), z(p.z), w(1.0) {}

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z, 3 is w. The index is not checked.
    /// @{
    constexpr double& operator[](int i) noexcept {
        return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w));
    }
    constexpr double operator[](int i) const noexcept {
        return i == 0 ? x : (i == 1 ? y : (i == 2 ? z : w));
    }
    /// @}

    /// \name Back to a point
    /// @{

    /// The point (x/w, y/w, z/w). w must not be 0: a point at infinity gives infinities or
    /// NaNs.
    constexpr Point dehomogenize() const noexcept { return {x / w, y / w, z / w}; }

    /// Sets `out` to (x/w, y/w, z/w) and returns true; when w is 0 returns false and leaves
    /// `out` unchanged.
    constexpr bool dehomogenize(Point& out) const noexcept {
        if (w == 0.0) {
            return false;
        }
        out = dehomogenize();
        return true;
    }
    /// @}

    /// True for a clip-space point inside the view volume: w > 0 and |x| ≤ w, |y| ≤ w, and,
    /// when `withDepth` is set, |z| ≤ w. The boundary counts as inside.
    bool insideView(bool withDepth) const noexcept {
        return w > 0.0 && std::fabs(x) <= w && std::fabs(y) <= w &&
               (!withDepth || std::fabs(z) <= w);
    }

    /// \name Arithmetic on the four coordinates
    /// @{
    constexpr HPoint operator-() const noexcept { return {-x, -y, -z, -w}; }
    constexpr HPoint& operator+=(const HPoint& h) noexcept {
        x += h.x;
        y += h.y;
        z += h.z;
        w += h.w;
        return *this;
    }
    constexpr HPoint& operator-=(const HPoint& h) noexcept {
        x -= h.x;
        y -= h.y;
        z -= h.z;
        w -= h.w;
        return *this;
    }
    /// Scaling all four coordinates leaves the point it stands for unchanged.
    constexpr HPoint& operator*=(double s) noexcept {
        x *= s;
        y *= s;
        z *= s;
        w *= s;
        return *this;
    }
    /// @}

    /// Exact comparison of the four coordinates: (1, 0, 0, 1) and (2, 0, 0, 2) differ here
    /// although they stand for the same point.
    constexpr bool operator==(const HPoint&) const noexcept = default;
};

/// \name HPoint arithmetic
/// @{
constexpr HPoint operator+(HPoint a, const HPoint& b) noexcept { return a += b; }
constexpr HPoint operator-(HPoint a, const HPoint& b) noexcept { return a -= b; }
constexpr HPoint operator*(HPoint h, double s) noexcept { return h *= s; }
constexpr HPoint operator*(double s, HPoint h) noexcept { return h *= s; }
/// @}

} // namespace koLinear
