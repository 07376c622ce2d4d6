#include "geom/io/ReadInterface.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "crate/ioPacketType.h"

#include "tests/geom/io/MeshFileSupport.h"
#include "tests/support/MeshShapes.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;
using koGeomTest::MeshRead;
using koGeomTest::packetBytes;
using koGeomTest::readMeshes;

// A mesh header with every chunk up to `chunks` (1 to 6; 7 adds the sub-packet's second
// chunk). Chunk 2 names `renderInfo`.
struct Header {
    int vertices = 4;
    int triangles = 2;
    int chunks = 7;
    const void* renderInfo = nullptr;
    int drawFlags = 7;
    bool normals = false;
    int uvFloats = 4; // 0: no UVs
    bool flatShaded = true;
    bool colours = false;
    bool triNormals = false;
    int sequences[8] = {1, 3, 1, 0, 0, 0, 0, 0}; // strips (1, 3 points), fans (1, none)
    bool sts = false;
};

void writeHeader(ioWriteContext& context, const Header& h) {
    context.startPacket("ko.tz.mesh");
    context.writeInt(h.vertices);
    context.writeInt(h.triangles);
    const float range[5] = {0.25f, -1.0f, 2.0f, 3.5f, 9.0f};
    for (int chunk = 2; chunk <= std::min(h.chunks, 6); ++chunk) {
        context.nextChunk();
        if (chunk == 2) {
            context.writePointer(h.renderInfo);
        } else if (chunk == 3) {
            context.writeInt(h.drawFlags);
            context.writeBool(h.normals);
        } else if (chunk == 4) {
            context.writeBool(h.uvFloats != 0);
            if (h.uvFloats != 0) {
                context.writeFloatArray(range, static_cast<std::size_t>(h.uvFloats));
            }
        } else if (chunk == 5) {
            context.writeBool(h.flatShaded);
        } else {
            context.startSubPacket();
            context.writeBool(h.colours);
            context.writeBool(h.triNormals);
            for (const int count : h.sequences) {
                context.writeInt(count);
            }
            if (h.chunks == 7) {
                context.nextChunk();
                context.writeBool(h.sts);
            }
            context.endSubPacket();
        }
    }
    context.endPacket();
}

// A data packet "ko.tz.mesh.<type>": the null mesh pointer, the attribute name when given, the
// integer fields, then an array of `values` floats (or integers) 1, 2, 3, ...
void writeData(ioWriteContext& context, const char* type, const std::vector<int>& fields,
               int values, bool integers = false, const char* name = nullptr) {
    context.startPacket(std::string("ko.tz.mesh.") + type);
    context.writeNullPointer();
    if (name != nullptr) {
        context.writeString(name);
    }
    for (const int field : fields) {
        context.writeInt(field);
    }
    std::vector<int> ints(static_cast<std::size_t>(values));
    std::vector<float> floats(ints.size());
    for (std::size_t i = 0; i < ints.size(); ++i) {
        ints[i] = static_cast<int>(i) + 1;
        floats[i] = static_cast<float>(i) + 1.0f;
    }
    if (integers) {
        context.writeIntArray(ints.data(), ints.size());
    } else {
        context.writeFloatArray(floats.data(), floats.size());
    }
    context.endPacket();
}

// A packet no reader knows: bytes that the arrays of a mesh may count on.
void writePadding(ioWriteContext& context, std::size_t bytes) {
    const std::vector<std::uint8_t> zeros(bytes);
    context.startPacket("test.padding");
    context.writeByteArray(zeros.data(), zeros.size());
    context.endPacket();
}

struct BadPacket {
    const char* type;
    const char* name;
    std::vector<int> fields;
    int values;
    bool integers;
    const char* reason;
};

