#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/Plane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Range3d.h"
#include "tessar/linear/Vector.h"

#include "geom/FormworkExport.h"
#include "geom/spatial/OrientedPlane.h"

namespace koGeom {

/// A box with its own axes, as a plain value in double precision: the points
/// origin + a · length0 · axis0 + b · length1 · axis1 + c · length2 · axis2 for a, b, c in
/// [0, 1]. The origin is one corner and the axes are unit edge directions; nothing checks
/// that they are orthogonal. A negative length0 marks an unbounded box (`setUnbounded`).
///
/// A default-made box has its origin at the origin, axes x, y and z and all three lengths 0.
/// Zero-length vectors given as edges normalise to the zero direction.
class FORMWORK_EXPORT OrientedBox {
public:
    /// \name Construction and setting
    /// @{
    OrientedBox() noexcept = default;
    /// The box on the edges `a`, `b`, `c` from `origin`: axes are the normalised edges,
    /// lengths their lengths.
    OrientedBox(const koLinear::Point& origin, const koLinear::Vector& a, const koLinear::Vector& b,
                const koLinear::Vector& c) noexcept;
    /// The range as a box: origin at its minimum corner, axes x, y, z, lengths its size.
    explicit OrientedBox(const koLinear::Range3d& r) noexcept;
    /// The flat box of a parametric plane: see `set(const ParamPlane&)`.
    explicit OrientedBox(const koLinear::ParamPlane& p) noexcept;

    void set(const koLinear::Point& origin, const koLinear::Vector& a, const koLinear::Vector& b,
             const koLinear::Vector& c) noexcept;
    /// Stores all seven parts as given.
    void set(const koLinear::Point& origin, const koLinear::Normal& axis0,
             const koLinear::Normal& axis1, const koLinear::Normal& axis2, double length0,
             double length1, double length2) noexcept;
    /// The flat box of `p`: origin = p's origin, axis0 = its normal (the thin axis, length
    /// 0), axis1 and axis2 = its two edges normalised, with the edges' lengths.
    void set(const koLinear::ParamPlane& p) noexcept;
    /// The point box at `p`: axes x, y, z, all lengths 0 (bounded again).
    void set(const koLinear::Point& p) noexcept;

    /// Marks the box unbounded (length0 = -1); nothing else changes.
    void setUnbounded() noexcept { length_[0] = -1.0; }
    /// True when length0 >= 0.
    bool isBounded() const noexcept { return length_[0] >= 0.0; }
    /// @}

    /// \name Parts
    /// `i` is 0, 1 or 2 and is not checked.
    /// @{
    const koLinear::Point& origin() const noexcept { return origin_; }
    const koLinear::Normal& axis(int i) const noexcept { return axis_[i]; }
    double length(int i) const noexcept { return length_[i]; }
    /// @}

    /// \name Points and frames
    /// @{

    /// origin + axis0 · (a · length0) + axis1 · (b · length1) + axis2 · (c · length2).
    koLinear::Point eval(double a, double b, double c) const noexcept;
    /// eval(0.5, 0.5, 0.5).
    koLinear::Point mid() const noexcept { return eval(0.5, 0.5, 0.5); }
    /// The frame at the origin with rows axis1, axis2, axis0: the box's first axis becomes
    /// the frame's third, so a box made from a plane has the plane's normal as its z. The
    /// lengths play no part.
    koLinear::AffineMatrix frame() const noexcept;

    /// The axis-aligned range of the origin and its three neighbouring corners
    /// (origin + axis_i · length_i) only. The other four corners are left out, so for a box
    /// that is not flat the range can be smaller than the box.
    koLinear::Range3d axisAlignedExtent() const noexcept;
    /// @}

    /// \name Changing
    /// @{

    /// Grows every length by `d`, symmetrically: the origin moves by −(axis0 + axis1 +
    /// axis2) · d/2.
    void enlarge(double d) noexcept;
    /// Grows each edge shorter than `s` to exactly `s` about its middle; longer edges are
    /// untouched.
    void makeAtLeast(double s) noexcept;
    /// Moves the box by `m`: the origin as a point; each edge (axis · length) as a vector,
    /// whose length becomes the new length and whose direction the new axis. The lengths are
    /// taken as they are, so an unbounded box (length0 = −1) comes out bounded.
    void transform(const koLinear::AffineMatrix& m) noexcept;
    /// @}

    /// \name Mid-planes
    /// @{

    /// The middle slice across the axis most aligned with `d` (|d · axis| largest, `d`
    /// normalised). Its normal is that axis and its origin the box origin moved half that
    /// axis's length along it. A tie between axis0 and another axis goes to the other one, a
    /// tie between axis1 and axis2 to axis1. The in-plane axes are: for normal axis2, axis0
    /// then axis1; for axis1, axis0 then axis2; for axis0, axis2 then axis1.
    OrientedPlane dominantMidPlane(const koLinear::Vector& d) const noexcept;
    /// The middle slice across axis0: normal axis0, axisU = axis2, axisV = axis1.
    OrientedPlane uvMidplane() const noexcept;
    /// @}

private:
    // The slice across axis `n` at its middle, with in-plane axes `u` and `v`.
    OrientedPlane midPlane(int n, int u, int v) const noexcept;

    koLinear::Point origin_;
    koLinear::Normal axis_[3] = {koLinear::Normal::unitX(), koLinear::Normal::unitY(),
                                 koLinear::Normal::unitZ()};
    double length_[3] = {0.0, 0.0, 0.0};
};

/// The flat box in which the plane `p` crosses the range `r`: its axes are u (an in-plane
/// reference direction: along x when p's normal is parallel to z, otherwise along p's
/// intersection with the plane z = 0), v = u × normal and w = the normal; its extent along u
/// and v covers the shadow of the whole range on those directions, and length2 is 0.
FORMWORK_EXPORT OrientedBox intersect(const koLinear::Range3d& r, const koLinear::Plane& p);

} // namespace koGeom
