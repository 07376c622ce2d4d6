#pragma once

#include <cstdint>

#include "tessar/core/ReferenceCount.h"
#include "tessar/linear/Point.h"
#include "tessar/string/CString.h"

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMeshCoord.h"
#include "geom/topomesh/TopoMeshHandles.h"

namespace koGeom {

/// A location on a `TopoMesh`, classified as on a vertex, on an edge or inside a face, with
/// its coordinate on a triangle face and its point. Reference counted (hold it through
/// `ko::Reference`); it keeps handles, so it dangles when their records are freed.
///
/// Every query is O(1) apart from those that walk a fan or a face loop, as noted.
class FORMWORK_EXPORT TopoMeshPoint : public ko::ReferenceCount {
public:
    enum class Type : std::int32_t {
        Vertex = 0,
        Edge = 1,
        Face = 2,
    };

    /// \name Construction
    /// @{
    /// A vertex point at `vertex`'s point, with its coordinate on `face`, or, when `face` is
    /// null, on the face of the vertex's first edge. An isolated vertex with no face given
    /// gets an invalid coordinate on no face.
    explicit TopoMeshPoint(TopoMeshVertex vertex, TopoMeshFace face = TopoMeshFace()) noexcept;
    /// An edge point on `edge` of `face` (the edge must be one of the face's three sides),
    /// with weight `a` on the edge's origin and `b` on its end.
    TopoMeshPoint(TopoMeshEdge edge, TopoMeshFace face, double a, double b) noexcept;
    /// The location of `coord`: a vertex point when it lies within `tolerance` of a corner
    /// (its point then exactly the vertex's); else an edge point when it lies within
    /// `tolerance` of a side (its point moved onto that side's segment); else a face point at
    /// the coordinate's point.
    TopoMeshPoint(const TopoMeshCoord& coord, double tolerance) noexcept;
    ~TopoMeshPoint() override;
    /// @}

    /// \name Parts
    /// @{
    Type getType() const noexcept { return type_; }
    bool isVertexPoint() const noexcept { return type_ == Type::Vertex; }
    bool isEdgePoint() const noexcept { return type_ == Type::Edge; }
    bool isFacePoint() const noexcept { return type_ == Type::Face; }
    /// Set for a vertex point only.
    TopoMeshVertex getVertex() const noexcept { return vertex_; }
    /// Set for an edge point only.
    TopoMeshEdge getEdge() const noexcept { return edge_; }
    /// The coordinate's face.
    TopoMeshFace getFace() const noexcept { return coord_.getFace(); }
    const TopoMeshCoord& getCoord() const noexcept { return coord_; }
    const koLinear::Point& point() const noexcept { return point_; }
    /// For an edge point: `a` is the coordinate's weight of the edge's side (the first weight
    /// when the edge is the face's first edge, the second when it is first.next, the third
    /// otherwise) and `b` is 1 − a.
    void getEdgeWeights(double& a, double& b) const noexcept;
    /// @}

    /// \name Text
    /// @{
    /// "vertex", "edge", "face"; "<none>" for any other type value.
    const char* typeName() const noexcept { return typeName(type_); }
    static const char* typeName(Type type) noexcept;
    /// "vertex(%p)" with the vertex record, "edge(%p,%p)" with the edge's origin and end
    /// records, "face(%p,%p,%p)" with the face's first three corner records.
    koString::CString asString() const;
    /// @}

    /// \name Relations
    /// @{
    /// Two vertex points on the same vertex, or two edge points on the same edge or on twin
    /// half-edges; face points are never equivalent.
    bool equivalent(const TopoMeshPoint& other) const noexcept;
    /// A vertex point on a boundary vertex (O(valence)), or an edge point on a half-edge
    /// without twin.
    bool onBoundary() const noexcept;
    /// Whether the point touches `face`: a vertex point when the face has a half-edge from
    /// the vertex, an edge point when the face is the edge's or its twin's, a face point when
    /// it is its face. O(face size).
    bool adjacent(TopoMeshFace face) const noexcept;
    /// A face that both points touch, null if none: for two vertex points
    /// `TopoMeshVertex::adjacent`; for a vertex and an edge point the edge's face, else its
    /// twin's, whichever has a half-edge from the vertex; for two edge points that share a
    /// vertex their common face: the same face, else the first edge's face if the second's
    /// twin lies on it, else the second's if the first's twin lies on it, else the face
    /// behind both twins; when a face point is involved, the second point's face if the
    /// first touches it, else the first's if the second touches it.
    TopoMeshFace adjacent(const TopoMeshPoint& other) const noexcept;
    /// @}

private:
    TopoMeshCoord coord_;
    TopoMeshVertex vertex_;
    TopoMeshEdge edge_;
    koLinear::Point point_;
    Type type_ = Type::Face;
};

} // namespace koGeom
