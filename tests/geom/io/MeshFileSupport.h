#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketType.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "tessar/core/Reference.h"

#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshAttributes.h"
#include "geom/topomesh/TopoMesh.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/MeshShapes.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeomTest {

using Bytes = std::vector<std::uint8_t>;

/// The bytes of a packet file that `write` fills; what it writes to the standard error stream
/// (the attribute lines of the mesh writer) goes to `log` when given.
inline Bytes packetBytes(const std::function<void(ioWriteContext&)>& write,
                         std::string* log = nullptr) {
    testing::internal::CaptureStderr();
    ioWriteContext context;
    write(context);
    EXPECT_TRUE(context.close()) << context.error().toString();
    const std::string written = testing::internal::GetCapturedStderr();
    if (log != nullptr) {
        *log = written;
    }
    return context.buffer();
}

/// A new mesh with every array (see `fillEveryArray`).
inline ko::Reference<koGeom::CompactMesh> everyArrayMesh(int vertices, int triangles,
                                                         unsigned seed) {
    ko::Reference<koGeom::CompactMesh> mesh(new koGeom::CompactMesh);
    fillEveryArray(*mesh, vertices, triangles, seed);
    return mesh;
}

/// The file of `mesh` alone.
inline Bytes meshBytes(const koGeom::CompactMesh& mesh, double scale = 1.0) {
    return packetBytes(
        [&](ioWriteContext& c) { koGeom::packetFile::writeMesh(c, &mesh, scale, true); });
}

/// What reading a file through the mesh packet types gave.
struct MeshRead {
    bool ok = false;
    ko::Reference<koGeom::CompactMesh> mesh;                    // the last mesh, taken
    std::vector<std::string> invalid;                           // the invalid packets' reasons
    ko::vector<ko::Reference<koGeom::TopoMesh>> halfEdgeMeshes; // each sound or empty
    std::string error;                                          // the read's error, if any
    std::string log; // what the reader wrote to the standard error stream

    /// The error and the reasons on one line, each reason after a bar.
    std::string reasons() const {
        std::string line = error;
        for (const std::string& reason : invalid) {
            line += "|" + reason;
        }
        return line;
    }
};

/// How `readMeshes` reads: whether mesh packets are ignored, the half-edge mesh types to
/// register besides the default ones (`TopoMesh::registerTypes`), whose meshes it takes
/// instead, and one more type for the registry to take.
struct ReadOptions {
    bool ignoreMesh = false;
    const char* halfEdgeName = nullptr;
    void (*halfEdgeReader)(ioReadContext&) = nullptr;
    ioPacketType* otherType = nullptr;
};

/// Reads `bytes` as `options` say, keeping what the reader writes to the standard error stream.
inline MeshRead readMeshes(const Bytes& bytes, const ReadOptions& options = {}) {
    testing::internal::CaptureStderr();
    ioReadContext context(bytes.data(), bytes.size());
    koGeom::packetFile::ReadInterface reader(context);
    reader.setIgnoreMesh(options.ignoreMesh);
    ioPacketRegistry registry;
    koGeom::packetFile::registerTypes(&registry, &reader);
    if (options.halfEdgeName != nullptr) {
        koGeom::TopoMesh::registerTypes(registry, options.halfEdgeName, options.halfEdgeReader);
    }
    registry.supportedType(options.otherType);
    MeshRead read;
    read.ok = reader.read(registry);
    read.error = context.error().message;
    read.mesh = reader.getLastMesh(true);
    for (const ioError& invalid : context.invalidPackets()) {
        read.invalid.push_back(invalid.message);
    }
    read.halfEdgeMeshes = koGeom::TopoMesh::takeReadMeshes(registry, options.halfEdgeName);
    for (const auto& mesh : read.halfEdgeMeshes) {
        EXPECT_EQ(checkTopoMesh(*mesh), "");
    }
    EXPECT_TRUE(koGeom::TopoMesh::takeReadMeshes(registry, options.halfEdgeName).empty());
    read.log = testing::internal::GetCapturedStderr();
    return read;
}

/// Every channel (with its name), primitive array and sequence of `mesh` as bytes, then the
/// UV range as floats, the draw flags and flat shading: two meshes hold the same data bit for
/// bit when their dumps are equal.
inline std::string meshDump(const koGeom::CompactMesh& mesh) {
    std::string dump = channelNames(mesh);
    const auto add = [&dump](const void* data, std::size_t bytes) {
        dump += "|" + std::to_string(bytes) + ":";
        dump.append(bytes != 0 ? static_cast<const char*>(data) : "", bytes);
    };
    for (int i = 0; i < mesh.getNumAttributes(); ++i) {
        const koGeom::MeshAttributes& channel = *mesh.getAttributes(i);
        add(channel.asFloat(), 4u * channel.getNumElements() * channel.getDimension());
    }
    const std::size_t triangles = static_cast<std::size_t>(mesh.getNumTriangles());
    add(mesh.getTrianglesRaw(), 12 * triangles);
    add(mesh.getTriangleNormalsRaw(), mesh.getTriangleNormals() ? 12 * triangles : 0);
    for (const koGeom::MeshSequence* sequence :
         {&mesh.getTriStrips(), &mesh.getTriFans(), &mesh.getLineStrips(), &mesh.getPolys()}) {
        add(sequence->points().elements(), 4u * sequence->points().count());
        add(sequence->lengths().elements(), 4u * sequence->lengths().count());
    }
    const koLinear::Range2d uvs = mesh.getUVRange();
    const float range[4] = {static_cast<float>(uvs.min.x), static_cast<float>(uvs.min.y),
                            static_cast<float>(uvs.max.x), static_cast<float>(uvs.max.y)};
    add(range, sizeof range);
    return dump + "|" + std::to_string(mesh.getDrawFlags()) + (mesh.getFlatShaded() ? "f" : "s");
}

/// A file with a packet of every kind the mesh packet types read: a mesh with every array,
/// then two half-edge meshes, a bowtie and a tetrahedron.
struct FileOfEveryPacket {
    FileOfEveryPacket() {
        // Short sequences keep the file small enough to cut at every byte.
        mesh->resizeTriStripArrays(5, 2);
        mesh->resizeLineStripArrays(4, 2);
        buildTopoMesh(halfEdge[0], bowtie());
        buildTopoMesh(halfEdge[1], tetrahedron());
        bytes = packetBytes([this](ioWriteContext& context) {
            koGeom::packetFile::writeMesh(context, mesh.get(), 1.0, true);
            halfEdge[0].writePF(context);
            halfEdge[1].writePF(context);
        });
    }
    ko::Reference<koGeom::CompactMesh> mesh = everyArrayMesh(12, 5, 11);
    koGeom::TopoMesh halfEdge[2];
    Bytes bytes;
};

} // namespace koGeomTest
