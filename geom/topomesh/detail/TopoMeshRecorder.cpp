#include "geom/topomesh/detail/TopoMeshRecorder.h"

#include <cstring>

namespace koGeom::detail {

TopoMeshRecorder::TopoMeshRecorder(TopoMeshAlloc* allocator, TopoMeshHeader* header)
    : allocator_(allocator), header_(header) {}

// The records and copies still out go with the allocator's pools.
TopoMeshRecorder::~TopoMeshRecorder() = default;

void TopoMeshRecorder::record(void* record, EntityType type, BulletinType bulletin) {
    auto found = pending_.find(record);
    if (found != pending_.end()) {
        TopoMeshChange& change = found->second;
        if (bulletin == BulletinType::Deleted) {
            if (change.bulletin == BulletinType::Created) {
                // The record never existed in a saved state: nothing will need it again.
                pending_.erase(found);
                freeRecord(record, type);
            } else if (change.bulletin == BulletinType::Modified) {
                change.bulletin = BulletinType::Deleted;
            }
        }
        return;
    }
    TopoMeshChange change{bulletin, type, record, nullptr};
    if (bulletin == BulletinType::Modified) {
        change.snapshot = allocRecord(type);
        std::memcpy(change.snapshot, record, recordSize(type));
    }
    pending_.emplace(record, change);
}

void* TopoMeshRecorder::allocRecord(EntityType type) {
    switch (type) {
        case EntityType::Vertex:
            return allocator_->allocVertex();
        case EntityType::Edge:
            return allocator_->allocEdge();
        case EntityType::Face:
            break;
    }
    return allocator_->allocFace();
}

void TopoMeshRecorder::freeRecord(void* record, EntityType type) noexcept {
    switch (type) {
        case EntityType::Vertex:
            allocator_->freeVertex(static_cast<TopoMeshVertexData*>(record));
            return;
        case EntityType::Edge:
            allocator_->freeEdge(static_cast<TopoMeshEdgeData*>(record));
            return;
        case EntityType::Face:
            break;
    }
    allocator_->freeFace(static_cast<TopoMeshFaceData*>(record));
}

std::size_t TopoMeshRecorder::recordSize(EntityType type) const noexcept {
    switch (type) {
        case EntityType::Vertex:
            return allocator_->vertexSize();
        case EntityType::Edge:
            return allocator_->edgeSize();
        case EntityType::Face:
            break;
    }
    return allocator_->faceSize();
}

} // namespace koGeom::detail
