#pragma once

#include "geom/FormworkExport.h"

namespace koGeom {

namespace detail {
class TopoMeshRecorder;
}

/// A saved state of a `TopoMesh` with transactions enabled, handed out by `createState` as a
/// `ko::Reference<TopoMeshState>` and taken back by `setState`.
///
/// The states of a mesh form a tree, rooted at the state made when transactions were
/// enabled; each step from a parent to a child holds the changes between them. A state stays
/// in the tree while a reference to it is held or while it is the mesh's current state; once
/// neither holds, the tree drops it, joining the step into it with the step out of it when
/// it has one child. A reference that outlives its mesh keeps only the tag: the state is then
/// out of every tree and deleted with its last reference.
///
/// States are counted by plain integers: a state, like its mesh, is used from one thread at
/// a time.
class FORMWORK_EXPORT TopoMeshState {
public:
    virtual ~TopoMeshState();

    TopoMeshState(const TopoMeshState&) = delete;
    TopoMeshState& operator=(const TopoMeshState&) = delete;

    /// \name Reference handling
    /// What `ko::Reference` calls: a new outside reference, and the release of one.
    /// @{
    virtual void ref() const noexcept = 0;
    virtual void unref() const noexcept = 0;
    /// @}

    /// A number unique among the live states of the mesh; the tags of dropped states are
    /// reused, the most recently dropped first.
    int getTag() const noexcept { return tag_; }
    /// The outside references held now.
    int refs() const noexcept { return refs_; }

protected:
    friend class TopoMeshImpl;

    explicit TopoMeshState(int tag) noexcept : tag_(tag) {}

    /// Called when the mesh goes: from now on the state lives only for its references.
    virtual void detach() noexcept = 0;

    /// The recorder of the mesh whose tree holds the state; null once the mesh is gone.
    detail::TopoMeshRecorder* recorder_ = nullptr;
    int tag_;
    mutable int refs_ = 0;
};

} // namespace koGeom
