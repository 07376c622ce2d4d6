// The neighbourhood queries of the handles, which walk fans and face loops. Included at the
// foot of TopoMeshEdgeVertexIterator.h, which the foot of TopoMeshHandles.h includes.

namespace koGeom {

inline int TopoMeshVertex::valence() const noexcept {
    int count = 0;
    for (TopoMeshEdgeVertexIterator it(*this); it.valid(); it.next()) {
        ++count;
    }
    return count;
}

inline bool TopoMeshVertex::onBoundary() const noexcept {
    for (TopoMeshEdgeVertexIterator it(*this); it.valid(); it.next()) {
        if (!it.edge().twin()) {
            return true;
        }
    }
    return false;
}

inline TopoMeshFace TopoMeshVertex::adjacent(TopoMeshVertex other) const noexcept {
    for (TopoMeshEdgeVertexIterator it(*this); it.valid(); it.next()) {
        const TopoMeshFace face = it.edge().face();
        if (face.adjacent(other)) {
            return face;
        }
    }
    return TopoMeshFace();
}

inline TopoMeshVertex TopoMeshEdge::adjacent(TopoMeshEdge other) const noexcept {
    const TopoMeshVertex a = other.firstVertex();
    const TopoMeshVertex b = other.secondVertex();
    if (firstVertex() == a || firstVertex() == b) {
        return firstVertex();
    }
    if (secondVertex() == a || secondVertex() == b) {
        return secondVertex();
    }
    return TopoMeshVertex();
}

inline bool TopoMeshEdge::adjacent(TopoMeshVertex vertex) const noexcept {
    return firstVertex() == vertex || secondVertex() == vertex;
}

inline koLinear::Point TopoMeshEdge::midpoint() const noexcept {
    return koLinear::combine(firstVertex().point(), 0.5, secondVertex().point(), 0.5);
}

inline koLinear::Vector TopoMeshEdge::vector() const noexcept {
    return secondVertex().point() - firstVertex().point();
}

inline bool TopoMeshFace::hasBoundaryEdge() const noexcept {
    const TopoMeshEdge first = firstEdge();
    TopoMeshEdge e = first;
    do {
        if (!e.twin()) {
            return true;
        }
        e = e.next();
    } while (e != first);
    return false;
}

inline TopoMeshEdge TopoMeshFace::adjacent(TopoMeshVertex vertex) const noexcept {
    const TopoMeshEdge first = firstEdge();
    TopoMeshEdge e = first;
    do {
        if (e.firstVertex() == vertex) {
            return e;
        }
        e = e.next();
    } while (e != first);
    return TopoMeshEdge();
}

inline TopoMeshEdge TopoMeshFace::adjacent(TopoMeshFace other) const noexcept {
    const TopoMeshEdge first = firstEdge();
    TopoMeshEdge e = first;
    do {
        if (e.twin() && e.twin().face() == other) {
            return e;
        }
        e = e.next();
    } while (e != first);
    return TopoMeshEdge();
}

inline int TopoMeshFace::numVertices() const noexcept {
    const TopoMeshEdge first = firstEdge();
    TopoMeshEdge e = first;
    int count = 0;
    do {
        ++count;
        e = e.next();
    } while (e != first);
    return count;
}

inline koLinear::Point TopoMeshFace::centroid() const noexcept {
    const TopoMeshEdge first = firstEdge();
    TopoMeshEdge e = first;
    koLinear::Vector sum;
    int count = 0;
    do {
        sum += koLinear::Vector(e.firstVertex().point());
        ++count;
        e = e.next();
    } while (e != first);
    return koLinear::Point(sum / static_cast<double>(count));
}

} // namespace koGeom
