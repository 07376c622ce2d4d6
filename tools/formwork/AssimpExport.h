#pragma once

#include <string>
#include <string_view>

#include "tools/formwork/MeshArrays.h"

namespace formworkTool {

/// The assimp exporter for a file name's extension (case ignored): ".obj" (OBJ without a
/// material file), ".ply" (ASCII), ".stl" (binary), ".glb" (binary glTF 2). Each writes
/// positions exactly (the text formats with nine digits a float). Null for any other
/// extension.
const char* assimpExportFormat(std::string_view path);

/// Writes `meshes` to `path` through assimp's exporter chosen by `assimpExportFormat`. Each
/// mesh becomes a node with one assimp mesh per kind of primitive it has: triangles (its
/// triangles, strips, fans and fan-triangulated polygons), lines (the segments of its line
/// strips and lines) and points (its vertices that no primitive uses). Each assimp mesh holds
/// only the vertices its primitives use, with every channel the mesh has. STL keeps only
/// triangles and positions; PLY keeps colours in 8 bits; the others keep every kind and channel
/// they can express.
///
/// Positions are multiplied by `scale` (in float, as the packet writer scales them); nothing
/// else is. The meshes must pass `checkIndices`. False, with `error` set to one line, when the
/// format is unknown, when there is nothing it can hold (STL of meshes without triangles) or
/// when assimp fails to write.
bool exportWithAssimp(const std::string& path, const MeshList& meshes, double scale,
                      std::string& error);

} // namespace formworkTool
