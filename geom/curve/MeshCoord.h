#pragma once

#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"
#include "geom/curve/MeshCoordBase.h"
#include "geom/mesh/MeshIndexRecords.h"
#include "geom/mesh/MeshRecords.h"

namespace koGeom {

/// A point on the surface of a triangle mesh: a triangle index and the barycentric weights of
/// its corners (see `MeshCoordBase`), so that the point follows the mesh when its vertices
/// move.
///
/// The operations take the mesh's raw arrays: vertices as three floats each (x, y, z) or as
/// `MeshVertex`, triangles as three vertex indices each or as `MeshTriangle`; corner k of
/// triangle t is vertex triangles[3t + k]. The two forms answer alike. Neither the triangle
/// index nor the arrays' bounds are checked. A plain value; every operation is O(1).
class FORMWORK_EXPORT MeshCoord : public MeshCoordBase {
public:
    /// Invalid (all weights zero), on triangle 0.
    constexpr MeshCoord() noexcept = default;
    constexpr MeshCoord(int triangle, double w0, double w1, double w2) noexcept
        : MeshCoordBase(w0, w1, w2), triangle_(triangle) {}

    int getTriangle() const noexcept { return triangle_; }
    void setTriangle(int triangle) noexcept { triangle_ = triangle; }

    /// \name Geometry on the mesh
    /// @{

    /// The point on the mesh.
    koLinear::Point evaluate(const float* vertices, const int* triangles) const noexcept;
    koLinear::Point evaluate(const MeshVertex* vertices,
                             const MeshTriangle* triangles) const noexcept;

    /// Sets the triangle index, then the weights of `x`, taken to lie in the triangle's plane
    /// (see `MeshCoordBase::setFromPointBase`). Returns false and leaves the coordinate invalid
    /// (on `triangle`) when the triangle is degenerate.
    bool setFromPoint(int triangle, const float* vertices, const int* triangles,
                      const koLinear::Point& x) noexcept;
    bool setFromPoint(int triangle, const MeshVertex* vertices, const MeshTriangle* triangles,
                      const koLinear::Point& x) noexcept;

    /// Sets the triangle index, then the weights of the point of the triangle nearest to `x`
    /// (see `MeshCoordBase::projectBase`). Returns false and leaves the coordinate invalid (on
    /// `triangle`) when the triangle is degenerate.
    bool project(int triangle, const float* vertices, const int* triangles,
                 const koLinear::Point& x) noexcept;
    bool project(int triangle, const MeshVertex* vertices, const MeshTriangle* triangles,
                 const koLinear::Point& x) noexcept;

    /// Whether the point lies within `tolerance` of an edge of its triangle, and which (see
    /// `MeshCoordBase::onEdgeBase`).
    bool onEdge(const float* vertices, const int* triangles, double tolerance,
                int* edge) const noexcept;
    bool onEdge(const MeshVertex* vertices, const MeshTriangle* triangles, double tolerance,
                int* edge) const noexcept;

    /// Whether the point lies within `tolerance` of a corner of its triangle, and which (see
    /// `MeshCoordBase::onVertexBase`).
    bool onVertex(const float* vertices, const int* triangles, double tolerance,
                  int* vertex) const noexcept;
    bool onVertex(const MeshVertex* vertices, const MeshTriangle* triangles, double tolerance,
                  int* vertex) const noexcept;

    /// True when the point is not on an edge and no weight is negative.
    bool isInterior(const float* vertices, const int* triangles, double tolerance) const noexcept;
    bool isInterior(const MeshVertex* vertices, const MeshTriangle* triangles,
                    double tolerance) const noexcept;

    /// True when the point is not on an edge and some weight is negative.
    bool isExterior(const float* vertices, const int* triangles, double tolerance) const noexcept;
    bool isExterior(const MeshVertex* vertices, const MeshTriangle* triangles,
                    double tolerance) const noexcept;
    /// @}

    /// Exact comparison of the weights and the triangle index.
    constexpr bool operator==(const MeshCoord&) const noexcept = default;

private:
    // The three corners of triangle `triangle`.
    static void getPoints(int triangle, const float* vertices, const int* triangles,
                          koLinear::Point corners[3]) noexcept;

    int triangle_ = 0;
};

} // namespace koGeom
