#include "geom/topomesh/TopoMeshBoundaryIterator.h"

namespace koGeom {

void TopoMeshBoundaryIterator::reset(TopoMeshVertex vertex, bool forward) noexcept {
    TopoMeshEdge found;
    for (TopoMeshEdgeVertexIterator it(vertex); it.valid() && !found; it.next()) {
        if (!it.edge().twin()) {
            found = it.edge();
        }
    }
    reset(found, forward);
}

void TopoMeshBoundaryIterator::getPrevNextEdges(TopoMeshVertex vertex, TopoMeshEdge& prev,
                                                TopoMeshEdge& next) noexcept {
    prev = TopoMeshEdge();
    next = TopoMeshEdge();
    for (TopoMeshEdgeVertexIterator it(vertex); it.valid(); it.next()) {
        const TopoMeshEdge e = it.edge();
        if (!e.twin()) {
            next = e;
        }
        if (!e.prev().twin()) {
            prev = e.prev();
        }
    }
}

TopoMeshEdge TopoMeshBoundaryIterator::step(TopoMeshEdge edge, bool forward) noexcept {
    TopoMeshEdge prev;
    TopoMeshEdge next;
    if (forward) {
        getPrevNextEdges(edge.secondVertex(), prev, next);
        return next;
    }
    getPrevNextEdges(edge.firstVertex(), prev, next);
    return prev;
}

void TopoMeshBoundaryIterator::next() noexcept {
    current_ = step(current_, forward_);
    if (current_ == start_) {
        current_ = TopoMeshEdge();
    }
}

TopoMeshEdge TopoMeshBoundaryIterator::nextEdge() const noexcept {
    return step(current_, forward_);
}

TopoMeshEdge TopoMeshBoundaryIterator::prevEdge() const noexcept {
    return step(current_, !forward_);
}

} // namespace koGeom
