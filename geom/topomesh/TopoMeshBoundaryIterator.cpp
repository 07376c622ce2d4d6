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
    // Safe: a walk that has left its start's loop at a non-manifold vertex cycles without
    // meeting the start again; it ends at the first repeat the cycle test sees. A walk round
    // one loop meets no repeat before the start, so it is not cut short.
    if (current_ == start_ || current_ == mark_) {
        current_ = TopoMeshEdge();
        return;
    }
    if (++steps_ == lap_) {
        mark_ = current_;
        steps_ = 0;
        lap_ *= 2;
    }
}

TopoMeshEdge TopoMeshBoundaryIterator::nextEdge() const noexcept {
    return step(current_, forward_);
}

TopoMeshEdge TopoMeshBoundaryIterator::prevEdge() const noexcept {
    return step(current_, !forward_);
}

} // namespace koGeom
