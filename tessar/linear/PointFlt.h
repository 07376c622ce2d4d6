#pragma once

#include "tessar/linear/Point.h"
#include "tessar/linear/VectorFlt.h"

namespace koLinear {

/// A position in space in single precision (three floats): the form in which meshes store
/// their vertices. PointFlt − PointFlt is a `VectorFlt`. Conversions to and from `Point` are
/// explicit both ways.
class PointFlt {
public:
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    /// The origin.
    constexpr PointFlt() noexcept = default;
    constexpr PointFlt(float x, float y, float z) noexcept : x(x), y(y), z(z) {}
    /// Each component of `p` rounded to the nearest float.
    constexpr explicit PointFlt(const Point& p) noexcept
        : x(static_cast<float>(p.x)), y(static_cast<float>(p.y)), z(static_cast<float>(p.z)) {}
    /// Each component widened exactly to double.
    constexpr explicit operator Point() const noexcept { return {x, y, z}; }
    /// The point at displacement `v` from the origin.
    constexpr explicit PointFlt(const VectorFlt& v) noexcept : x(v.x), y(v.y), z(v.z) {}
    /// The displacement of this point from the origin.
    constexpr explicit operator VectorFlt() const noexcept { return {x, y, z}; }

    /// \name Components
    /// Component `i`: 0 is x, 1 is y, 2 is z. The index is not checked.
    /// @{
    constexpr float& operator[](int i) noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    constexpr float operator[](int i) const noexcept { return i == 0 ? x : (i == 1 ? y : z); }
    /// @}

    /// \name Moving by a vector
    /// @{
    constexpr PointFlt& operator+=(const VectorFlt& v) noexcept {
        x += v.x;
        y += v.y;
        z += v.z;
        return *this;
    }
    constexpr PointFlt& operator-=(const VectorFlt& v) noexcept {
        x -= v.x;
        y -= v.y;
        z -= v.z;
        return *this;
    }
    /// @}

    constexpr bool operator==(const PointFlt&) const noexcept = default;
};

/// \name PointFlt arithmetic and distances, in float
/// @{
constexpr PointFlt operator+(PointFlt p, const VectorFlt& v) noexcept { return p += v; }
constexpr PointFlt operator-(PointFlt p, const VectorFlt& v) noexcept { return p -= v; }
constexpr VectorFlt operator-(const PointFlt& a, const PointFlt& b) noexcept {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// The affine combination wa·a + wb·b (weights summing to 1, not checked).
constexpr PointFlt combine(const PointFlt& a, float wa, const PointFlt& b, float wb) noexcept {
    return {wa * a.x + wb * b.x, wa * a.y + wb * b.y, wa * a.z + wb * b.z};
}

constexpr float distance2(const PointFlt& a, const PointFlt& b) noexcept {
    return (a - b).length2();
}
inline float distance(const PointFlt& a, const PointFlt& b) noexcept { return (a - b).length(); }

/// True when the distance between `a` and `b` is strictly below `tol` (use `epsilonTolFlt`).
inline bool equivalent(const PointFlt& a, const PointFlt& b, float tol) noexcept {
    return distance(a, b) < tol;
}
/// @}

} // namespace koLinear
