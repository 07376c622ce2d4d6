#pragma once

#include "geom/topomesh/TopoMeshHandles.h"

namespace koGeom {

/// The fan of a vertex: its outgoing half-edges, one at a time. From the vertex's first edge
/// the walk turns by `prev().twin()`; at a boundary it goes back to the first edge and turns
/// the other way by `twin().next()` until the other boundary. So around an interior vertex
/// every outgoing half-edge comes once in one turn, starting with the first edge; around a
/// boundary vertex first those up to the boundary on one side, then from the first edge the
/// rest. Around a non-manifold vertex only the first edge's own fan is walked. The editing
/// operations rely on this order.
///
/// A value of three fields that allocates nothing; each step is O(1). Editing the fan's links
/// while walking it leaves the walk undefined.
class TopoMeshEdgeVertexIterator {
public:
    /// Finished at once.
    TopoMeshEdgeVertexIterator() noexcept = default;
    /// The fan of `vertex` (empty for an isolated vertex). With `boundaryStart` the walk
    /// starts at the boundary as `resetBoundaryVertex` does.
    explicit TopoMeshEdgeVertexIterator(TopoMeshVertex vertex,
                                        bool boundaryStart = false) noexcept {
        if (boundaryStart) {
            resetBoundaryVertex(vertex);
        } else {
            reset(vertex);
        }
    }

    /// Restarts at `vertex`'s first edge.
    void reset(TopoMeshVertex vertex) noexcept {
        vertex_ = vertex;
        current_ = vertex.firstEdge();
        turning_ = true;
    }

    /// Restarts so that a boundary fan is walked in one direction only: from the outgoing
    /// half-edge whose `prev()` is a boundary half-edge (reached from the first edge by
    /// `prev().twin()`), by `twin().next()` to the outgoing boundary half-edge. Around an
    /// interior vertex the walk is the plain one from the first edge. O(valence).
    void resetBoundaryVertex(TopoMeshVertex vertex) noexcept {
        vertex_ = vertex;
        current_ = vertex.firstEdge();
        turning_ = false;
        if (!current_ || !current_.prev().twin()) {
            return;
        }
        do {
            current_ = current_.prev().twin();
            if (current_ == vertex.firstEdge()) {
                turning_ = true;
                return;
            }
        } while (current_.prev().twin());
    }

    /// Moves to the next outgoing half-edge; `valid()` turns false after the last.
    void next() noexcept {
        if (turning_) {
            current_ = current_.prev().twin();
            if (current_ == vertex_.firstEdge()) {
                current_ = TopoMeshEdge();
            } else if (!current_) {
                turning_ = false;
                const TopoMeshEdge twin = vertex_.firstEdge().twin();
                current_ = twin ? twin.next() : TopoMeshEdge();
            }
        } else {
            const TopoMeshEdge twin = current_.twin();
            current_ = twin ? twin.next() : TopoMeshEdge();
        }
    }

    TopoMeshVertex vertex() const noexcept { return vertex_; }
    /// The current outgoing half-edge; null once finished.
    TopoMeshEdge edge() const noexcept { return current_; }
    bool valid() const noexcept { return static_cast<bool>(current_); }

private:
    TopoMeshVertex vertex_;
    TopoMeshEdge current_;
    // True while turning by prev().twin(), false while turning by twin().next().
    bool turning_ = true;
};

} // namespace koGeom

#include "geom/topomesh/TopoMeshHandles.inl"
