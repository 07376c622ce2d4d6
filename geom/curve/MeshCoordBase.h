#pragma once

#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// A point of a triangle named by three barycentric weights w0, w1, w2 of the triangle's
/// corners 0, 1, 2: the point is w0·P0 + w1·P1 + w2·P2. The weights do not name the triangle;
/// a derived class adds that (a triangle index of a compact mesh, a face of a half-edge mesh)
/// and fetches the corners, and this class does all the geometry on them, so the point follows
/// the surface when the corners move.
///
/// All three weights zero means invalid (not set). A plain value with no virtual operations.
/// Every operation is O(1) and allocates nothing.
class FORMWORK_EXPORT MeshCoordBase {
public:
    /// Invalid: all three weights zero.
    constexpr MeshCoordBase() noexcept = default;
    constexpr MeshCoordBase(double w0, double w1, double w2) noexcept : w_{w0, w1, w2} {}

    /// \name Weights
    /// @{
    /// True when any weight is non-zero.
    constexpr bool valid() const noexcept { return w_[0] != 0.0 || w_[1] != 0.0 || w_[2] != 0.0; }
    /// Makes all weights zero; returns false, so that a failing operation can end with
    /// `return setInvalid();`.
    constexpr bool setInvalid() noexcept {
        setWeights(0.0, 0.0, 0.0);
        return false;
    }

    constexpr double w0() const noexcept { return w_[0]; }
    constexpr double w1() const noexcept { return w_[1]; }
    constexpr double w2() const noexcept { return w_[2]; }
    /// The weight of corner `corner` (0, 1 or 2; not checked).
    constexpr double weight(int corner) const noexcept { return w_[corner]; }
    constexpr void setWeights(double w0, double w1, double w2) noexcept {
        w_[0] = w0;
        w_[1] = w1;
        w_[2] = w2;
    }
    /// @}

    /// \name Geometry on the triangle's corners
    /// `corners` (or p0, p1, p2) are the triangle's corners 0, 1, 2. A triangle whose normal
    /// (p2 − p1) × (p0 − p1) has a squared length below `koLinear::epsilon2Tol` is degenerate.
    /// @{

    /// The point w0·P0 + w1·P1 + w2·P2.
    koLinear::Point evaluateBase(const koLinear::Point corners[3]) const noexcept;

    /// Sets the weights of `x`, which is taken to lie in the triangle's plane (it is not
    /// projected; a point off the plane gets the weights of no point in particular). A point
    /// within `koLinear::epsilonTol` of a corner gets exactly that corner's weights (corners
    /// tried in the order 0, 1, 2). Weights outside 0…1 name points outside the triangle.
    /// Returns false and makes the coordinate invalid when the triangle is degenerate.
    bool setFromPointBase(const koLinear::Point& p0, const koLinear::Point& p1,
                          const koLinear::Point& p2, const koLinear::Point& x) noexcept;

    /// Sets the weights of a point of the triangle (its inside or its boundary) near `x`: `x`
    /// is projected onto the triangle's plane and, when it falls outside, moved by the signs of
    /// its weights (a zero weight counting as outside): with two weights out, to the corner in
    /// whose wedge it lies; with one out, to the nearest point of the edge it lies beyond. That
    /// is the nearest point of the triangle except beyond an obtuse corner, where a point of
    /// the corner's wedge that is nearer an edge still goes to the corner. Returns false and
    /// makes the coordinate invalid when the triangle is degenerate.
    bool projectBase(const koLinear::Point& p0, const koLinear::Point& p1,
                     const koLinear::Point& p2, const koLinear::Point& x) noexcept;

    /// True when the point lies within `tolerance` (strictly) of an edge: edge 0 runs from
    /// P0 to P1, edge 1 from P1 to P2, edge 2 from P2 to P0. The answer is the nearest edge;
    /// of two equally near, the lower-numbered. It is stored in `*edge` when `edge` is not null
    /// and the result is true; `*edge` is untouched otherwise.
    bool onEdgeBase(const koLinear::Point corners[3], double tolerance, int* edge) const noexcept;

    /// True when the point lies within `tolerance` (strictly) of a corner; the nearest corner
    /// (the lower-numbered of two equally near) is stored in `*vertex` as `onEdgeBase` does. A
    /// tolerance of 0 answers false even at a corner.
    bool onVertexBase(const koLinear::Point corners[3], double tolerance,
                      int* vertex) const noexcept;
    /// @}

    /// Exact comparison of the three weights.
    constexpr bool operator==(const MeshCoordBase&) const noexcept = default;

private:
    double w_[3] = {0.0, 0.0, 0.0};
};

} // namespace koGeom
