#pragma once

#include <string>

#include "tools/formwork/MeshArrays.h"

namespace formworkTool {

/// \name Meshes in packet files
/// The program's one door to packet files of meshes.
/// @{

/// True when the file at `path` begins with a packet file's magic bytes "FWPK"; false also
/// when it cannot be read.
bool looksLikePacketFile(const std::string& path);

/// Reads every mesh of the packet file at `path` into `meshes` (appended). False, with
/// `error` one line naming the file and what is wrong, when the file is damaged or holds no
/// mesh; `meshes` is then unchanged.
bool readPacketFile(const std::string& path, MeshList& meshes, std::string& error);

/// Writes `meshes` to a packet file at `path`, one after the other, positions multiplied by
/// `scale`. False, with `error` one line, when the file cannot be written.
bool writePacketFile(const std::string& path, const MeshList& meshes, double scale,
                     std::string& error);
/// @}

} // namespace formworkTool
