#pragma once

#include "tessar/core/Containers.h"

#include "geom/topomesh/TopoMeshAlloc.h"
#include "geom/topomesh/TopoMeshHeader.h"
#include "geom/topomesh/TopoMeshTypedefs.h"

namespace koGeom::detail {

/// One touched record: what happened to it and, for a record whose contents changed, a copy
/// of it (from the mesh's allocator) as of the other end of the step.
struct TopoMeshChange {
    TopoMeshTypedefs::BulletinType bulletin;
    TopoMeshTypedefs::EntityType type;
    void* record;
    void* snapshot;
};

/// The change recorder of a mesh with transactions enabled.
class TopoMeshRecorder {
public:
    using EntityType = TopoMeshTypedefs::EntityType;
    using BulletinType = TopoMeshTypedefs::BulletinType;

    TopoMeshRecorder(TopoMeshAlloc* allocator, TopoMeshHeader* header);
    ~TopoMeshRecorder();

    TopoMeshRecorder(const TopoMeshRecorder&) = delete;
    TopoMeshRecorder& operator=(const TopoMeshRecorder&) = delete;

    /// Notes one change of `record` since the last saved state (the recording rule): the
    /// first change of a record makes its entry, a modification copying the record; a record
    /// created and then deleted drops out and goes back to the allocator; a modified one that
    /// is deleted keeps its copy.
    void record(void* record, EntityType type, BulletinType bulletin);

private:
    void* allocRecord(EntityType type);
    void freeRecord(void* record, EntityType type) noexcept;
    std::size_t recordSize(EntityType type) const noexcept;

    TopoMeshAlloc* allocator_;
    TopoMeshHeader* header_;
    ko::unordered_map<void*, TopoMeshChange> pending_;
};

} // namespace koGeom::detail
