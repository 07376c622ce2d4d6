#pragma once

#include <cstdint>

#include "geom/topomesh/TopoMeshRecords.h"

namespace koGeom {

/// The list part of a mesh: heads and tails of its three doubly linked record lists and
/// their lengths (the edge count counts half-edges). A saved state keeps a copy of it.
struct TopoMeshHeader {
    TopoMeshVertexData* firstVertex = nullptr;
    TopoMeshVertexData* lastVertex = nullptr;
    TopoMeshFaceData* firstFace = nullptr;
    TopoMeshFaceData* lastFace = nullptr;
    TopoMeshEdgeData* firstEdge = nullptr;
    TopoMeshEdgeData* lastEdge = nullptr;
    std::int32_t numVertices = 0;
    std::int32_t numFaces = 0;
    std::int32_t numEdges = 0;
};

} // namespace koGeom
