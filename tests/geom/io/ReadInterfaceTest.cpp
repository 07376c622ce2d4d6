#include "geom/io/ReadInterface.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "crate/ioPacketType.h"

#include "fuzz/support/PacketSeals.h"
#include "tests/geom/io/MeshFileSupport.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;
using koGeomTest::MeshRead;
using koGeomTest::packetBytes;
using koGeomTest::readMeshes;
using Strings = std::vector<std::string>;

// A mesh header with its chunks up to `chunks` (1 to 6; 7 adds the sub-packet's second).
struct Header {
    int vertices = 4;
    int triangles = 2;
    int chunks = 7;
    const void* renderInfo = nullptr;
    bool normals = false;
    int uvFloats = 4; // 0: no UVs
    bool colours = false;
    bool triNormals = false;
    int sequences[8] = {1, 3, 1, 0, 0, 0, 0, 0}; // a strip of 3 points; a fan of none
    bool sts = false;
};

void writeHeader(ioWriteContext& c, const Header& h) {
    const float range[5] = {0.25f, -1.0f, 2.0f, 3.5f, 9.0f};
    c.startPacket("ko.tz.mesh");
    c.writeInt(h.vertices);
    c.writeInt(h.triangles);
    for (int chunk = 2; chunk <= std::min(h.chunks, 6); ++chunk) {
        c.nextChunk();
        if (chunk == 2) {
            c.writePointer(h.renderInfo);
        } else if (chunk == 3) {
            c.writeInt(7); // draw flags
            c.writeBool(h.normals);
        } else if (chunk == 4) {
            c.writeBool(h.uvFloats != 0);
            if (h.uvFloats != 0) {
                c.writeFloatArray(range, static_cast<std::size_t>(h.uvFloats));
            }
        } else if (chunk == 5) {
            c.writeBool(true); // flat shaded
        } else {
            c.startSubPacket();
            c.writeBool(h.colours);
            c.writeBool(h.triNormals);
            for (const int count : h.sequences) {
                c.writeInt(count);
            }
            if (h.chunks == 7) {
                c.nextChunk();
                c.writeBool(h.sts);
            }
            c.endSubPacket();
        }
    }
    c.endPacket();
}

// A data packet "ko.tz.mesh.<type>": the null mesh pointer, the attribute name when given, the
// integer fields, then an array of `values` floats (or integers) counting 1, 2, 3, ...
void writeData(ioWriteContext& c, const char* type, const std::vector<int>& fields, int values,
               bool integers = false, const char* name = nullptr) {
    c.startPacket(std::string("ko.tz.mesh.") + type);
    c.writeNullPointer();
    if (name != nullptr) {
        c.writeString(name);
    }
    for (const int field : fields) {
        c.writeInt(field);
    }
    std::vector<int> ints(static_cast<std::size_t>(std::max(values, 0)));
    std::iota(ints.begin(), ints.end(), 1);
    const std::vector<float> floats(ints.begin(), ints.end());
    if (integers) {
        c.writeIntArray(ints.data(), ints.size());
    } else {
        c.writeFloatArray(floats.data(), floats.size());
    }
    c.endPacket();
}

// A packet no reader knows: bytes that a mesh's arrays may count on.
void writePadding(ioWriteContext& c, std::size_t bytes) {
    const std::vector<std::uint8_t> zeros(bytes);
    c.startPacket("test.padding");
    c.writeByteArray(zeros.data(), zeros.size());
    c.endPacket();
}

struct BadPacket {
    const char* type;
    const char* name;
    std::vector<int> fields;
    int values;
    const char* reason;
};

