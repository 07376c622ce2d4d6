#pragma once

#include "tessar/linear/Vector.h"

namespace koLinear {

/// A direction in space: three doubles kept at unit length by whoever makes the normal
/// (nothing renormalises it afterwards). It converts implicitly to a `Vector`, so all vector
/// arithmetic applies and gives vectors; negation and `reverse()` keep it a normal.
class Normal {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    /// The zero normal: not a direction; assign one before use.
    constexpr Normal() noexcept = default;
    /// Stores the components as given; the caller supplies a unit direction.
    constexpr Normal(double x, double y, double z) noexcept : x(x), y(y), z(z) {}
    /// The direction of `v`, normalised; the zero normal when `v` is zero.
    explicit Normal(const Vector& v) noexcept {
        const Vector unit = v.normalized();
        x = unit.x;
        y = unit.y;
        z = unit.z;
    }

    constexpr operator Vector() const noexcept { return {x, y, z}; }

    /// \name The coordinate axes
    /// @{
    static constexpr Normal unitX() noexcept { return {1.0, 0.0, 0.0}; }
    static constexpr Normal unitY() noexcept { return {0.0, 1.0, 0.0}; }
    static constexpr Normal unitZ() noexcept { return {0.0, 0.0, 1.0}; }
    /// @}

    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    constexpr double operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }

    /// Turns the normal to point the opposite way.
    constexpr void reverse() noexcept {
        x = -x;
        y = -y;
        z = -z;
    }
    constexpr Normal operator-() const noexcept { return {-x, -y, -z}; }

    constexpr bool operator==(const Normal&) const noexcept = default;
};

/// \name Vector arithmetic with a normal first
/// A normal takes part in vector arithmetic as the `Vector` it converts to. The vector
/// operations take their scalar from their first vector argument, which a normal cannot
/// supply; these give the same results where a normal is that argument.
/// @{
constexpr Vector operator+(const Normal& a, const Vector& b) noexcept { return Vector(a) + b; }
constexpr Vector operator-(const Normal& a, const Vector& b) noexcept { return Vector(a) - b; }
constexpr Vector operator*(const Normal& n, double s) noexcept { return Vector(n) * s; }
constexpr Vector operator*(double s, const Normal& n) noexcept { return s * Vector(n); }
constexpr Vector operator/(const Normal& n, double s) noexcept { return Vector(n) / s; }
constexpr double dot(const Normal& a, const Vector& b) noexcept { return dot(Vector(a), b); }
constexpr Vector cross(const Normal& a, const Vector& b) noexcept { return cross(Vector(a), b); }
inline bool equivalent(const Normal& a, const Vector& b, double tol) noexcept {
    return equivalent(Vector(a), b, tol);
}
/// @}

} // namespace koLinear
