#pragma once

#include <cstddef>

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMeshRecords.h"

namespace koGeom {

/// The source of the records of one `TopoMesh`, which owns it and deletes it last: records
/// still out when it is deleted go with it, so an implementation must release them all in
/// its destructor (a pool does this at once).
///
/// A mesh with extra per-element fields supplies records of types derived from the three
/// base records (see `TopoMeshAllocatorT`); the size operations report how many bytes of each
/// record the mesh copies when it saves and restores states. An allocator is used from one
/// thread at a time.
class FORMWORK_EXPORT TopoMeshAlloc {
public:
    virtual ~TopoMeshAlloc();

    TopoMeshAlloc(const TopoMeshAlloc&) = delete;
    TopoMeshAlloc& operator=(const TopoMeshAlloc&) = delete;

    /// A new, empty allocator of the same kind with pools of its own; the caller owns it.
    virtual TopoMeshAlloc* create() const = 0;

    /// \name Records
    /// Each allocation returns a record whose every byte, up to the size reported below, is
    /// zero, or throws `std::bad_alloc`. A free takes a record from the same allocator's
    /// matching slot.
    /// @{
    virtual TopoMeshVertexData* allocVertex() = 0;
    virtual TopoMeshEdgeData* allocEdge() = 0;
    virtual TopoMeshFaceData* allocFace() = 0;
    virtual void freeVertex(TopoMeshVertexData* record) noexcept = 0;
    virtual void freeEdge(TopoMeshEdgeData* record) noexcept = 0;
    virtual void freeFace(TopoMeshFaceData* record) noexcept = 0;
    /// @}

    /// \name Record sizes in bytes
    /// @{
    virtual std::size_t vertexSize() const noexcept = 0;
    virtual std::size_t edgeSize() const noexcept = 0;
    virtual std::size_t faceSize() const noexcept = 0;
    /// @}

protected:
    TopoMeshAlloc() = default;
};

} // namespace koGeom
