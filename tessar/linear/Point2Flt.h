#pragma once

#include "tessar/linear/Point2.h"
#include "tessar/linear/Vector2Flt.h"

namespace koLinear {

/// A position in the plane in single precision (two floats): the form in which meshes store
/// texture coordinates. Point2Flt − Point2Flt is a `Vector2Flt`. Conversions to and from
/// `Point2` are explicit both ways.
class Point2Flt {
public:
    float x = 0.0f;
    float y = 0.0f;

    /// The origin.
    constexpr Point2Flt() noexcept = default;
    constexpr Point2Flt(float x, float y) noexcept : x(x), y(y) {}
    /// Each component of `p` rounded to the nearest float.
    constexpr explicit Point2Flt(const Point2& p) noexcept
        : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)) {}
    /// Each component widened exactly to double.
    constexpr explicit operator Point2() const noexcept { return {x, y}; }
    /// The point at displacement `v` from the origin.
    constexpr explicit Point2Flt(const Vector2Flt& v) noexcept : x(v.x), y(v.y) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator Vector2Flt() const noexcept { return {x, y}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y. The index is not checked.
    /// @{
    constexpr float& operator[](int i) noexcept { return i == 0 ? x : y; }
    constexpr float operator[](int i) const noexcept { return i == 0 ? x : y; }
    /// @}

    /// \name Moving by a displacement
    /// @{
    constexpr Point2Flt& operator+=(const Vector2Flt& v) noexcept {
        x += v.x;
        y += v.y;
        return *this;
    }
    constexpr Point2Flt& operator-=(const Vector2Flt& v) noexcept {
        x -= v.x;
        y -= v.y;
        return *this;
    }
    /// @}

    constexpr bool operator==(const Point2Flt&) const noexcept = default;
};

/// \name Point2Flt arithmetic and distances, in float
/// @{
constexpr Point2Flt operator+(Point2Flt p, const Vector2Flt& v) noexcept { return p += v; }
constexpr Point2Flt operator-(Point2Flt p, const Vector2Flt& v) noexcept { return p -= v; }
constexpr Vector2Flt operator-(const Point2Flt& a, const Point2Flt& b) noexcept {
    return {a.x - b.x, a.y - b.y};
}

/// The affine combination wa·a + wb·b (weights summing to 1, not checked).
constexpr Point2Flt combine(const Point2Flt& a, float wa, const Point2Flt& b, float wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y};
}

constexpr float distance2(const Point2Flt& a, const Point2Flt& b) noexcept {
    return (a - b).length2();
}
inline float distance(const Point2Flt& a, const Point2Flt& b) noexcept { return (a - b).length(); }

/// True when the distance between `a` and `b` is strictly below `tol`.
inline bool equivalent(const Point2Flt& a, const Point2Flt& b, float tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
