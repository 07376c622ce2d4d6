#pragma once

#include <type_traits>

#include "tessar/linear/Normal.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Point2Flt.h"
#include "tessar/linear/PointFlt.h"
#include "tessar/linear/Vector.h"
#include "tessar/linear/VectorFlt.h"

namespace koGeom {

namespace detail {
// The one narrowing of the records: the processor's round-to-nearest conversion.
inline float roundToFloat(double value) noexcept { return static_cast<float>(value); }

// The kinds of three-float record.
struct VertexKind;
struct NormalKind;
} // namespace detail

/// \name Vertex attribute records
/// The per-vertex records of a mesh: plain single-precision floats with no padding, so that
/// an attribute channel of width w is exactly an array of records of w floats and can be
/// handed to a drawing or file layer as one block. Conversions narrow doubles with the
/// processor's round-to-nearest and widen floats exactly; nothing is checked.
/// @{

/// Three floats, read as a vertex position (`MeshVertex`) or as a normal direction
/// (`MeshNormal`, not normalised by these records). The two are the same floats and convert
/// the same way; the kind only selects which `koLinear` types they convert to and from.
template <class Kind>
struct MeshXyz {
    static constexpr bool isVertex = std::is_same_v<Kind, detail::VertexKind>;
    static constexpr bool isNormal = std::is_same_v<Kind, detail::NormalKind>;

    float x, y, z;

    void set(float newX, float newY, float newZ) noexcept {
        x = newX;
        y = newY;
        z = newZ;
    }
    void set(const float* p) noexcept { set(p[0], p[1], p[2]); }
    /// Each component rounded to float.
    void set(const double* p) noexcept {
        set(detail::roundToFloat(p[0]), detail::roundToFloat(p[1]), detail::roundToFloat(p[2]));
    }

    /// \name Vertex conversions
    /// @{
    MeshXyz& operator=(const koLinear::PointFlt& p) noexcept requires isVertex {
        set(p.x, p.y, p.z);
        return *this;
    }
    koLinear::Point asPoint() const noexcept requires isVertex { return koLinear::Point(x, y, z); }
    koLinear::PointFlt asPointFlt() const noexcept requires isVertex {
        return koLinear::PointFlt(x, y, z);
    }
    /// @}

    /// \name Normal conversions
    /// @{
    MeshXyz& operator=(const koLinear::VectorFlt& v) noexcept requires isNormal {
        set(v.x, v.y, v.z);
        return *this;
    }
    /// Each component rounded to float.
    MeshXyz& operator=(const koLinear::Normal& n) noexcept requires isNormal {
        const double components[3] = {n.x, n.y, n.z};
        set(components);
        return *this;
    }
    koLinear::Vector asVector() const noexcept requires isNormal {
        return koLinear::Vector(x, y, z);
    }
    koLinear::VectorFlt asVectorFlt() const noexcept requires isNormal {
        return koLinear::VectorFlt(x, y, z);
    }
    /// @}

    friend bool operator==(const MeshXyz&, const MeshXyz&) = default;
};

/// A vertex position.
using MeshVertex = MeshXyz<detail::VertexKind>;
/// A normal direction.
using MeshNormal = MeshXyz<detail::NormalKind>;

/// A texture coordinate pair.
struct MeshUV {
    float u, v;

    void set(float newU, float newV) noexcept {
        u = newU;
        v = newV;
    }
    void set(const float* p) noexcept { set(p[0], p[1]); }
    /// Each rounded to float.
    void set(const double& newU, const double& newV) noexcept {
        const double pair[2] = {newU, newV};
        set(pair);
    }
    /// Each rounded to float.
    void set(const double* p) noexcept {
        set(detail::roundToFloat(p[0]), detail::roundToFloat(p[1]));
    }

    MeshUV& operator=(const koLinear::Point2Flt& p) noexcept {
        set(p.x, p.y);
        return *this;
    }

    friend bool operator==(const MeshUV&, const MeshUV&) = default;
};

/// A colour with alpha, in the order red, green, blue, alpha.
struct MeshColour {
    float r, g, b, a;

    /// Leaves all four components uninitialised, like the other records, so that arrays of
    /// colours cost nothing to make.
    MeshColour() noexcept = default;
    MeshColour(const float& red, const float& green, const float& blue, const float& alpha) noexcept
        : r(red), g(green), b(blue), a(alpha) {}

    void set(float red, float green, float blue, float alpha) noexcept {
        r = red;
        g = green;
        b = blue;
        a = alpha;
    }
    void set(const float* p) noexcept { set(p[0], p[1], p[2], p[3]); }

    friend bool operator==(const MeshColour&, const MeshColour&) = default;
};

/// A generic attribute value of `width` floats (1 to 4).
template <int width>
requires(width >= 1 && width <= 4) struct MeshFloats {
    float v[width];

    float& operator[](int i) noexcept { return v[i]; }
    const float& operator[](int i) const noexcept { return v[i]; }

    void set(const float* p) noexcept {
        for (int i = 0; i < width; ++i) {
            v[i] = p[i];
        }
    }

    friend bool operator==(const MeshFloats&, const MeshFloats&) = default;
};

using MeshFloat1 = MeshFloats<1>;
using MeshFloat2 = MeshFloats<2>;
using MeshFloat3 = MeshFloats<3>;
using MeshFloat4 = MeshFloats<4>;

/// @}

// Attribute arrays are reinterpreted as arrays of these records: no padding, no hidden state.
static_assert(sizeof(MeshVertex) == 12 && sizeof(MeshNormal) == 12);
static_assert(sizeof(MeshUV) == 8 && sizeof(MeshColour) == 16);
static_assert(sizeof(MeshFloat1) == 4 && sizeof(MeshFloat2) == 8);
static_assert(sizeof(MeshFloat3) == 12 && sizeof(MeshFloat4) == 16);
static_assert(std::is_trivially_copyable_v<MeshVertex> && std::is_standard_layout_v<MeshVertex>);
static_assert(std::is_trivially_copyable_v<MeshNormal> && std::is_standard_layout_v<MeshNormal>);
static_assert(std::is_trivially_copyable_v<MeshUV> && std::is_standard_layout_v<MeshUV>);
static_assert(std::is_trivially_copyable_v<MeshColour> && std::is_standard_layout_v<MeshColour>);
static_assert(std::is_trivially_copyable_v<MeshFloat4> && std::is_standard_layout_v<MeshFloat4>);
static_assert(std::is_trivially_default_constructible_v<MeshColour>);

} // namespace koGeom
