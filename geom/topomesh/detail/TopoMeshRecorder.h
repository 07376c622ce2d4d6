#pragma once

#include <cstddef>
#include <memory>

#include "tessar/core/Containers.h"

#include "geom/topomesh/TopoMeshAlloc.h"
#include "geom/topomesh/TopoMeshEntity.h"
#include "geom/topomesh/TopoMeshHeader.h"
#include "geom/topomesh/TopoMeshTypedefs.h"

namespace koGeom::detail {

class TopoMeshStateImpl;
struct TopoMeshTransition;

/// One touched record: what happened to it and, for a record whose contents changed, a copy
/// of it (from the mesh's allocator) holding its contents on the side of the step that the
/// live record does not hold.
struct TopoMeshChange {
    TopoMeshTypedefs::BulletinType bulletin;
    TopoMeshTypedefs::EntityType type;
    void* record;
    void* snapshot;
};

/// The change recorder of a mesh with transactions enabled: the changes since the current
/// state (pending), the tree of saved states, and the switching between them.
///
/// **Joining two steps.** When a state with one child is dropped, the step into it (A, from
/// the parent P to the state S) and the step out of it (B, from S to the child C) become one
/// step from P to C. Both steps hold the same side (the live records are at C or beyond
/// when both are applied, at P or before when neither is). For a record in only one step the
/// entry is kept as it is. For a record in both, the bulletin follows the recording rule
/// (A's bulletin stays, except that modified then deleted is deleted, and created then
/// deleted drops the entry altogether and gives the record, which no remaining state can
/// reach, back to the allocator). The joined entry must keep the record's contents on the
/// side the live record does not hold:
/// - both steps have copies: when applied, A's copy (P's contents) is kept and B's released;
///   when not applied, B's copy (C's contents) is kept and A's released;
/// - only A has a copy: it is kept (B deleted the record without changing it);
/// - only B has a copy (A created the record): the record is unreachable at P, so the entry
///   needs none; when not applied, the copy (C's contents) is first put into the live record.
class TopoMeshRecorder {
public:
    using EntityType = TopoMeshTypedefs::EntityType;
    using BulletinType = TopoMeshTypedefs::BulletinType;

    /// A recorder over the mesh's allocator and lists, with a root state of the lists as
    /// they stand, current.
    TopoMeshRecorder(TopoMeshAlloc* allocator, TopoMeshHeader* header);
    /// Deletes the states, except those still referenced, which are detached. Records and
    /// copies still out go with the allocator's pools.
    ~TopoMeshRecorder();

    TopoMeshRecorder(const TopoMeshRecorder&) = delete;
    TopoMeshRecorder& operator=(const TopoMeshRecorder&) = delete;

    /// Notes one change of `record` since the last saved state (the recording rule): the
    /// first change of a record makes its entry, a modification copying the record; a record
    /// created and then deleted drops out and goes back to the allocator; a modified one that
    /// is deleted keeps its copy; any other later change leaves the entry as it is.
    void record(void* record, EntityType type, BulletinType bulletin);

    int getChanges(ko::unordered_map<TopoMeshEntity, BulletinType>& changes) const;
    /// The current state, after saving the pending changes as a new child of it if there
    /// are any.
    TopoMeshStateImpl* createState();
    /// Moves the mesh to `target`, a state of this recorder's tree.
    void setState(TopoMeshStateImpl* target);
    /// A state lost its last outside reference.
    void released(TopoMeshStateImpl* state);

private:
    void makeCurrent(TopoMeshStateImpl* state);
    int peekTag() const noexcept;
    void consumeTag() noexcept;
    void prune(TopoMeshStateImpl* state);
    void destroy(TopoMeshStateImpl* state);
    void joinThrough(TopoMeshStateImpl* state);
    void discard(TopoMeshTransition& transition);
    void apply(TopoMeshTransition& transition) noexcept;
    void join(TopoMeshTransition& first, TopoMeshTransition& second);
    static TopoMeshTransition& transitionTo(TopoMeshStateImpl* child) noexcept;

    void* allocRecord(EntityType type);
    void freeRecord(void* record, EntityType type) noexcept;
    /// Gives back a record that no state can reach any longer, unless a pending change
    /// still names it (which only a caller that switched states with changes pending brings
    /// about).
    void freeUnreachable(void* record, EntityType type) noexcept;
    std::size_t recordSize(EntityType type) const noexcept;

    TopoMeshAlloc* allocator_;
    TopoMeshHeader* header_;
    ko::unordered_map<void*, TopoMeshChange> pending_;
    // Used while two steps are joined: the position of each record in the joined step, and
    // the records that the join gives back.
    ko::unordered_map<void*, std::size_t> joinIndex_;
    ko::unordered_map<void*, EntityType> joinFreed_;
    std::unique_ptr<std::byte[]> scratch_;
    TopoMeshStateImpl* root_ = nullptr;
    TopoMeshStateImpl* current_ = nullptr;
    int nextTag_ = 0;
    ko::vector<int> freeTags_;
};

} // namespace koGeom::detail
