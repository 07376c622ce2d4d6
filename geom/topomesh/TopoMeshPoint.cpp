#include "geom/topomesh/TopoMeshPoint.h"

#include "tessar/linear/ParamLine.h"

#include "geom/topomesh/TopoMeshImpl.h"

namespace koGeom {

using koLinear::Point;

namespace {

// Which side of the face's triangle `edge` is: 0 for the first edge, 1 for first.next, 2
// for anything else.
int sideOf(TopoMeshEdge edge, TopoMeshFace face) noexcept {
    const TopoMeshEdge first = face.firstEdge();
    return edge == first ? 0 : (edge == first.next() ? 1 : 2);
}

// The face of `edge` or of its twin that has a half-edge from `vertex`; null if neither.
TopoMeshFace faceAtVertex(TopoMeshEdge edge, TopoMeshVertex vertex) noexcept {
    if (edge.face().adjacent(vertex)) {
        return edge.face();
    }
    const TopoMeshEdge twin = edge.twin();
    return twin && twin.face().adjacent(vertex) ? twin.face() : TopoMeshFace();
}

} // namespace

TopoMeshPoint::TopoMeshPoint(TopoMeshVertex vertex, TopoMeshFace face) noexcept
    : vertex_(vertex), point_(vertex.point()), type_(Type::Vertex) {
    if (!face && vertex.firstEdge()) {
        face = vertex.firstEdge().face();
    }
    coord_.setFromPoint(face, point_);
}

TopoMeshPoint::TopoMeshPoint(TopoMeshEdge edge, TopoMeshFace face, double a, double b) noexcept
    : edge_(edge), type_(Type::Edge) {
    switch (sideOf(edge, face)) {
        case 0:
            coord_ = TopoMeshCoord(face, a, b, 0.0);
            break;
        case 1:
            coord_ = TopoMeshCoord(face, 0.0, a, b);
            break;
        default:
            coord_ = TopoMeshCoord(face, b, 0.0, a);
            break;
    }
    point_ = coord_.evaluate();
}

TopoMeshPoint::TopoMeshPoint(const TopoMeshCoord& coord, double tolerance) noexcept
    : coord_(coord) {
    TopoMeshVertex vertex;
    TopoMeshEdge edge;
    if (coord_.onVertex(tolerance, &vertex)) {
        type_ = Type::Vertex;
        vertex_ = vertex;
        point_ = vertex.point();
        coord_.setFromPoint(coord.getFace(), point_);
    } else if (coord_.onEdge(tolerance, &edge)) {
        type_ = Type::Edge;
        edge_ = edge;
        const koLinear::ParamLine side(edge.firstVertex().point(), edge.secondVertex().point());
        point_ = side.projectBounded(coord_.evaluate());
        coord_.setFromPoint(coord.getFace(), point_);
    } else {
        type_ = Type::Face;
        point_ = coord_.evaluate();
    }
}

TopoMeshPoint::~TopoMeshPoint() = default;

void TopoMeshPoint::getEdgeWeights(double& a, double& b) const noexcept {
    a = coord_.weight(sideOf(edge_, coord_.getFace()));
    b = 1.0 - a;
}

const char* TopoMeshPoint::typeName(Type type) noexcept {
    switch (type) {
        case Type::Vertex:
            return "vertex";
        case Type::Edge:
            return "edge";
        case Type::Face:
            return "face";
    }
    return "<none>";
}

koString::CString TopoMeshPoint::asString() const {
    switch (type_) {
        case Type::Vertex:
            return koString::CString::format("vertex(%p)", static_cast<void*>(vertex_.data()));
        case Type::Edge:
            return koString::CString::format("edge(%p,%p)",
                                             static_cast<void*>(edge_.firstVertex().data()),
                                             static_cast<void*>(edge_.secondVertex().data()));
        case Type::Face: {
            const TopoMeshEdge first = getFace().firstEdge();
            return koString::CString::format(
                "face(%p,%p,%p)", static_cast<void*>(first.firstVertex().data()),
                static_cast<void*>(first.next().firstVertex().data()),
                static_cast<void*>(first.next().next().firstVertex().data()));
        }
    }
    return koString::CString(typeName(type_));
}

bool TopoMeshPoint::equivalent(const TopoMeshPoint& other) const noexcept {
    if (type_ != other.type_) {
        return false;
    }
    if (type_ == Type::Vertex) {
        return vertex_ == other.vertex_;
    }
    if (type_ == Type::Edge) {
        return edge_ == other.edge_ || (edge_.twin() && edge_.twin() == other.edge_);
    }
    return false;
}

bool TopoMeshPoint::onBoundary() const noexcept {
    if (type_ == Type::Vertex) {
        return vertex_.onBoundary();
    }
    return type_ == Type::Edge && !edge_.twin();
}

bool TopoMeshPoint::adjacent(TopoMeshFace face) const noexcept {
    switch (type_) {
        case Type::Vertex:
            return static_cast<bool>(face.adjacent(vertex_));
        case Type::Edge:
            return edge_.face() == face || (edge_.twin() && edge_.twin().face() == face);
        case Type::Face:
            return getFace() == face;
    }
    return false;
}

TopoMeshFace TopoMeshPoint::adjacent(const TopoMeshPoint& other) const noexcept {
    if (type_ == Type::Face || other.type_ == Type::Face) {
        if (other.isFacePoint() && adjacent(other.getFace())) {
            return other.getFace();
        }
        if (isFacePoint() && other.adjacent(getFace())) {
            return getFace();
        }
        return TopoMeshFace();
    }
    if (type_ == Type::Vertex && other.type_ == Type::Vertex) {
        return vertex_.adjacent(other.vertex_);
    }
    if (type_ == Type::Vertex) {
        return faceAtVertex(other.edge_, vertex_);
    }
    if (other.type_ == Type::Vertex) {
        return faceAtVertex(edge_, other.vertex_);
    }
    if (!edge_.adjacent(other.edge_)) {
        return TopoMeshFace();
    }
    // The shared face, then this edge's face when it lies behind the other edge, then the
    // other's face when it lies behind this one, then the face behind both: the face lookup
    // with the other edge first tests the two middle cases in that order.
    return TopoMeshImpl::findFace(other.edge_, edge_);
}

} // namespace koGeom
