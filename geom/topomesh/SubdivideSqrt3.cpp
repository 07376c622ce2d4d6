#include "geom/topomesh/SubdivideSqrt3.h"

#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "tessar/linear/Vector.h"

#include "geom/topomesh/TopoMeshEdgeVertexIterator.h"

namespace koGeom {

namespace {

// The relaxed position of every vertex, in list order: an interior vertex moves towards the
// mean of its fan's ends, the others stay.
std::vector<koLinear::Point> relaxedPoints(const TopoMesh& mesh) {
    std::vector<koLinear::Point> points;
    points.reserve(static_cast<std::size_t>(mesh.numVertices()));
    for (TopoMeshVertex vertex = mesh.firstVertex(); vertex; vertex = vertex.nextInMesh()) {
        const koLinear::Point p = vertex.point();
        if (!vertex.firstEdge() || vertex.onBoundary()) {
            points.push_back(p);
            continue;
        }
        koLinear::Vector sum(0.0, 0.0, 0.0);
        int n = 0;
        for (TopoMeshEdgeVertexIterator fan(vertex); fan.valid(); fan.next(), ++n) {
            sum += fan.edge().v2().point() - p;
        }
        const double a = (4.0 - 2.0 * std::cos(2.0 * std::numbers::pi / n)) / 9.0;
        points.push_back(p + sum * (a / n));
    }
    return points;
}

} // namespace

void subdivideSqrt3(TopoMesh& mesh, Sqrt3Vertices oldVertices) {
    std::vector<koLinear::Point> relaxed;
    if (oldVertices == Sqrt3Vertices::Relaxed) {
        relaxed = relaxedPoints(mesh);
    }
    // Both lists are taken before the first edit: the fans add faces and edges to the lists.
    std::vector<TopoMeshEdge> interiorEdges;
    interiorEdges.reserve(static_cast<std::size_t>(mesh.numEdges() / 2));
    for (TopoMeshEdge edge = mesh.firstEdge(); edge; edge = edge.nextInMesh()) {
        if (edge.twin() && edge.isPrimary()) {
            interiorEdges.push_back(edge);
        }
    }
    std::vector<TopoMeshFace> faces;
    faces.reserve(static_cast<std::size_t>(mesh.numFaces()));
    for (TopoMeshFace face = mesh.firstFace(); face; face = face.nextInMesh()) {
        faces.push_back(face);
    }
    for (const TopoMeshFace face : faces) {
        mesh.subdivideFace(face, face.centroid());
    }
    for (const TopoMeshEdge edge : interiorEdges) {
        mesh.swapEdge(edge);
    }
    // The old vertices lead the list; the centres were appended after them.
    TopoMeshVertex vertex = mesh.firstVertex();
    for (const koLinear::Point& point : relaxed) {
        if (point != vertex.point()) {
            mesh.setPoint(vertex, point);
        }
        vertex = vertex.nextInMesh();
    }
}

} // namespace koGeom
