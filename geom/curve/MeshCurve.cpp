#include "geom/curve/MeshCurve.h"

#include <utility>

#include "tessar/core/Containers.h"

#include "geom/mesh/CompactMesh.h"

namespace koGeom {

MeshCurve::MeshCurve() = default;

MeshCurve::MeshCurve(const std::deque<MeshCoord>& coords, bool closed)
    : coords_(coords), closed_(closed) {}

MeshCurve::MeshCurve(const MeshCurve& other)
    : ReferenceCount(other), coords_(other.coords_), closed_(other.closed_) {}

MeshCurve::MeshCurve(MeshCurve&& other) noexcept
    : ReferenceCount(other), coords_(std::move(other.coords_)), closed_(other.closed_) {}

MeshCurve& MeshCurve::operator=(const MeshCurve& other) {
    if (this != &other) {
        MeshCurve copy(other);
        *this = std::move(copy);
    }
    return *this;
}

MeshCurve& MeshCurve::operator=(MeshCurve&& other) noexcept {
    coords_ = std::move(other.coords_);
    closed_ = other.closed_;
    return *this;
}

MeshCurve::~MeshCurve() = default;

ko::Reference<Polyline> MeshCurve::asPolyline(const CompactMesh& mesh) const {
    if (coords_.size() < 2) {
        return nullptr;
    }
    ko::vector<koLinear::Point> points;
    points.reserve(coords_.size() + (closed_ ? 1 : 0));
    const float* vertices = mesh.getVerticesRaw();
    const int* triangles = mesh.getTrianglesRaw();
    for (const MeshCoord& coord : coords_) {
        points.push_back(coord.evaluate(vertices, triangles));
    }
    if (closed_) {
        points.push_back(points.front());
    }
    ko::Reference<Polyline> polyline(new Polyline);
    polyline->initializeUniform(static_cast<int>(points.size()), points.data());
    return polyline;
}

} // namespace koGeom
