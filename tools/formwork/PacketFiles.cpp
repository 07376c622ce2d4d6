#include "tools/formwork/PacketFiles.h"

#include <cstdio>
#include <cstring>

namespace formworkTool {

bool looksLikePacketFile(const std::string& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return false;
    }
    char magic[4] = {};
    const bool read = std::fread(magic, 1, sizeof magic, file) == sizeof magic;
    std::fclose(file);
    return read && std::memcmp(magic, "FWPK", sizeof magic) == 0;
}

bool readPacketFile(const std::string& path, MeshList& /*meshes*/, std::string& error) {
    error = path + ": packet files cannot be read by this build";
    return false;
}

bool writePacketFile(const std::string& path, const MeshList& /*meshes*/, double /*scale*/,
                     std::string& error) {
    error = path + ": packet files cannot be written by this build";
    return false;
}

} // namespace formworkTool
