#include "tools/formwork/MeshFiles.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <sys/stat.h>

#include "tools/formwork/AssimpExport.h"
#include "tools/formwork/PacketFiles.h"

namespace formworkTool {

bool isPacketFileName(std::string_view path) {
    constexpr std::string_view extension = ".fwpk";
    return path.size() >= extension.size() &&
           std::equal(
               extension.begin(), extension.end(), path.end() - extension.size(),
               [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

bool isWritableFileName(std::string_view path) {
    return isPacketFileName(path) || assimpExportFormat(path) != nullptr;
}

bool checkReadable(const std::string& path, std::string& error) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    struct stat status {};
    const bool directory = fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode);
    std::fclose(file);
    if (directory) {
        error = path + ": " + std::strerror(EISDIR);
        return false;
    }
    return true;
}

bool readMeshes(const std::string& path, const ImportOptions& options, MeshList& meshes,
                std::string& error, Progress& progress) {
    // Opening first gives the system's reason (no such file, permission) rather than an
    // importer's guess.
    if (!checkReadable(path, error)) {
        return false;
    }
    MeshList read;
    const bool ok = looksLikePacketFile(path)
                        ? readPacketFile(path, read, error)
                        : importWithAssimp(path, options, read, error, progress);
    if (!ok) {
        return false;
    }
    for (std::size_t i = 0; i < read.size(); ++i) {
        const std::string wrong = checkIndices(*read[i]);
        if (!wrong.empty()) {
            error = path + ": mesh " + std::to_string(i) + ": " + wrong;
            return false;
        }
    }
    meshes.insert(meshes.end(), read.begin(), read.end());
    return true;
}

bool writeMeshes(const std::string& path, const MeshList& meshes, double scale,
                 std::string& error) {
    return isPacketFileName(path) ? writePacketFile(path, meshes, scale, error)
                                  : exportWithAssimp(path, meshes, scale, error);
}

} // namespace formworkTool
