#pragma once

#include <cstdint>
#include <type_traits>

namespace koGeom {

/// \name Index records
/// The primitives of a compact mesh, as signed 32-bit indices into its vertex array. Plain
/// and unpadded: a triangle array is exactly three indices per triangle.
/// @{

/// A triangle: its three corners, in order.
struct MeshTriangle {
    std::int32_t v[3];

    std::int32_t& operator[](int corner) noexcept { return v[corner]; }
    const std::int32_t& operator[](int corner) const noexcept { return v[corner]; }

    void set(std::int32_t a, std::int32_t b, std::int32_t c) noexcept {
        v[0] = a;
        v[1] = b;
        v[2] = c;
    }

    friend bool operator==(const MeshTriangle&, const MeshTriangle&) = default;
};

/// A line segment: its two ends.
struct MeshLine {
    std::int32_t v[2];

    std::int32_t& operator[](int end) noexcept { return v[end]; }
    const std::int32_t& operator[](int end) const noexcept { return v[end]; }

    void set(std::int32_t a, std::int32_t b) noexcept {
        v[0] = a;
        v[1] = b;
    }

    friend bool operator==(const MeshLine&, const MeshLine&) = default;
};

/// @}

static_assert(sizeof(MeshTriangle) == 12 && sizeof(MeshLine) == 8);
static_assert(std::is_trivially_copyable_v<MeshTriangle> &&
              std::is_standard_layout_v<MeshTriangle>);
static_assert(std::is_trivially_copyable_v<MeshLine> && std::is_standard_layout_v<MeshLine>);

} // namespace koGeom
