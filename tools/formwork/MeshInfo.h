#pragma once

#include <string>

#include "tools/formwork/MeshArrays.h"
#include "tools/formwork/Progress.h"

namespace formworkTool {

/// The report of `formwork info` on the meshes read from `file`: for each mesh its counts of
/// vertices and primitives, its channels, its bounding box, its memory estimate
/// (`CompactMesh::getSizeInBytes`) and the topology of its surface (see `SurfaceTopology`):
/// welded vertices, edges and faces, components, boundary loops, Euler characteristic,
/// genus, and where it is not a manifold; then the totals. As aligned text for a reader, or
/// with `json` as one JSON object (documented in docs/formwork.md) for scripts.
std::string meshInfo(const std::string& file, const MeshList& meshes, bool json,
                     Progress& progress);

} // namespace formworkTool
