#include "geom/topomesh/TopoMeshCoord.h"

namespace koGeom {

using koLinear::Point;

TopoMeshEdge TopoMeshCoord::sideEdge(TopoMeshFace face, int side) noexcept {
    const TopoMeshEdge first = face.firstEdge();
    return side == 0 ? first : (side == 1 ? first.next() : first.prev());
}

void TopoMeshCoord::getPoints(TopoMeshFace face, Point corners[3]) noexcept {
    for (int k = 0; k < 3; ++k) {
        corners[k] = sideEdge(face, k).firstVertex().point();
    }
}

Point TopoMeshCoord::evaluate() const noexcept {
    Point corners[3];
    getPoints(face_, corners);
    return evaluateBase(corners);
}

bool TopoMeshCoord::setFromPoint(TopoMeshFace face, const Point& point) noexcept {
    face_ = face;
    if (!face) {
        return setInvalid();
    }
    Point c[3];
    getPoints(face, c);
    return setFromPointBase(c[0], c[1], c[2], point);
}

bool TopoMeshCoord::project(TopoMeshFace face, const Point& point) noexcept {
    face_ = face;
    if (!face) {
        return setInvalid();
    }
    Point c[3];
    getPoints(face, c);
    return projectBase(c[0], c[1], c[2], point);
}

bool TopoMeshCoord::onVertex(double tolerance, TopoMeshVertex* vertex) const noexcept {
    Point corners[3];
    getPoints(face_, corners);
    int corner = 0;
    if (!onVertexBase(corners, tolerance, &corner)) {
        return false;
    }
    if (vertex != nullptr) {
        *vertex = sideEdge(face_, corner).firstVertex();
    }
    return true;
}

bool TopoMeshCoord::onEdge(double tolerance, TopoMeshEdge* edge) const noexcept {
    Point corners[3];
    getPoints(face_, corners);
    int side = 0;
    if (!onEdgeBase(corners, tolerance, &side)) {
        return false;
    }
    if (edge != nullptr) {
        *edge = sideEdge(face_, side);
    }
    return true;
}

bool TopoMeshCoord::isInterior(double tolerance) const noexcept {
    return !onEdge(tolerance, nullptr) && w0() >= 0.0 && w1() >= 0.0 && w2() >= 0.0;
}

bool TopoMeshCoord::isExterior(double tolerance) const noexcept {
    return !onEdge(tolerance, nullptr) && !(w0() >= 0.0 && w1() >= 0.0 && w2() >= 0.0);
}

} // namespace koGeom
