#pragma once

#include <cmath>
#include <limits>
#include <type_traits>

#include "tessar/core/Containers.h"
#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/AffineMatrixFlt.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/PointFlt.h"
#include "tessar/linear/Range3d.h"
#include "tessar/linear/VectorFlt.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// An axis-aligned box in single precision: six floats, the min corner (x, y, z) then the
/// max corner. Meshes report their extent in it, the octree sizes its root cell from it and
/// the camera fits its near and far planes to it.
///
/// A default-made box is the degenerate zero box at the origin, and it counts as valid. Only
/// `setInvalid()` makes a box empty, ready for accumulating points or boxes with `extend`.
/// Apart from `asRange3d()`, no operation looks at validity: each does its arithmetic on the
/// six values as they are, so an empty box stays or turns into whatever that arithmetic
/// gives, and NaNs flow through. Every operation is allocation-free except `getVertices()`.
class FORMWORK_EXPORT BoundingBox {
public:
    /// \name Construction and assignment
    /// Pointer arguments point at three coordinates (x, y, z); they are not checked.
    /// @{

    /// The zero box at the origin, which is valid.
    // Deliberate: a fresh box is the degenerate box at the origin, not an empty one; callers
    // that accumulate points start from setInvalid().
    constexpr BoundingBox() noexcept = default;
    constexpr BoundingBox(const float* min, const float* max) noexcept
        : min_{min[0], min[1], min[2]}, max_{max[0], max[1], max[2]} {}
    /// The degenerate box min = max = `p`.
    constexpr explicit BoundingBox(const float* p) noexcept : BoundingBox(p, p) {}
    /// The cube of half-side `r` about `p`: p − r to p + r on every axis, in float.
    constexpr BoundingBox(const float* p, float r) noexcept
        : min_{p[0] - r, p[1] - r, p[2] - r}, max_{p[0] + r, p[1] + r, p[2] + r} {}
    /// Each value rounded to the nearest float.
    constexpr BoundingBox(const double* min, const double* max) noexcept
        : min_{static_cast<float>(min[0]), static_cast<float>(min[1]), static_cast<float>(min[2])},
          max_{static_cast<float>(max[0]), static_cast<float>(max[1]), static_cast<float>(max[2])} {
    }
    /// The degenerate box min = max = `p`, rounded to float.
    constexpr explicit BoundingBox(const double* p) noexcept : BoundingBox(p, p) {}

    /// The corners of `range`, each component rounded to float. The range is taken as it
    /// is: an empty range gives an invalid box.
    constexpr BoundingBox& operator=(const koLinear::Range3d& range) noexcept {
        const double min[3] = {range.min.x, range.min.y, range.min.z};
        const double max[3] = {range.max.x, range.max.y, range.max.z};
        return *this = BoundingBox(min, max);
    }

    /// The empty box: every min at the largest finite float and every max at its negative,
    /// so that extending it by a point or a box gives exactly that point or box.
    constexpr void setInvalid() noexcept {
        for (int i = 0; i < 3; ++i) {
            min_[i] = std::numeric_limits<float>::max();
            max_[i] = -std::numeric_limits<float>::max();
        }
    }
    /// All six values 0, as a default-made box.
    constexpr void zero() noexcept { *this = BoundingBox(); }
    /// @}

    /// \name Corners and extents
    /// Float pointer arguments receive three values.
    /// @{

    /// True when max >= min on x, y and z; false when any of the six values is NaN.
    constexpr bool isValid() const noexcept {
        return max_[0] >= min_[0] && max_[1] >= min_[1] && max_[2] >= min_[2];
    }
    constexpr koLinear::PointFlt minPt() const noexcept { return {min_[0], min_[1], min_[2]}; }
    constexpr void minPt(float* out) const noexcept { copy3(min_, out); }
    constexpr koLinear::PointFlt maxPt() const noexcept { return {max_[0], max_[1], max_[2]}; }
    constexpr void maxPt(float* out) const noexcept { copy3(max_, out); }

    /// (min + max) · 0.5 per axis, in float.
    constexpr koLinear::PointFlt center() const noexcept {
        return {(min_[0] + max_[0]) * 0.5f, (min_[1] + max_[1]) * 0.5f, (min_[2] + max_[2]) * 0.5f};
    }
    constexpr void center(float* out) const noexcept {
        const koLinear::PointFlt c = center();
        out[0] = c.x;
        out[1] = c.y;
        out[2] = c.z;
    }
    /// The float sum max + min, widened to double and then halved in double: the sum is
    /// rounded to float as in `center()`, the halving is not.
    constexpr void center(double* out) const noexcept {
        for (int i = 0; i < 3; ++i) {
            out[i] = static_cast<double>(max_[i] + min_[i]) * 0.5;
        }
    }

