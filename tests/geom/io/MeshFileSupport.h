#pragma once

#include <gtest/gtest.h>

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

namespace koGeomTest {

using Bytes = std::vector<std::uint8_t>;

/// The bytes of a packet file that `write` fills.
inline Bytes packetBytes(const std::function<void(ioWriteContext&)>& write) {
    ioWriteContext context;
    write(context);
    EXPECT_TRUE(context.close()) << context.error().toString();
    return context.buffer();
}

/// The file of `mesh` alone; the attribute lines of the writer are swallowed.
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

/// Reads `bytes`; the attribute lines the reader writes to the standard error stream are
/// swallowed unless `quiet` is false.
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
/// so do the hints a file carries.
inline void expectSameMesh(const koGeom::CompactMesh& written, const koGeom::CompactMesh& read) {
    ASSERT_EQ(channelNames(read), channelNames(written));
    ASSERT_EQ(read.getNumVertices(), written.getNumVertices());
    for (int i = 0; i < written.getNumAttributes(); ++i) {
        const koGeom::MeshAttributes& a = *written.getAttributes(i);
        const koGeom::MeshAttributes& b = *read.getAttributes(i);
        EXPECT_EQ(b.getDimension(), a.getDimension());
        EXPECT_TRUE(sameBits(a.asFloat(), b.asFloat(), a.getNumElements() * a.getDimension()))
            << a.getName().view();
    }
    ASSERT_EQ(read.getNumTriangles(), written.getNumTriangles());
    EXPECT_TRUE(
        sameBits(written.getTrianglesRaw(), read.getTrianglesRaw(), 3 * written.getNumTriangles()));
    EXPECT_EQ(read.getTriangleNormals() != nullptr, written.getTriangleNormals() != nullptr);
    EXPECT_TRUE(sameBits(written.getTriangleNormalsRaw(), read.getTriangleNormalsRaw(),
                         3 * written.getNumTriangles()));
    const koGeom::MeshSequence* a[4] = {&written.getTriStrips(), &written.getTriFans(),
                                        &written.getLineStrips(), &written.getPolys()};
    const koGeom::MeshSequence* b[4] = {&read.getTriStrips(), &read.getTriFans(),
                                        &read.getLineStrips(), &read.getPolys()};
    for (int kind = 0; kind < 4; ++kind) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(b[kind]->points().count(), a[kind]->points().count());
        EXPECT_EQ(b[kind]->lengths().count(), a[kind]->lengths().count());
        EXPECT_TRUE(sameBits(a[kind]->points().elements(), b[kind]->points().elements(),
                             a[kind]->points().count()));
        EXPECT_TRUE(sameBits(a[kind]->lengths().elements(), b[kind]->lengths().elements(),
                             a[kind]->lengths().count()));
    }
    const koLinear::Range2d uvs = written.getUVRange();
    const koLinear::Range2d readUVs = read.getUVRange();
    EXPECT_TRUE(readUVs.min.x == static_cast<float>(uvs.min.x) &&
                readUVs.min.y == static_cast<float>(uvs.min.y) &&
                readUVs.max.x == static_cast<float>(uvs.max.x) &&
                readUVs.max.y == static_cast<float>(uvs.max.y));
    EXPECT_EQ(read.getDrawFlags(), written.getDrawFlags());
    EXPECT_EQ(read.getFlatShaded(), written.getFlatShaded());
}

} // namespace koGeomTest
