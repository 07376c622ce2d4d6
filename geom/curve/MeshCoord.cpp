#include "geom/curve/MeshCoord.h"

namespace koGeom {

using koLinear::Point;

namespace {

// The record arrays are the raw arrays: three floats per vertex, three indices per triangle.
const float* raw(const MeshVertex* vertices) noexcept {
    return reinterpret_cast<const float*>(vertices);
}
const int* raw(const MeshTriangle* triangles) noexcept {
    return reinterpret_cast<const int*>(triangles);
}

} // namespace

void MeshCoord::getPoints(int triangle, const float* vertices, const int* triangles,
                          Point corners[3]) noexcept {
    const int* corner = triangles + 3 * static_cast<long>(triangle);
    for (int k = 0; k < 3; ++k) {
        const float* v = vertices + 3 * static_cast<long>(corner[k]);
        corners[k] = Point(v[0], v[1], v[2]);
    }
}

Point MeshCoord::evaluate(const float* vertices, const int* triangles) const noexcept {
    Point corners[3];
    getPoints(triangle_, vertices, triangles, corners);
    return evaluateBase(corners);
}

Point MeshCoord::evaluate(const MeshVertex* vertices,
                          const MeshTriangle* triangles) const noexcept {
    return evaluate(raw(vertices), raw(triangles));
}

bool MeshCoord::setFromPoint(int triangle, const float* vertices, const int* triangles,
                             const Point& x) noexcept {
    triangle_ = triangle;
    Point corners[3];
    getPoints(triangle_, vertices, triangles, corners);
    return setFromPointBase(corners[0], corners[1], corners[2], x);
}

bool MeshCoord::setFromPoint(int triangle, const MeshVertex* vertices,
                             const MeshTriangle* triangles, const Point& x) noexcept {
    return setFromPoint(triangle, raw(vertices), raw(triangles), x);
}

bool MeshCoord::project(int triangle, const float* vertices, const int* triangles,
                        const Point& x) noexcept {
    triangle_ = triangle;
    Point corners[3];
    getPoints(triangle_, vertices, triangles, corners);
    return projectBase(corners[0], corners[1], corners[2], x);
}

bool MeshCoord::project(int triangle, const MeshVertex* vertices, const MeshTriangle* triangles,
                        const Point& x) noexcept {
    return project(triangle, raw(vertices), raw(triangles), x);
}

bool MeshCoord::onEdge(const float* vertices, const int* triangles, double tolerance,
                       int* edge) const noexcept {
    Point corners[3];
    getPoints(triangle_, vertices, triangles, corners);
    return onEdgeBase(corners, tolerance, edge);
}

bool MeshCoord::onEdge(const MeshVertex* vertices, const MeshTriangle* triangles, double tolerance,
                       int* edge) const noexcept {
    return onEdge(raw(vertices), raw(triangles), tolerance, edge);
}

bool MeshCoord::onVertex(const float* vertices, const int* triangles, double tolerance,
                         int* vertex) const noexcept {
    Point corners[3];
    getPoints(triangle_, vertices, triangles, corners);
    return onVertexBase(corners, tolerance, vertex);
}

bool MeshCoord::onVertex(const MeshVertex* vertices, const MeshTriangle* triangles,
                         double tolerance, int* vertex) const noexcept {
    return onVertex(raw(vertices), raw(triangles), tolerance, vertex);
}

bool MeshCoord::isInterior(const float* vertices, const int* triangles,
                           double tolerance) const noexcept {
    return !onEdge(vertices, triangles, tolerance, nullptr) && w0() >= 0.0 && w1() >= 0.0 &&
           w2() >= 0.0;
}

bool MeshCoord::isInterior(const MeshVertex* vertices, const MeshTriangle* triangles,
                           double tolerance) const noexcept {
    return isInterior(raw(vertices), raw(triangles), tolerance);
}

bool MeshCoord::isExterior(const float* vertices, const int* triangles,
                           double tolerance) const noexcept {
    return !onEdge(vertices, triangles, tolerance, nullptr) &&
           (w0() < 0.0 || w1() < 0.0 || w2() < 0.0);
}

bool MeshCoord::isExterior(const MeshVertex* vertices, const MeshTriangle* triangles,
                           double tolerance) const noexcept {
    return isExterior(raw(vertices), raw(triangles), tolerance);
}

} // namespace koGeom
