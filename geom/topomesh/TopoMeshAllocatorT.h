#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "tessar/os/FSAllocator.h"

#include "geom/topomesh/TopoMeshAlloc.h"
#include "geom/topomesh/TopoMeshRecords.h"

namespace koGeom {

/// The pooled `TopoMeshAlloc` for records of types `VertexData`, `EdgeData` and `FaceData`,
/// each the base record or a trivially copyable type derived from it. One fixed-size pool
/// per record type, taking 1 MiB blocks from the heap only as records need them; allocation
/// and freeing are O(1) and make no heap call except for a new block. Records still out when
/// the allocator is deleted go with their pools.
template <class VertexData, class EdgeData, class FaceData>
class TopoMeshAllocatorT : public TopoMeshAlloc {
    static_assert(std::is_base_of_v<TopoMeshVertexData, VertexData> &&
                  std::is_base_of_v<TopoMeshEdgeData, EdgeData> &&
                  std::is_base_of_v<TopoMeshFaceData, FaceData>);
    // States are saved and restored by copying record bytes.
    static_assert(std::is_trivially_copyable_v<VertexData> &&
                  std::is_trivially_copyable_v<EdgeData> && std::is_trivially_copyable_v<FaceData>);

public:
    /// The bytes of each block the pools take from the heap.
    static constexpr std::size_t blockSize = 0x100000;

    /// Three empty pools; no block is taken yet.
    TopoMeshAllocatorT()
        : vertices_(sizeof(VertexData), blockSize),
          edges_(sizeof(EdgeData), blockSize),
          faces_(sizeof(FaceData), blockSize) {
        vertices_.setLazy();
        edges_.setLazy();
        faces_.setLazy();
    }

    TopoMeshAlloc* create() const override { return new TopoMeshAllocatorT; }

    TopoMeshVertexData* allocVertex() override {
        return static_cast<VertexData*>(zeroed(vertices_, sizeof(VertexData)));
    }
    TopoMeshEdgeData* allocEdge() override {
        return static_cast<EdgeData*>(zeroed(edges_, sizeof(EdgeData)));
    }
    TopoMeshFaceData* allocFace() override {
        return static_cast<FaceData*>(zeroed(faces_, sizeof(FaceData)));
    }
    void freeVertex(TopoMeshVertexData* record) noexcept override {
        vertices_.free(static_cast<VertexData*>(record));
    }
    void freeEdge(TopoMeshEdgeData* record) noexcept override {
        edges_.free(static_cast<EdgeData*>(record));
    }
    void freeFace(TopoMeshFaceData* record) noexcept override {
        faces_.free(static_cast<FaceData*>(record));
    }

    std::size_t vertexSize() const noexcept override { return sizeof(VertexData); }
    std::size_t edgeSize() const noexcept override { return sizeof(EdgeData); }
    std::size_t faceSize() const noexcept override { return sizeof(FaceData); }

    /// \name Pools
    /// For inspection: records out, blocks held.
    /// @{
    const koOS::FSAllocator& vertexPool() const noexcept { return vertices_; }
    const koOS::FSAllocator& edgePool() const noexcept { return edges_; }
    const koOS::FSAllocator& facePool() const noexcept { return faces_; }
    /// @}

private:
    static void* zeroed(koOS::FSAllocator& pool, std::size_t size) {
        return std::memset(pool.alloc(), 0, size);
    }

    koOS::FSAllocator vertices_;
    koOS::FSAllocator edges_;
    koOS::FSAllocator faces_;
};

} // namespace koGeom
