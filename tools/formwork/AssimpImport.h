#pragma once

#include <string>

#include "tools/formwork/MeshArrays.h"
#include "tools/formwork/Progress.h"

namespace formworkTool {

/// How a scene becomes meshes.
struct ImportOptions {
    /// One mesh for the whole scene instead of one per node that holds meshes.
    bool merge = false;
};

/// Reads any file the installed assimp reads (OBJ, PLY, STL, OFF, glTF and GLB, FBX, 3DS, …)
/// into `meshes`, appended in the order of a depth-first walk of the scene's nodes.
///
/// Polygons are triangulated and identical vertices joined; points become vertices of no
/// primitive and lines become line strips (consecutive segments sharing an end join into one
/// strip). Each node's meshes are placed by the node's accumulated transform (normals by its
/// inverse transpose, made unit again; under an identity transform they stay as the file has
/// them) and concatenated into one `CompactMesh`; a mesh used by two nodes
/// appears twice. A channel (normals, the first texture coordinates as UVs, the second as
/// STs, the first vertex colours) that some parts have and others lack is filled for the
/// others: normals computed from their triangles, coordinates 0, colour opaque white.
///
/// False, with `error` set to one line, when assimp rejects the file or its structure (it is
/// validated before use), or when it holds no vertices at all; `meshes` is then unchanged.
bool importWithAssimp(const std::string& path, const ImportOptions& options, MeshList& meshes,
                      std::string& error, Progress& progress);

} // namespace formworkTool