TEST(ReadInterface, RejectsEveryDataPacketThatDoesNotFitItsArray) {
    const BadPacket cases[] = {
        {"vertices", nullptr, {-1, 1}, 3, false, "vertices -1 to 0 outside the mesh's 4"},
        {"vertices", nullptr, {3, 2}, 6, false, "vertices 3 to 5 outside the mesh's 4"},
        {"vertices", nullptr, {1, -1}, 0, false, "vertices 1 to 0 outside the mesh's 4"},
        {"vertices", nullptr, {0, 2}, 5, false, "5 values for 2 vertices of 3 each"},
        {"uvs", nullptr, {0, 4}, 7, false, "7 values for 4 UVs of 2 each"},
        {"normals", nullptr, {0, 1}, 3, false, "the mesh has no normals"},
        {"colours", nullptr, {0, 1}, 4, false, "the mesh has no colours"},
        {"sts", nullptr, {0, 1}, 2, false, "the mesh has no STs"},
        {"trinormals", nullptr, {0, 1}, 3, false, "the mesh has no triangle normals"},
        {"triangles", nullptr, {1, 2}, 6, true, "triangles 1 to 3 outside the mesh's 2"},
        {"seqarray", nullptr, {0, 0, 2, 2}, 2, true, "sequence points 2 to 4 outside the mesh's 3"},
        {"seqarray", nullptr, {1, 1, 0, 1}, 1, true, "the mesh has no sequence lengths"},
        {"attributes",
         "weight",
         {3, 0, 1},
         3,
         false,
         "attribute of 3 floats where the mesh has one of 2"},
        {"attributes", "big", {5, 0, 1}, 5, false, "attribute of 5 floats per vertex"},
        {"attributes", "none", {0, 0, 1}, 0, false, "attribute of 0 floats per vertex"},
        {"attributes",
         "normals",
         {2, 0, 1},
         2,
         false,
         "the mesh cannot make an attribute of 2 floats"},
        {"attributes",
         "weight",
         {2, 3, 2},
         4,
         false,
         "attribute values 3 to 5 outside the mesh's 4"},
    };
    for (const BadPacket& bad : cases) {
        SCOPED_TRACE(bad.reason);
        const MeshRead read = readMeshes(packetBytes([&](ioWriteContext& context) {
            writeHeader(context, Header());
            writeData(context, "vertices", {0, 4}, 12);
            writeData(context, "attributes", {2, 0, 4}, 8, false, "weight");
            writeData(context, bad.type, bad.fields, bad.values, bad.integers, bad.name);
        }));
        ASSERT_TRUE(read.ok && read.mesh);
        EXPECT_EQ(read.invalid, std::vector<std::string>{bad.reason});
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
    const MeshRead read = readMeshes(packetBytes([&](ioWriteContext& context) {
        writeData(context, "vertices", {0, 1}, 3);
        writeHeader(context, shortRange);
        writeData(context, "vertices", {0, 1}, 3);
    }));
    EXPECT_TRUE(read.ok && !read.mesh);
    EXPECT_EQ(read.invalid, (std::vector<std::string>{"no mesh header before this data packet",
                                                      "mesh header: UV range is not four floats",
                                                      "no mesh header before this data packet"}));
}

TEST(ReadInterface, CountsAreTrustedOnlyAsFarAsTheFileCouldFillThem) {
    const std::string tooLarge = "more than the file holds";
    Header absurd;
    absurd.vertices = INT_MAX;
    MeshRead read = readMeshes(packetBytes([&](ioWriteContext& context) {
        writeHeader(context, absurd);
        writeData(context, "vertices", {0, 1}, 3);
    }));
    EXPECT_TRUE(read.ok && !read.mesh);
    ASSERT_EQ(read.invalid.size(), 2u);
    EXPECT_NE(read.invalid[0].find(tooLarge), std::string::npos) << read.invalid[0];

    // Each header alone could be filled by the padding after it; both together could not.
    Header half;
    half.vertices = 1000; // 12,000 bytes of positions and no other array
    half.triangles = 0;
    half.uvFloats = 0;
    half.sequences[0] = 0;
    read = readMeshes(packetBytes([&](ioWriteContext& context) {
        writeHeader(context, half);
        writeHeader(context, half);
        writePadding(context, 12000);
    }));
    EXPECT_TRUE(read.ok && read.mesh);
    ASSERT_EQ(read.invalid.size(), 1u);
    EXPECT_NE(read.invalid[0].find(tooLarge), std::string::npos) << read.invalid[0];

    // A new attribute counts too: 1000 vertices of four floats need 16,000 more bytes.
    read = readMeshes(packetBytes([&](ioWriteContext& context) {
        writeHeader(context, half);
        writeData(context, "vertices", {0, 1000}, 3000);
        writeData(context, "attributes", {4, 0, 1}, 4, false, "tint");
    }));
    EXPECT_TRUE(read.ok && read.mesh && read.mesh->getAttributes("tint") == nullptr);
    EXPECT_EQ(read.invalid,
              std::vector<std::string>{"attribute needs more bytes of data than the file holds"});
}

TEST(ReadInterface, UnknownSequenceOrArrayKindsAreSkippedUnread) {
    const MeshRead read = readMeshes(packetBytes([&](ioWriteContext& context) {
        writeHeader(context, Header());
        writeData(context, "seqarray", {0, 0, 0, 3}, 3, true);
        writeData(context, "seqarray", {4, 0, 0, 3}, 3, true);
        writeData(context, "seqarray", {0, 2, 0, 3}, 3, true);
        writeData(context, "seqarray", {-1, 1, 0, 1}, 1, true);
    }));
    ASSERT_TRUE(read.ok && read.mesh && read.invalid.empty());
    EXPECT_EQ(std::vector<int>(read.mesh->getTriStripPoints(), read.mesh->getTriStripPoints() + 3),
              (std::vector<int>{1, 2, 3}));
}

TEST(ReadInterface, IgnoredMeshesMarkTheirHeadersAndSkipTheirData) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::fillEveryArray(*mesh, 1500, 4, 5);
    const MeshRead read = readMeshes(koGeomTest::meshBytes(*mesh), true);
    EXPECT_TRUE(read.ok && !read.mesh);
    EXPECT_EQ(read.invalid, std::vector<std::string>{"mesh packets are ignored"});
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
        const Bytes bytes = packetBytes([&](ioWriteContext& context) {
            context.startPacket("test.render", &renderObject);
            context.endPacket();
            writeHeader(context, header);
            writePadding(context, 400);
        });
        ioReadContext context(bytes.data(), bytes.size());
        ReadInterface reader(context);
        ioPacketRegistry registry;
        registerTypes(&registry, &reader);
        registry.supportedType(new RenderInfoType(&renderObject));
        ASSERT_TRUE(reader.read(registry));
        ko::Reference<CompactMesh> mesh(reader.getLastMesh(true));
        ASSERT_TRUE(mesh);
        EXPECT_EQ(mesh->getNumVertices(), 4);
        EXPECT_EQ(mesh->getNumTriangles(), 2);
        EXPECT_EQ(mesh->getRenderInfo(), chunks >= 2 ? &renderObject : nullptr);
        EXPECT_EQ(mesh->getDrawFlags(), chunks >= 3 ? 7 : 0);
        EXPECT_EQ(mesh->getNormalsAttr() != nullptr, chunks >= 3);
        EXPECT_EQ(mesh->getUVsAttr() != nullptr, chunks >= 4);
        if (chunks >= 4) {
            const koLinear::Range2d range = mesh->getUVRange();
            EXPECT_TRUE(range.min == koLinear::Point2(0.25, -1.0) &&
                        range.max == koLinear::Point2(2.0, 3.5));
        }
        EXPECT_EQ(mesh->getFlatShaded(), chunks >= 5);
        EXPECT_EQ(mesh->getColoursAttr() != nullptr, chunks >= 6);
        EXPECT_EQ(mesh->getTriangleNormals() != nullptr, chunks >= 6);
        EXPECT_EQ(mesh->getNumTriStrips() + mesh->getNumTriStripPoints(), chunks >= 6 ? 4 : 0);
        EXPECT_EQ(mesh->getNumTriFans(), 0); // one fan of no points makes no fans
        EXPECT_EQ(mesh->getSTsAttr() != nullptr, chunks >= 7);
    }
}

