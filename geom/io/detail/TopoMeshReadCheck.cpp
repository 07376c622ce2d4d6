#include "geom/io/detail/TopoMeshReadCheck.h"

namespace koGeom::detail {

namespace {

std::string numbered(const char* kind, std::int64_t index, const char* what) {
    return std::string(kind) + " " + std::to_string(index) + " " + what;
}

// Walks one list from its head for at most `records` steps. A deterministic walk that reaches
// null has met no record twice, so a list that ends after exactly `records` steps holds each
// record read once.
template <class Data>
std::string checkList(const char* kind, const Data* head, const Data* tail, std::int32_t count,
                      std::int64_t records) {
    if (count != records) {
        return std::string(kind) + " count " + std::to_string(count) + " but " +
               std::to_string(records) + " " + kind + " packets";
    }
    const Data* prev = nullptr;
    std::int64_t length = 0;
    for (const Data* r = head; r != nullptr; r = r->nextInMesh) {
        if (length == records) {
            return std::string(kind) + " list does not end after its " + std::to_string(records) +
                   " records";
        }
        if (r->prevInMesh != prev) {
            return numbered(kind, length, "of the list has a previous link that disagrees");
        }
        prev = r;
        ++length;
    }
    if (length != records) {
        return std::string(kind) + " list ends after " + std::to_string(length) + " of its " +
               std::to_string(records) + " records";
    }
    if (prev != tail) {
        return std::string(kind) + " list tail is not its last record";
    }
    return {};
}

std::string checkEdges(const TopoMeshEdgeData* head) {
    std::int64_t i = 0;
    for (const TopoMeshEdgeData* e = head; e != nullptr; e = e->nextInMesh, ++i) {
        if (e->vertex == nullptr) {
            return numbered("half-edge", i, "has no origin");
        }
        if (e->next == nullptr || e->next->prev != e) {
            return numbered("half-edge", i, "is not the prev of its next");
        }
        if (e->prev == nullptr || e->prev->next != e) {
            return numbered("half-edge", i, "is not the next of its prev");
        }
        if (e->face == nullptr || e->next->face != e->face) {
            return numbered("half-edge", i, "does not share the face of its next");
        }
        if (e->twin != nullptr && (e->twin == e || e->twin->twin != e)) {
            return numbered("half-edge", i, "is not its twin's twin");
        }
    }
    return {};
}

// With every half-edge the prev of its next, next is a permutation of the half-edges, so
// every loop closes; the budget bounds the walks all the same.
std::string checkFaces(const TopoMeshFaceData* head, std::int64_t edges) {
    std::int64_t onLoops = 0;
    std::int64_t i = 0;
    for (const TopoMeshFaceData* f = head; f != nullptr; f = f->nextInMesh, ++i) {
        const TopoMeshEdgeData* first = f->firstEdge;
        if (first == nullptr || first->face != f) {
            return numbered("face", i, "has a first edge not on it");
        }
        const TopoMeshEdgeData* e = first;
        do {
            if (++onLoops > edges) {
                return "face loops hold more than the half-edges";
            }
            e = e->next;
        } while (e != first);
    }
    if (onLoops != edges) {
        return std::to_string(edges - onLoops) + " half-edges lie on no face loop";
    }
    return {};
}

std::string checkVertices(const TopoMeshVertexData* head) {
    std::int64_t i = 0;
    for (const TopoMeshVertexData* v = head; v != nullptr; v = v->nextInMesh, ++i) {
        if (v->firstEdge != nullptr && v->firstEdge->vertex != v) {
            return numbered("vertex", i, "has a first edge that starts elsewhere");
        }
    }
    return {};
}

} // namespace

std::string checkReadTopoMesh(const TopoMeshHeader& header, const TopoMeshRecordCounts& read) {
    std::string fault = checkList("vertex", header.firstVertex, header.lastVertex,
                                  header.numVertices, read.vertices);
    if (fault.empty()) {
        fault =
            checkList("half-edge", header.firstEdge, header.lastEdge, header.numEdges, read.edges);
    }
    if (fault.empty()) {
        fault = checkList("face", header.firstFace, header.lastFace, header.numFaces, read.faces);
    }
    // The lists are sound from here on: each holds its records once and ends.
    if (fault.empty()) {
        fault = checkEdges(header.firstEdge);
    }
    if (fault.empty()) {
        fault = checkFaces(header.firstFace, read.edges);
    }
    if (fault.empty()) {
        fault = checkVertices(header.firstVertex);
    }
    return fault;
}

} // namespace koGeom::detail
