#pragma once

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMeshHandles.h"

namespace koGeom {

/// A walk along a boundary loop of a `TopoMesh`: the half-edges without twin, forward in
/// their own direction (from each one to the boundary half-edge leaving its end) or backward.
/// The walk ends when it would return to its start edge, or at a vertex where it finds no
/// boundary half-edge to go on with.
///
/// Each step walks the fan of one vertex, O(valence); the iterator allocates nothing. On a
/// boundary loop that passes a vertex twice (a non-manifold vertex) the step takes the last
/// boundary half-edge of that vertex's fan, which may lead onto another loop; such a walk
/// need not return to its start.
class FORMWORK_EXPORT TopoMeshBoundaryIterator {
public:
    /// Finished at once.
    TopoMeshBoundaryIterator() noexcept = default;
    /// Starts at `edge` (which should have no twin), walking forward or backward.
    explicit TopoMeshBoundaryIterator(TopoMeshEdge edge, bool forward = true) noexcept {
        reset(edge, forward);
    }
    /// Starts at the first outgoing half-edge of `vertex`'s fan that has no twin; finished at
    /// once when there is none.
    explicit TopoMeshBoundaryIterator(TopoMeshVertex vertex, bool forward = true) noexcept {
        reset(vertex, forward);
    }

    void reset(TopoMeshEdge edge, bool forward = true) noexcept {
        current_ = edge;
        start_ = edge;
        forward_ = forward;
    }
    void reset(TopoMeshVertex vertex, bool forward = true) noexcept;

    /// The boundary half-edges at `vertex`, both null first: over the vertex's fan, every
    /// outgoing half-edge without twin is stored in `next`, and for every outgoing e whose
    /// `prev()` has no twin, `e.prev()` is stored in `prev`; the last match in fan order wins.
    static void getPrevNextEdges(TopoMeshVertex vertex, TopoMeshEdge& prev,
                                 TopoMeshEdge& next) noexcept;

    /// Moves to the next boundary half-edge in the walk's direction; finishes at the start
    /// edge or where none follows.
    void next() noexcept;
    /// The half-edge `next()` would move to, without moving and without comparing with the
    /// start edge.
    TopoMeshEdge nextEdge() const noexcept;
    /// The boundary half-edge before the current one in the walk's direction: forward, the
    /// one into the current edge's origin; backward, the one out of its end.
    TopoMeshEdge prevEdge() const noexcept;

    TopoMeshEdge edge() const noexcept { return current_; }
    bool valid() const noexcept { return static_cast<bool>(current_); }
    bool forward() const noexcept { return forward_; }

private:
    // The boundary half-edge after `edge` going forward, or before it going backward.
    static TopoMeshEdge step(TopoMeshEdge edge, bool forward) noexcept;

    TopoMeshEdge current_;
    TopoMeshEdge start_;
    bool forward_ = true;
};

} // namespace koGeom