TEST(ReadInterface, APacketHandedOverThroughAnotherContextIsNotRead) {
    const Bytes bytes = packetBytes([&](ioWriteContext& context) { writeHeader(context, {}); });
    ioReadContext mine(bytes.data(), bytes.size());
    ioReadContext other(bytes.data(), bytes.size());
    ReadInterface reader(mine);
    ioPacketRegistry registry;
    registerTypes(&registry, &reader);
    EXPECT_TRUE(other.readAll(registry));
    EXPECT_EQ(reader.getLastMesh(false), nullptr);
    ASSERT_EQ(other.invalidPackets().size(), 1u);
    EXPECT_EQ(other.invalidPackets()[0].message,
              "mesh packet read through a context its reader does not read");
}

// Reads damaged or hostile bytes: the read ends, either accepted or with its faults reported.
void readSafely(const Bytes& bytes) {
    const MeshRead read = readMeshes(bytes);
    if (read.ok && read.invalid.empty() && read.mesh) {
        EXPECT_GE(read.mesh->getNumVertices(), 0);
    }
}

TEST(ReadInterface, SurvivesEveryTruncationAndThousandsOfDamagedBytes) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::fillEveryArray(*mesh, 12, 5, 11);
    const Bytes bytes = koGeomTest::meshBytes(*mesh);
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        readSafely(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    std::mt19937 random(2024);
    for (int i = 0; i < 6000; ++i) {
        Bytes damaged = bytes;
        const std::size_t at = random() % damaged.size();
        if (i % 2 == 0) {
            damaged[at] ^= static_cast<std::uint8_t>(1u << (random() % 8));
        } else {
            damaged[at] = static_cast<std::uint8_t>(random());
        }
        readSafely(damaged);
    }
}

TEST(ReadInterface, SurvivesWellFramedPacketsWithHostileFields) {
    // Checksums catch damaged bytes; these packets are framed correctly and carry random
    // counts, starts, sizes and kinds, so every check of the reader is what stands.
    const char* types[] = {"vertices",  "normals",    "uvs",      "sts",       "colours",
                           "triangles", "trinormals", "seqarray", "attributes"};
    std::mt19937 random(99);
    const auto small = [&random] { return static_cast<int>(random() % 14) - 3; };
    for (int file = 0; file < 1500; ++file) {
        readSafely(packetBytes([&](ioWriteContext& context) {
            Header header;
            header.vertices = small();
            header.triangles = small();
            header.normals = random() % 2;
            header.uvFloats = random() % 2 ? 4 : 0;
            header.colours = random() % 2;
            header.triNormals = random() % 2;
            header.sts = random() % 2;
            for (int& count : header.sequences) {
                count = small();
            }
            writeHeader(context, header);
            for (int packet = 0; packet < 12; ++packet) {
                const int kind = static_cast<int>(random() % 9);
                const bool attribute = kind == 8;
                std::vector<int> fields(kind == 7 ? 4 : attribute ? 3 : 2);
                for (int& field : fields) {
                    field = small();
                }
                writeData(context, types[kind], fields, small() + 3, kind == 5 || kind == 7,
                          attribute ? "w" : nullptr);
            }
            writePadding(context, 200);
        }));
    }
}

} // namespace
} // namespace koGeom::packetFile
