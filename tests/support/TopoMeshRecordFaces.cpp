#include "tests/support/TopoMeshRecordFaces.h"

namespace koGeomTest {

using namespace koGeom;

TopoMeshFace addFaceByRecords(TopoMesh& mesh, const std::vector<TopoMeshVertex>& vertices) {
    TopoMeshImpl& impl = *mesh.getImpl();
    const std::size_t n = vertices.size();
    TopoMeshFace face = impl.allocFaceRecord();
    std::vector<TopoMeshEdge> loop;
    for (std::size_t i = 0; i < n; ++i) {
        loop.push_back(impl.allocEdgeRecord());
    }
    face.data()->firstEdge = loop[0];
    for (std::size_t i = 0; i < n; ++i) {
        TopoMeshEdgeData* e = loop[i].data();
        e->vertex = vertices[i];
        e->next = loop[(i + 1) % n];
        e->prev = loop[(i + n - 1) % n];
        e->face = face;
        if (!vertices[i].firstEdge()) {
            impl.recordModified(vertices[i]);
            vertices[i].data()->firstEdge = e;
        }
    }
    for (std::size_t i = 0; i < n; ++i) {
        TopoMeshVertex from = vertices[(i + 1) % n];
        TopoMeshVertex to = vertices[i];
        for (TopoMeshEdge t = mesh.firstEdge(); t; t = t.nextInMesh()) {
            if (t.face() != face && !t.twin() && t.firstVertex() == from &&
                t.secondVertex() == to) {
                impl.recordModified(t);
                t.data()->twin = loop[i];
                loop[i].data()->twin = t;
                break;
            }
        }
    }
    return face;
}

std::vector<TopoMeshVertex> addFacesByRecords(TopoMesh& mesh,
                                              const std::vector<koLinear::Point>& points,
                                              const std::vector<std::vector<int>>& faces) {
    std::vector<TopoMeshVertex> vertices;
    for (const koLinear::Point& p : points) {
        vertices.push_back(mesh.allocVertex(p));
    }
    for (const std::vector<int>& face : faces) {
        std::vector<TopoMeshVertex> loop;
        for (int i : face) {
            loop.push_back(vertices[static_cast<std::size_t>(i)]);
        }
        addFaceByRecords(mesh, loop);
    }
    return vertices;
}

void deleteFaceByRecords(TopoMesh& mesh, TopoMeshFace face) {
    TopoMeshImpl& impl = *mesh.getImpl();
    std::vector<TopoMeshEdge> loop;
    TopoMeshEdge e = face.firstEdge();
    do {
        loop.push_back(e);
        e = e.next();
    } while (e != face.firstEdge());
    for (TopoMeshEdge edge : loop) {
        TopoMeshVertex v = edge.firstVertex();
        if (v.firstEdge() == edge) {
            TopoMeshEdge other;
            for (TopoMeshEdge t = mesh.firstEdge(); t && !other; t = t.nextInMesh()) {
                if (t.firstVertex() == v && t.face() != face) {
                    other = t;
                }
            }
            impl.recordModified(v);
            v.data()->firstEdge = other;
        }
        if (edge.twin()) {
            impl.recordModified(edge.twin());
            edge.twin().data()->twin = nullptr;
        }
    }
    for (TopoMeshEdge edge : loop) {
        impl.freeEdgeRecord(edge);
    }
    impl.freeFaceRecord(face);
}

} // namespace koGeomTest
