#pragma once

#include <type_traits>

#include "tessar/linear/Point.h"

namespace koGeom {

struct TopoMeshEdgeData;

/// \name Half-edge mesh records
/// The three records of a `TopoMesh`: plain structs of 8-byte fields, linked by raw pointers
/// to records of the same mesh (null meaning "none"). Each record also sits in its mesh's
/// doubly linked list of records of its kind (`nextInMesh`, `prevInMesh`). A mesh with extra
/// per-element fields derives its own records from these and supplies them through a
/// `TopoMeshAllocatorT`; the records are copied byte for byte when the mesh switches between
/// saved states, so they must stay trivially copyable.
/// @{

/// A vertex: its position and one of its outgoing half-edges (null when isolated).
struct TopoMeshVertexData {
    koLinear::Point point;
    TopoMeshEdgeData* firstEdge;
    TopoMeshVertexData* nextInMesh;
    TopoMeshVertexData* prevInMesh;
};

struct TopoMeshFaceData;

/// A directed half-edge. Its second vertex is not stored: it is the origin of `next`.
struct TopoMeshEdgeData {
    /// The origin (first vertex).
    TopoMeshVertexData* vertex;
    /// The following and preceding half-edges around `face`.
    TopoMeshEdgeData* next;
    TopoMeshEdgeData* prev;
    /// The opposite half-edge of the same edge; null on a boundary.
    TopoMeshEdgeData* twin;
    TopoMeshFaceData* face;
    TopoMeshEdgeData* nextInMesh;
    TopoMeshEdgeData* prevInMesh;
};

/// A face: one half-edge of its loop, which `next` follows until it returns to it.
struct TopoMeshFaceData {
    TopoMeshEdgeData* firstEdge;
    TopoMeshFaceData* nextInMesh;
    TopoMeshFaceData* prevInMesh;
};

/// @}

// The sizes are part of the design: the size estimate and the allocators report them.
static_assert(sizeof(TopoMeshVertexData) == 48);
static_assert(sizeof(TopoMeshEdgeData) == 56);
static_assert(sizeof(TopoMeshFaceData) == 24);
static_assert(std::is_trivially_copyable_v<TopoMeshVertexData> &&
              std::is_trivially_copyable_v<TopoMeshEdgeData> &&
              std::is_trivially_copyable_v<TopoMeshFaceData>);

} // namespace koGeom
