#pragma once

#include "geom/topomesh/TopoMeshAllocatorT.h"
#include "geom/topomesh/TopoMeshRecords.h"

namespace koGeom::detail {

/// The allocator a `TopoMesh` makes for itself: the pooled allocator of the three base
/// records, sealed, so that its free slots hand a record straight back to its pool, and its
/// create slot makes another of its own kind.
class TopoMeshImplAlloc final
    : public TopoMeshAllocatorT<TopoMeshVertexData, TopoMeshEdgeData, TopoMeshFaceData> {
public:
    TopoMeshAlloc* create() const override { return new TopoMeshImplAlloc; }
};

} // namespace koGeom::detail