TEST(ReadInterface, RejectsEveryDataPacketThatDoesNotFitItsArray) {
    const BadPacket cases[] = {
        {"vertices", nullptr, {-1, 1}, 3, "vertices -1 to 0 outside the mesh's 4"},
        {"vertices", nullptr, {3, 2}, 6, "vertices 3 to 5 outside the mesh's 4"},
        {"vertices", nullptr, {1, -1}, 0, "vertices 1 to 0 outside the mesh's 4"},
        {"vertices", nullptr, {0, 2}, 5, "5 values for 2 vertices of 3 each"},
        {"uvs", nullptr, {0, 4}, 7, "7 values for 4 UVs of 2 each"},
        {"normals", nullptr, {0, 1}, 3, "the mesh has no normals"},
        {"colours", nullptr, {0, 1}, 4, "the mesh has no colours"},
        {"sts", nullptr, {0, 1}, 2, "the mesh has no STs"},
        {"trinormals", nullptr, {0, 1}, 3, "the mesh has no triangle normals"},
        {"triangles", nullptr, {1, 2}, 6, "triangles 1 to 3 outside the mesh's 2"},
        {"seqarray", nullptr, {0, 0, 2, 2}, 2, "sequence points 2 to 4 outside the mesh's 3"},
        {"seqarray", nullptr, {1, 1, 0, 1}, 1, "the mesh has no sequence lengths"},
        {"seqarray", nullptr, {4, 0, 0, 3}, 3, nullptr}, // unknown kinds: skipped unread
        {"seqarray", nullptr, {0, 2, 0, 3}, 3, nullptr},
        {"attributes", "weight", {3, 0, 1}, 3, "attribute of 3 floats where the mesh has one of 2"},
        {"attributes", "big", {5, 0, 1}, 5, "attribute of 5 floats per vertex"},
        {"attributes", "none", {0, 0, 1}, 0, "attribute of 0 floats per vertex"},
        {"attributes", "normals", {2, 0, 1}, 2, "the mesh cannot make an attribute of 2 floats"},
        {"attributes", "weight", {2, 3, 2}, 4, "attribute values 3 to 5 outside the mesh's 4"},
    };
    for (const BadPacket& bad : cases) {
        SCOPED_TRACE(testing::Message() << bad.type << " " << bad.fields[0]);
        const MeshRead read = readMeshes(packetBytes([&](ioWriteContext& c) {
            writeHeader(c, Header());
            writeData(c, "vertices", {0, 4}, 12);
            writeData(c, "attributes", {2, 0, 4}, 8, false, "weight");
            const bool integers = bad.type == std::string("triangles") || bad.fields.size() == 4;
            writeData(c, bad.type, bad.fields, bad.values, integers, bad.name);
        }));
        ASSERT_TRUE(read.ok && read.mesh);
        EXPECT_EQ(read.invalid, bad.reason ? Strings{bad.reason} : Strings{});
        // Nothing was written: the vertices and the weights still count 1 to 12 and 1 to 8.
        const float* vertices = read.mesh->getVerticesRaw();
        const float* weights = read.mesh->getAttributes("weight")->asFloat();
        for (int i = 0; i < 12; ++i) {
            EXPECT_TRUE(vertices[i] == i + 1.0f && (i >= 8 || weights[i] == i + 1.0f));
        }
    }
}

TEST(ReadInterface, DataWithoutAnAcceptedHeaderGoesNowhere) {
    Header shortRange;
    shortRange.uvFloats = 3;
    const MeshRead read = readMeshes(packetBytes([&](ioWriteContext& c) {
        writeData(c, "vertices", {0, 1}, 3);
        writeHeader(c, shortRange);
        writeData(c, "vertices", {0, 1}, 3);
    }));
    const std::string none = "no mesh header before this data packet";
    EXPECT_TRUE(read.ok && !read.mesh);
    EXPECT_EQ(read.invalid, (Strings{none, "mesh header: UV range is not four floats", none}));
}

TEST(ReadInterface, CountsAreTrustedOnlyAsFarAsTheFileCouldFillThem) {
    const std::string tooMuch = "more than the file holds";
    for (const int vertices : {INT_MIN, INT_MAX, 100000000}) {
        Header absurd;
        absurd.vertices = vertices;
        const MeshRead read =
            readMeshes(packetBytes([&](ioWriteContext& c) { writeHeader(c, absurd); }));
        ASSERT_TRUE(read.ok && !read.mesh && read.invalid.size() == 1u);
        EXPECT_NE(read.invalid[0].find(vertices == 100000000 ? tooMuch : "out of range"),
                  std::string::npos)
            << read.invalid[0];
    }
    // Each header alone could be filled by the padding after it; both together could not.
    Header positions; // 1000 vertices: 12,000 bytes of positions and no other array
    positions.vertices = 1000;
    positions.triangles = positions.uvFloats = positions.sequences[0] = 0;
    MeshRead read = readMeshes(packetBytes([&](ioWriteContext& c) {
        writeHeader(c, positions);
        writeHeader(c, positions);
        writePadding(c, 12000);
    }));
    ASSERT_TRUE(read.ok && read.mesh && read.invalid.size() == 1u);
    EXPECT_NE(read.invalid[0].find(tooMuch), std::string::npos) << read.invalid[0];

    // A new attribute counts too: 1000 vertices of four floats need 16,000 more bytes.
    read = readMeshes(packetBytes([&](ioWriteContext& c) {
        writeHeader(c, positions);
        writeData(c, "vertices", {0, 1000}, 3000);
        writeData(c, "attributes", {4, 0, 1}, 4, false, "tint");
    }));
    EXPECT_TRUE(read.ok && read.mesh && !read.mesh->getAttributes("tint"));
    EXPECT_EQ(read.invalid, Strings{"attribute needs more bytes of data than the file holds"});
}

