#pragma once

#include "tessar/core/Containers.h"

#include "geom/topomesh/TopoMeshHeader.h"
#include "geom/topomesh/TopoMeshState.h"
#include "geom/topomesh/detail/TopoMeshRecorder.h"

namespace koGeom::detail {

class TopoMeshStateImpl;

/// The step from a state to one of its children: the changed records, and which side of the
/// step the live records hold now (true: the child's).
struct TopoMeshTransition {
    TopoMeshStateImpl* child;
    ko::vector<TopoMeshChange> changes;
    bool childSide;
};

/// A node of the state tree.
class TopoMeshStateImpl final : public TopoMeshState {
public:
    TopoMeshStateImpl(TopoMeshRecorder* recorder, int tag, const TopoMeshHeader& meshHeader,
                      TopoMeshStateImpl* parentState) noexcept
        : TopoMeshState(tag), header(meshHeader), parent(parentState) {
        recorder_ = recorder;
    }

    void ref() const noexcept override { ++refs_; }
    /// At the last reference: deleted when out of every tree, otherwise offered to the
    /// recorder, which drops it unless it is current.
    void unref() const noexcept override;
    void detach() noexcept override;

    TopoMeshRecorder* recorder() const noexcept { return recorder_; }

    /// The mesh's lists and counts as they stood in this state.
    TopoMeshHeader header;
    /// Null for the root.
    TopoMeshStateImpl* parent;
    ko::vector<TopoMeshTransition> transitions;
};

} // namespace koGeom::detail
