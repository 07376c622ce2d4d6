// The mesh packet reader on any bytes: a read through the mesh packet types (and a host packet
// of cameras and values) as the bytes stand, then again with every packet's checksum
// recomputed, so that damage inside a packet reaches the reader's own checks instead of
// stopping at the checksum.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketType.h"
#include "crate/ioReadContext.h"
#include "fuzz/support/PacketSeals.h"
#include "geom/io/PacketFile.h"
#include "geom/io/PacketValues.h"
#include "geom/io/ReadInterface.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/view/Camera.h"

namespace {

using koGeom::packetFile::ReadInterface;

/// Reads a "test.view" packet: a camera, a frustum, a viewport, then one value of each kind.
class ViewType : public ioPacketType {
public:
    explicit ViewType(ReadInterface& reader) : ioPacketType("test.view"), reader_(reader) {}

    bool readPacket(ioReadContext& in) override {
        koGeom::Camera camera;
        koGeom::EyeSpaceFrustum frustum;
        koGeom::Viewport viewport;
        koLinear::ParamPlane plane;
        koLinear::ProjMatrix matrix;
        koUtil::Color8 colour;
        koString::IString text;
        return reader_.readCamera(camera) && reader_.readEyeSpaceFrustum(frustum) &&
               reader_.readViewport(viewport) && readParamPlane(in, plane) &&
               readProjMatrix(in, matrix) && readColor8(in, colour) && readIString(in, text);
    }

private:
    ReadInterface& reader_;
};

void readMeshes(const std::uint8_t* data, std::size_t size) {
    ioReadContext context(data, size);
    ReadInterface reader(context);
    ioPacketRegistry registry;
    koGeom::packetFile::registerTypes(&registry, &reader);
    registry.supportedType(new ViewType(reader));
    reader.read(registry);
    ko::Reference<koGeom::CompactMesh> mesh(reader.getLastMesh(true));
    if (mesh) {
        koLinear::Range3d range;
        mesh->getBoundingBox(range); // reads every position the file gave
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readMeshes(data, size);
    std::vector<std::uint8_t> resealed(data, data + size);
    formworkFuzz::resealPackets(resealed);
    readMeshes(resealed.data(), resealed.size());
    return 0;
}