    /// max − min per axis.
    constexpr void diagonal(float* out) const noexcept {
        for (int i = 0; i < 3; ++i) {
            out[i] = max_[i] - min_[i];
        }
    }
    /// (max − min) · 0.5 per axis, in float.
    constexpr koLinear::VectorFlt halfDiagonal() const noexcept {
        return {(max_[0] - min_[0]) * 0.5f, (max_[1] - min_[1]) * 0.5f, (max_[2] - min_[2]) * 0.5f};
    }
    constexpr void halfDiagonal(float* out) const noexcept {
        const koLinear::VectorFlt h = halfDiagonal();
        out[0] = h.x;
        out[1] = h.y;
        out[2] = h.z;
    }
    /// The length of max − min, in float.
    float diagonalLength() const noexcept {
        return koLinear::VectorFlt(max_[0] - min_[0], max_[1] - min_[1], max_[2] - min_[2])
            .length();
    }

    /// Corner number `i`: x from max when bit 0 of `i` is set, else from min; y with bit 1;
    /// z with bit 2. Higher bits are ignored, so corner 0 is min and corner 7 is max.
    constexpr void getPoint(int i, koLinear::PointFlt& out) const noexcept {
        out = {(i & 1) ? max_[0] : min_[0], (i & 2) ? max_[1] : min_[1],
               (i & 4) ? max_[2] : min_[2]};
    }
    constexpr void getPoint(int i, float* out) const noexcept {
        koLinear::PointFlt p;
        getPoint(i, p);
        out[0] = p.x;
        out[1] = p.y;
        out[2] = p.z;
    }

    /// The eight corners widened to double, in face order: the bottom face (z = min) walked
    /// from the min corner through +y, (min x, min y), (min x, max y), (max x, max y),
    /// (max x, min y), then the top face (z = max) in the same walk. This is not the bit
    /// numbering of `getPoint`. Allocates the returned vector.
    ko::vector<koLinear::Point> getVertices() const;
    /// @}

    /// \name Distance, overlap and containment
    /// @{

    /// The squared distance from `p` to the box, 0 inside or on it. Summed over x, y, z in
    /// that order in float, and returned widened to double.
    constexpr double distance2(const koLinear::PointFlt& p) const noexcept {
        float sum = 0.0f;
        for (int i = 0; i < 3; ++i) {
            if (min_[i] > p[i]) {
                const float d = p[i] - min_[i];
                sum += d * d;
            } else if (p[i] > max_[i]) {
                const float d = p[i] - max_[i];
                sum += d * d;
            }
        }
        return sum;
    }
    /// The square root, in double, of `distance2(p)`.
    double distance(const koLinear::PointFlt& p) const noexcept { return std::sqrt(distance2(p)); }

    /// True when the closed boxes overlap on x, y and z: boxes that only touch intersect.
    // Deliberate: touching counts as overlap (closed intervals), unlike the strict contains().
    constexpr bool intersects(const BoundingBox& b) const noexcept {
        return intersects2D(b) && !(b.min_[2] > max_[2]) && !(min_[2] > b.max_[2]);
    }
    /// The overlap test of `intersects` on x and y only; z is ignored.
    constexpr bool intersects2D(const BoundingBox& b) const noexcept {
        return !(b.min_[0] > max_[0]) && !(b.min_[1] > max_[1]) && !(min_[0] > b.max_[0]) &&
               !(min_[1] > b.max_[1]);
    }

    /// True only when `b` lies strictly inside: b.min > min and max > b.max on every axis. A
    /// box does not contain itself, nor a box that touches its boundary; any NaN gives false.
    // Deliberate: strict on every axis, never relaxed to >=; a box touching a face, or the
    // box itself, is not inside.
    constexpr bool contains(const BoundingBox& b) const noexcept {
        return b.min_[0] > min_[0] && b.min_[1] > min_[1] && b.min_[2] > min_[2] &&
               max_[0] > b.max_[0] && max_[1] > b.max_[1] && max_[2] > b.max_[2];
    }
    /// @}

    /// \name Conversion
    /// @{

    /// The range with the box's corners widened to double when the box is valid; otherwise
    /// the unbounded range of `Range3d::setUnbounded()`, whatever the six values are.
    // Deliberate: an invalid box converts to the unbounded range, the state that ranges
    // accumulate from, never to a range with the box's own crossed corners.
    constexpr koLinear::Range3d asRange3d() const noexcept {
        koLinear::Range3d range;
        range.setUnbounded();
        if (isValid()) {
            range.set(koLinear::Point(minPt()), koLinear::Point(maxPt()));
        }
        return range;
    }
    /// @}

    /// \name Growing, shrinking and moving
    /// @{