// Defines the object of each "test.render" packet as `object`.
struct RenderInfoType : ioPacketType {
    explicit RenderInfoType(int* object) : ioPacketType("test.render"), object(object) {}
    bool readPacket(ioReadContext& context) override {
        context.defineReference(context.getPacketReference(), object, 77);
        return true;
    }
    int* object;
};

TEST(ReadInterface, ShortHeadersReadWithTheDefaultsOfTheirMissingChunks) {
    int renderObject = 0;
    for (int chunks = 1; chunks <= 7; ++chunks) {
        SCOPED_TRACE(chunks);
        Header header;
        header.chunks = chunks;
        header.renderInfo = &renderObject;
        header.normals = header.colours = header.triNormals = header.sts = true;
        const Bytes bytes = packetBytes([&](ioWriteContext& c) {
            c.startPacket("test.render", &renderObject);
            c.endPacket();
            writeHeader(c, header);
            writePadding(c, 400);
        });
        const MeshRead read = readMeshes(bytes, {.otherType = new RenderInfoType(&renderObject)});
        const CompactMesh* mesh = read.mesh.get();
        ASSERT_TRUE(read.ok && mesh && mesh->getNumVertices() == 4 && mesh->getNumTriangles() == 2);
        EXPECT_EQ(mesh->getRenderInfo(), chunks >= 2 ? &renderObject : nullptr);
        EXPECT_EQ(mesh->getDrawFlags(), chunks >= 3 ? 7 : 0);
        EXPECT_EQ(!!mesh->getNormalsAttr(), chunks >= 3);
        EXPECT_EQ(!!mesh->getUVsAttr(), chunks >= 4);
        if (chunks >= 4) {
            const koLinear::Range2d range = mesh->getUVRange();
            EXPECT_TRUE(range.min == koLinear::Point2(0.25, -1.0) &&
                        range.max == koLinear::Point2(2.0, 3.5));
        }
        EXPECT_EQ(mesh->getFlatShaded(), chunks >= 5);
        EXPECT_EQ(!!mesh->getColoursAttr() + !!mesh->getTriangleNormals(), chunks >= 6 ? 2 : 0);
        EXPECT_EQ(mesh->getNumTriStrips() + mesh->getNumTriStripPoints(), chunks >= 6 ? 4 : 0);
        EXPECT_EQ(mesh->getNumTriFans(), 0); // one fan of no points makes no fans
        EXPECT_EQ(!!mesh->getSTsAttr(), chunks >= 7);
    }
}

TEST(ReadInterface, APacketHandedOverThroughAnotherContextIsNotRead) {
    const Bytes bytes = packetBytes([&](ioWriteContext& c) { writeHeader(c, {}); });
    ioReadContext mine(bytes.data(), bytes.size());
    ioReadContext other(bytes.data(), bytes.size());
    ReadInterface reader(mine);
    ioPacketRegistry registry;
    registerTypes(&registry, &reader);
    EXPECT_TRUE(other.readAll(registry));
    ASSERT_EQ(other.invalidPackets().size(), 1u);
    EXPECT_EQ(other.invalidPackets()[0].message,
              "mesh packet read through a context its reader does not read");
}

// Every cut of a file of every packet reads cleanly, never with both half-edge meshes whole;
// bit flips and overwrites, most of them resealed so that the damage passes the checksum and
// meets the readers' own checks, never upset them.
TEST(ReadInterface, SurvivesEveryTruncationAndThousandsOfDamagedBytes) {
    const Bytes bytes = koGeomTest::FileOfEveryPacket().bytes;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const MeshRead read =
            readMeshes(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
        EXPECT_TRUE(!read.ok || !read.invalid.empty() || read.halfEdgeMeshes.size() < 2) << size;
    }
    std::mt19937 random(2024);
    int accepted = 0;
    for (int i = 0; i < 3000; ++i) {
        Bytes damaged = bytes;
        std::uint8_t& byte = damaged[16 + random() % (damaged.size() - 16)];
        byte = i % 2 == 0 ? static_cast<std::uint8_t>(random()) : byte ^ (1u << (random() % 8));
        if (i % 4 != 0) {
            formworkFuzz::resealPackets(damaged);
        }
        const MeshRead read = readMeshes(damaged);
        accepted += read.ok && read.invalid.empty() ? 1 : 0;
    }
    EXPECT_GT(accepted, 0);
}

} // namespace
} // namespace koGeom::packetFile
