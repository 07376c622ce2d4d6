#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "tessar/core/Reference.h"

#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshAttributes.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/MeshShapes.h"

namespace koGeomTest {

using Bytes = std::vector<std::uint8_t>;

/// The bytes of a packet file that `write` fills.
inline Bytes packetBytes(const std::function<void(ioWriteContext&)>& write) {
    ioWriteContext context;
    write(context);
    EXPECT_TRUE(context.close()) << context.error().toString();
    return context.buffer();
}

/// A new mesh with every array (see `fillEveryArray`).
inline ko::Reference<koGeom::CompactMesh> everyArrayMesh(int vertices, int triangles,
                                                         unsigned seed) {
    ko::Reference<koGeom::CompactMesh> mesh(new koGeom::CompactMesh);
    fillEveryArray(*mesh, vertices, triangles, seed);
    return mesh;
}

/// The file of `mesh` alone; the writer's attribute lines are swallowed.
inline Bytes meshBytes(const koGeom::CompactMesh& mesh, double scale = 1.0,
                       bool writeReferences = true) {
    testing::internal::CaptureStderr();
    Bytes bytes = packetBytes([&](ioWriteContext& context) {
        koGeom::packetFile::writeMesh(context, &mesh, scale, writeReferences);
    });
    testing::internal::GetCapturedStderr();
    return bytes;
}

/// What reading a file through the mesh packet types gave.
struct MeshRead {
    bool ok = false;
    ko::Reference<koGeom::CompactMesh> mesh; // the last mesh, taken
    std::vector<std::string> invalid;        // the reasons of the invalid packets
};

/// Reads `bytes`; the reader's attribute lines are swallowed unless `quiet` is false.
inline MeshRead readMeshes(const Bytes& bytes, bool ignoreMesh = false, bool quiet = true) {
    if (quiet) {
        testing::internal::CaptureStderr();
    }
    ioReadContext context(bytes.data(), bytes.size());
    koGeom::packetFile::ReadInterface reader(context);
    reader.setIgnoreMesh(ignoreMesh);
    ioPacketRegistry registry;
    koGeom::packetFile::registerTypes(&registry, &reader);
    MeshRead read;
    read.ok = reader.read(registry);
    read.mesh = reader.getLastMesh(true);
    for (const ioError& invalid : context.invalidPackets()) {
        read.invalid.push_back(invalid.message);
    }
    if (quiet) {
        testing::internal::GetCapturedStderr();
    }
    return read;
}

template <class T>
bool sameBits(const T* a, const T* b, int count) {
    return count <= 0 || (a && b && std::memcmp(a, b, sizeof(T) * count) == 0);
}

/// Every channel, primitive array and sequence of `read` equals `written` bit for bit, and
/// so do the draw flags, flat shading and the UV range (as floats).
inline void expectSameMesh(const koGeom::CompactMesh& written, const koGeom::CompactMesh& read) {
    ASSERT_EQ(channelNames(read), channelNames(written));
    for (int i = 0; i < written.getNumAttributes(); ++i) {
        const koGeom::MeshAttributes& a = *written.getAttributes(i);
        const koGeom::MeshAttributes& b = *read.getAttributes(i);
        EXPECT_TRUE(b.getDimension() == a.getDimension() &&
                    b.getNumElements() == a.getNumElements() &&
                    sameBits(a.asFloat(), b.asFloat(), a.getNumElements() * a.getDimension()))
            << a.getName().view();
    }
    const int triangles = written.getNumTriangles();
    EXPECT_TRUE(read.getNumTriangles() == triangles &&
                sameBits(written.getTrianglesRaw(), read.getTrianglesRaw(), 3 * triangles) &&
                sameBits(written.getTriangleNormalsRaw(), read.getTriangleNormalsRaw(),
                         written.getTriangleNormals() ? 3 * triangles : 0) &&
                !read.getTriangleNormals() == !written.getTriangleNormals());
    const auto sequences = [](const koGeom::CompactMesh& mesh) {
        return std::array{&mesh.getTriStrips(), &mesh.getTriFans(), &mesh.getLineStrips(),
                          &mesh.getPolys()};
    };
    for (int kind = 0; kind < 4; ++kind) {
        const koGeom::MeshSequence& a = *sequences(written)[kind];
        const koGeom::MeshSequence& b = *sequences(read)[kind];
        EXPECT_TRUE(a.points().count() == b.points().count() &&
                    a.lengths().count() == b.lengths().count() &&
                    sameBits(a.points().elements(), b.points().elements(), a.points().count()) &&
                    sameBits(a.lengths().elements(), b.lengths().elements(), a.lengths().count()))
            << "sequence kind " << kind;
    }
    EXPECT_TRUE(read.getDrawFlags() == written.getDrawFlags() &&
                read.getFlatShaded() == written.getFlatShaded());
    const koLinear::Range2d uvs = written.getUVRange();
    const koLinear::Range2d readUVs = read.getUVRange();
    EXPECT_TRUE(readUVs.min.x == static_cast<float>(uvs.min.x) &&
                readUVs.min.y == static_cast<float>(uvs.min.y) &&
                readUVs.max.x == static_cast<float>(uvs.max.x) &&
                readUVs.max.y == static_cast<float>(uvs.max.y));
}

} // namespace koGeomTest