    /// Per axis: min = p where min > p, max = p where p > max. On an empty box this gives
    /// min = max = p.
    constexpr void extend(const koLinear::PointFlt& p) noexcept {
        for (int i = 0; i < 3; ++i) {
            if (min_[i] > p[i]) {
                min_[i] = p[i];
            }
            if (p[i] > max_[i]) {
                max_[i] = p[i];
            }
        }
    }
    /// Per axis: min = b.min where min > b.min, max = b.max where b.max > max. `b` is not
    /// checked: extending by an empty box changes nothing, an empty box extended by `b`
    /// becomes `b`.
    constexpr void extend(const BoundingBox& b) noexcept {
        for (int i = 0; i < 3; ++i) {
            if (min_[i] > b.min_[i]) {
                min_[i] = b.min_[i];
            }
            if (b.max_[i] > max_[i]) {
                max_[i] = b.max_[i];
            }
        }
    }
    /// Grows the box by `d` in total along each axis: h = d · 0.5 formed in double and
    /// rounded to float, then min −= h and max += h.
    constexpr void extend(float d) noexcept {
        const float h = static_cast<float>(static_cast<double>(d) * 0.5);
        for (int i = 0; i < 3; ++i) {
            min_[i] -= h;
            max_[i] += h;
        }
    }
    /// Moves every face outwards by one hundredth of `diagonalLength()` (that product formed
    /// in double and rounded to float). A degenerate box is left as it is.
    void extendFractionally() noexcept {
        const float e = static_cast<float>(static_cast<double>(diagonalLength()) * 0.01);
        for (int i = 0; i < 3; ++i) {
            min_[i] -= e;
            max_[i] += e;
        }
    }
    /// Makes the box the cube about `center()` whose half-side is the largest of the three
    /// half-extents of `halfDiagonal()`, in float.
    constexpr void extendToCube() noexcept {
        const koLinear::PointFlt c = center();
        const koLinear::VectorFlt half = halfDiagonal();
        float h = half.x;
        if (half.y > h) {
            h = half.y;
        }
        if (half.z > h) {
            h = half.z;
        }
        for (int i = 0; i < 3; ++i) {
            min_[i] = c[i] - h;
            max_[i] = c[i] + h;
        }
    }
    /// Scales the box by `s` about its centre, in float, per axis: c = (min + max) · 0.5,
    /// m = (min − c) · s, min = c + m, max = c − m. Both corners come from the min side, so
    /// where the centre rounds, max may move even for s = 1. A negative `s` swaps the corners
    /// and leaves the box invalid.
    // Deliberate: a negative factor is not corrected; the mirrored box stays inverted.
    constexpr void scale(float s) noexcept {
        for (int i = 0; i < 3; ++i) {
            const float c = (min_[i] + max_[i]) * 0.5f;
            const float m = (min_[i] - c) * s;
            min_[i] = c + m;
            max_[i] = c - m;
        }
    }
    /// Per axis: min = b.min where b.min > min, max = b.max where max > b.max: the
    /// intersection of the two boxes, invalid when they are disjoint.
    constexpr void clipTo(const BoundingBox& b) noexcept {
        for (int i = 0; i < 3; ++i) {
            if (b.min_[i] > min_[i]) {
                min_[i] = b.min_[i];
            }
            if (max_[i] > b.max_[i]) {
                max_[i] = b.max_[i];
            }
        }
    }

    /// Makes the box the box about its eight corners transformed by `m`: each corner is
    /// widened to double, transformed as `Point * AffineMatrix` and rounded back to float.
    /// The box is not checked first: an empty box becomes the box about wherever its
    /// extreme values map.
    void transform(const koLinear::AffineMatrix& m) noexcept;
    /// As above, transforming each corner in float as `PointFlt * AffineMatrixFlt`.
    void transform(const koLinear::AffineMatrixFlt& m) noexcept;
    /// @}

private:
    static constexpr void copy3(const float* from, float* to) noexcept {
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }

    float min_[3] = {0.0f, 0.0f, 0.0f};
    float max_[3] = {0.0f, 0.0f, 0.0f};
};

static_assert(sizeof(BoundingBox) == 6 * sizeof(float));
static_assert(std::is_trivially_copyable_v<BoundingBox>);

/// True when each of the six values (min x, y, z, then max x, y, z) of `a` and `b` is within
/// `tolerance`: the float difference a − b, made absolute in double and rounded back to
/// float, must be strictly below `tolerance`. A difference exactly equal to the tolerance
/// fails, and a tolerance of 0 makes no two boxes equivalent, not even identical ones; any
/// NaN fails. Stops at the first value that fails.
FORMWORK_EXPORT bool equivalent(const BoundingBox& a, const BoundingBox& b, float tolerance);

} // namespace koGeom
