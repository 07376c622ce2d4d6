#pragma once

#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"
#include "geom/curve/MeshCoordBase.h"
#include "geom/topomesh/TopoMeshHandles.h"

namespace koGeom {

/// A point on a triangle face of a `TopoMesh`: the face and the barycentric weights of its
/// corners (see `MeshCoordBase`), so that the point follows the mesh when its vertices move.
/// The corners, in weight order, are the origins of the face's first edge, of first.next and
/// of first.prev; side k (0, 1, 2) is the half-edge first, first.next, first.prev, running
/// from corner k to corner k + 1. Only meaningful on a triangle: on a larger face the
/// weights name a point of the triangle of those three corners.
///
/// A plain value; every operation is O(1) and, apart from the constructors, needs a
/// non-null face.
class FORMWORK_EXPORT TopoMeshCoord : public MeshCoordBase {
public:
    /// Invalid (all weights zero), on no face.
    constexpr TopoMeshCoord() noexcept = default;
    constexpr TopoMeshCoord(TopoMeshFace face, double w0, double w1, double w2) noexcept
        : MeshCoordBase(w0, w1, w2), face_(face) {}

    TopoMeshFace getFace() const noexcept { return face_; }
    void setFace(TopoMeshFace face) noexcept { face_ = face; }

    /// The three corner points in weight order.
    static void getPoints(TopoMeshFace face, koLinear::Point corners[3]) noexcept;

    /// \name Geometry on the mesh
    /// @{
    /// The point on the mesh.
    koLinear::Point evaluate() const noexcept;
    /// Sets the face and the weights of `point`, taken to lie in the face's plane (see
    /// `MeshCoordBase::setFromPointBase`). Returns false and leaves the coordinate invalid
    /// when the face is degenerate or null.
    bool setFromPoint(TopoMeshFace face, const koLinear::Point& point) noexcept;
    /// Sets the face and the weights of the point of the face nearest `point` (see
    /// `MeshCoordBase::projectBase`). Returns false and leaves the coordinate invalid when
    /// the face is degenerate or null.
    bool project(TopoMeshFace face, const koLinear::Point& point) noexcept;
    /// True when the point lies within `tolerance` of a corner (see
    /// `MeshCoordBase::onVertexBase`); the corner's vertex is stored in `*vertex` when the
    /// result is true and `vertex` is not null.
    bool onVertex(double tolerance, TopoMeshVertex* vertex) const noexcept;
    /// True when the point lies within `tolerance` of a side (see
    /// `MeshCoordBase::onEdgeBase`); the side's half-edge is stored in `*edge` when the result
    /// is true and `edge` is not null.
    bool onEdge(double tolerance, TopoMeshEdge* edge) const noexcept;
    /// Not on a side and every weight at least 0.
    bool isInterior(double tolerance) const noexcept;
    /// Not on a side and some weight below 0 (a weight that is not a number counts as below).
    bool isExterior(double tolerance) const noexcept;
    /// @}

    /// The half-edge of side `side` (0, 1 or 2; not checked) of `face`.
    static TopoMeshEdge sideEdge(TopoMeshFace face, int side) noexcept;

private:
    TopoMeshFace face_;
};

} // namespace koGeom
