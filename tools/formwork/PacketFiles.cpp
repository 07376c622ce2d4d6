#include "tools/formwork/PacketFiles.h"

#include <cstdio>
#include <cstring>

#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketType.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"

namespace formworkTool {

namespace {

// Takes each mesh as soon as its header packet has made it, so that every mesh of the file is
// kept, not only the last.
class MeshCollector : public koGeom::packetFile::ReadInterface {
public:
    explicit MeshCollector(ioReadContext& context) : ReadInterface(context) {}

    void postPacketRead(const ioPacketType& type, bool accepted) override {
        ReadInterface::postPacketRead(type, accepted);
        koGeom::CompactMesh* mesh = getLastMesh(false);
        if (mesh != nullptr && (meshes.empty() || meshes.back().get() != mesh)) {
            meshes.emplace_back(mesh);
        }
    }

    MeshList meshes;
};

} // namespace

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

bool readPacketFile(const std::string& path, MeshList& meshes, std::string& error) {
    ioReadContext context(path);
    ioPacketRegistry registry;
    MeshCollector collector(context);
    koGeom::packetFile::registerTypes(&registry, &collector);
    if (!collector.read(registry)) {
        error = path + ": " + context.error().toString();
        return false;
    }
    if (!context.invalidPackets().empty()) {
        error = path + ": " + context.invalidPackets().front().toString();
        return false;
    }
    if (collector.meshes.empty()) {
        error = path + ": no mesh in the packet file";
        return false;
    }
    meshes.insert(meshes.end(), collector.meshes.begin(), collector.meshes.end());
    return true;
}

bool writePacketFile(const std::string& path, const MeshList& meshes, double scale,
                     std::string& error) {
    ioWriteContext context(path);
    for (const ko::Reference<koGeom::CompactMesh>& mesh : meshes) {
        koGeom::packetFile::writeMesh(context, mesh.get(), scale, true);
    }
    if (!context.close()) {
        error = path + ": " + context.error().toString();
        return false;
    }
    return true;
}

} // namespace formworkTool
