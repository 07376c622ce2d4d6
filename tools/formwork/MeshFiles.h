#pragma once

#include <string>
#include <string_view>

#include "tools/formwork/AssimpImport.h"
#include "tools/formwork/MeshArrays.h"
#include "tools/formwork/Progress.h"

namespace formworkTool {

/// True when `path` names a packet file by its extension (".fwpk", case ignored).
bool isPacketFileName(std::string_view path);

/// True when `writeMeshes` can write a file of this name: a packet file or a format of
/// `assimpExportFormat`.
bool isWritableFileName(std::string_view path);

/// True when `path` can be opened for reading and is no directory; else false, with `error`
/// the path and the system's reason ("No such file or directory").
bool checkReadable(const std::string& path, std::string& error);

/// Reads the meshes of any file the program understands into `meshes` (appended): a packet
/// file by its contents (a file that begins with a packet file's header), anything else
/// through `importWithAssimp` with `options`. Every mesh read passes `checkIndices`.
///
/// False, with `error` one line naming the file and what is wrong, when the file cannot be
/// opened, is damaged, holds no mesh, or has a mesh whose primitives name missing vertices;
/// `meshes` is then unchanged.
bool readMeshes(const std::string& path, const ImportOptions& options, MeshList& meshes,
                std::string& error, Progress& progress);

/// Writes `meshes` to `path`, a packet file or an exported mesh file by its name (see
/// `isWritableFileName`), their positions multiplied by `scale` on the way out (the meshes
/// are not changed). False, with `error` one line, when the file cannot be written.
bool writeMeshes(const std::string& path, const MeshList& meshes, double scale, std::string& error);

} // namespace formworkTool
