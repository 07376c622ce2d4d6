#include "tests/support/TopoMeshChecker.h"

#include <cstdio>
#include <unordered_map>
#include <unordered_set>

#include "geom/topomesh/detail/TopoMeshImplAlloc.h"

namespace koGeomTest {

namespace {

using namespace koGeom;

std::string describe(const char* what, const void* record) {
    char text[160];
    std::snprintf(text, sizeof text, "%s (record %p)", what, record);
    return text;
}

// Walks one list from its head and returns the first fault; collects the records seen.
template <class Data>
std::string checkList(const char* kind, const Data* head, const Data* tail, int count,
                      std::unordered_set<const Data*>& seen) {
    const Data* prev = nullptr;
    int length = 0;
    for (const Data* r = head; r != nullptr; r = r->nextInMesh) {
        if (!seen.insert(r).second || length > count) {
            return std::string(kind) + " list does not end after its count";
        }
        if (r->prevInMesh != prev) {
            return describe((std::string(kind) + " list prev link disagrees").c_str(), r);
        }
        prev = r;
        ++length;
    }
    if (prev != tail) {
        return std::string(kind) + " list tail is not the last record";
    }
    if (length != count) {
        return std::string(kind) + " count " + std::to_string(count) + " but list length " +
               std::to_string(length);
    }
    return {};
}

} // namespace

std::string checkTopoMesh(const TopoMesh& mesh) {
    const TopoMeshHeader& h = mesh.getImpl()->header();
    std::unordered_set<const TopoMeshVertexData*> vertices;
    std::unordered_set<const TopoMeshEdgeData*> edges;
    std::unordered_set<const TopoMeshFaceData*> faces;
    std::string fault = checkList("vertex", h.firstVertex, h.lastVertex, h.numVertices, vertices);
    if (fault.empty()) {
        fault = checkList("edge", h.firstEdge, h.lastEdge, h.numEdges, edges);
    }
    if (fault.empty()) {
        fault = checkList("face", h.firstFace, h.lastFace, h.numFaces, faces);
    }
    if (!fault.empty()) {
        return fault;
    }
    for (const TopoMeshEdgeData* e : edges) {
        if (e->vertex == nullptr || vertices.count(e->vertex) == 0) {
            return describe("edge origin is not a vertex of the mesh", e);
        }
        if (e->next == nullptr || e->prev == nullptr || edges.count(e->next) == 0 ||
            edges.count(e->prev) == 0) {
            return describe("edge next or prev is not an edge of the mesh", e);
        }
        if (e->next->prev != e || e->prev->next != e) {
            return describe("edge next and prev disagree", e);
        }
        if (e->twin != nullptr && (edges.count(e->twin) == 0 || e->twin->twin != e)) {
            return describe("edge is not its twin's twin", e);
        }
        if (e->face == nullptr || faces.count(e->face) == 0) {
            return describe("edge face is not a face of the mesh", e);
        }
    }
    int loopEdges = 0;
    for (const TopoMeshFaceData* f : faces) {
        const TopoMeshEdgeData* first = f->firstEdge;
        if (first == nullptr || edges.count(first) == 0) {
            return describe("face first edge is not an edge of the mesh", f);
        }
        const TopoMeshEdgeData* e = first;
        int steps = 0;
        do {
            if (e->face != f) {
                return describe("face loop holds an edge of another face", f);
            }
            e = e->next;
            if (++steps > h.numEdges) {
                return describe("face loop does not close", f);
            }
        } while (e != first);
        loopEdges += steps;
    }
    if (loopEdges != h.numEdges) {
        return "an edge lies on no face loop";
    }
    for (const TopoMeshVertexData* v : vertices) {
        if (v->firstEdge != nullptr &&
            (edges.count(v->firstEdge) == 0 || v->firstEdge->vertex != v)) {
            return describe("vertex first edge does not start at it", v);
        }
    }
    return {};
}

namespace {

// The position of each record of a list, by address.
template <class Data>
std::unordered_map<const void*, int> indexList(const Data* head) {
    std::unordered_map<const void*, int> index;
    for (const Data* r = head; r != nullptr; r = r->nextInMesh) {
        index.emplace(r, static_cast<int>(index.size()));
    }
    return index;
}

int indexOf(const std::unordered_map<const void*, int>& index, const void* record) {
    return record == nullptr ? -1 : index.at(record);
}

} // namespace

std::string describeTopoMesh(const TopoMesh& mesh) {
    const auto index = indexList(mesh.getImpl()->header().firstVertex);
    const auto name = [&](TopoMeshVertex v) {
        auto found = index.find(v.data());
        return found == index.end() ? std::string("?") : std::to_string(found->second);
    };
    const auto edgeName = [&](TopoMeshEdge e) { return name(e.v1()) + ">" + name(e.v2()); };
    std::string text = "faces";
    const char* separator = " ";
    for (TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
        text += separator;
        separator = ",";
        TopoMeshEdge e = f.firstEdge();
        do {
            text += (e == f.firstEdge() ? "" : " ") + name(e.v1());
            e = e.next();
        } while (e != f.firstEdge());
    }
    text += "; open";
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        if (!e.twin()) {
            text += " " + edgeName(e);
        } else if (e.twin().v1() != e.v2() || e.twin().v2() != e.v1()) {
            text += " badtwin " + edgeName(e);
        }
    }
    text += "; first";
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        text += " " + (v.firstEdge() ? edgeName(v.firstEdge()) : std::string("-"));
    }
    return text;
}

std::vector<std::size_t> recordsOut(const TopoMesh& mesh) {
    const auto& pools = dynamic_cast<detail::TopoMeshImplAlloc&>(*mesh.getImpl()->allocator());
    return {pools.vertexPool().numAllocated(), pools.edgePool().numAllocated(),
            pools.facePool().numAllocated()};
}

TopoMeshPicture pictureOf(const TopoMesh& mesh) {
    const TopoMeshHeader& h = mesh.getImpl()->header();
    const auto edges = indexList(h.firstEdge);
    const auto vertices = indexList(h.firstVertex);
    const auto faces = indexList(h.firstFace);
    TopoMeshPicture picture;
    for (const TopoMeshVertexData* v = h.firstVertex; v != nullptr; v = v->nextInMesh) {
        picture.points.push_back({v->point.x, v->point.y, v->point.z});
        picture.vertexEdges.push_back(indexOf(edges, v->firstEdge));
    }
    for (const TopoMeshEdgeData* e = h.firstEdge; e != nullptr; e = e->nextInMesh) {
        picture.edges.push_back({indexOf(vertices, e->vertex), indexOf(edges, e->next),
                                 indexOf(edges, e->prev), indexOf(edges, e->twin),
                                 indexOf(faces, e->face)});
    }
    for (const TopoMeshFaceData* f = h.firstFace; f != nullptr; f = f->nextInMesh) {
        picture.faceEdges.push_back(indexOf(edges, f->firstEdge));
    }
    return picture;
}

} // namespace koGeomTest
