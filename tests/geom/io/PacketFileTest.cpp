#include "geom/io/PacketFile.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "crate/ioPacketWalker.h"

#include "geom/entity/ActiveEntities.h"
#include "tests/geom/io/MeshFileSupport.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;
using koGeomTest::meshBytes;
using koGeomTest::readMeshes;

// Each packet of a file as the generic walker sees it: the type's last word, then every value
// (numbers; strings; arrays as [count]), " |" between chunks and braces round sub-packets.
struct PacketTokens : ioPacketVisitor {
    std::vector<std::vector<std::string>> packets;
    void startPacket(const Packet& packet) override {
        const std::string_view name = packet.typeName;
        packets.push_back({std::string(name.substr(name.find_last_of('.') + 1)),
                           std::to_string(packet.objectReference)});
    }
    void startChunk(const Chunk& chunk) override { add(chunk.index > 0 ? "|" : ""); }
    void value(const Value& value) override {
        add(value.kind == ioValueKind::string ? std::string(value.text)
            : ioValueKindIsArray(value.kind)  ? "[" + std::to_string(value.count) + "]"
                                              : std::to_string(value.integer));
    }
    void startSubPacket(std::uint64_t) override { add("{"); }
    void endSubPacket() override { add("}"); }
    void add(const std::string& token) {
        if (!token.empty()) {
            packets.back().push_back(token);
        }
    }
};

// The header's values on one line, then the data packets one line per run of one kind (the
// fields before start and count), each packet as start+count:[values]. Adds the header's
// object and every data packet's mesh pointer field to `references`.
std::string listing(const Bytes& bytes, std::vector<int>& references) {
    ioReadContext context(bytes.data(), bytes.size());
    PacketTokens tokens;
    EXPECT_TRUE(walkPacketFile(context, tokens)) << context.error().toString();
    std::string text;
    std::string last;
    for (const std::vector<std::string>& packet : tokens.packets) {
        const bool header = packet[0] == "mesh";
        references.push_back(std::stoi(packet[header ? 1 : 2]));
        std::string key = header ? "header" : packet[0];
        for (std::size_t i = header ? 2 : 3; i < packet.size() - (header ? 0 : 3); ++i) {
            key += " " + packet[i];
        }
        if (key != last || header) {
            text += (text.empty() ? "" : "\n") + key;
            last = key;
        }
        if (!header) {
            const std::size_t end = packet.size();
            text += " " + packet[end - 3] + "+" + packet[end - 2] + ":" + packet[end - 1];
        }
    }
    return text + "\n";
}

// Deliberate: the reader's attribute lines print as "size" the mesh's number of triangles,
// not the attribute's size.
TEST(PacketFile, WritesEveryArrayInBlocksLogsItsAttributesAndReadsItBackBitForBit) {
    const auto mesh = koGeomTest::everyArrayMesh(2500, 1001, 7);
    for (const bool references : {true, false}) {
        SCOPED_TRACE(references);
        std::string writtenLines;
        const Bytes bytes = koGeomTest::packetBytes(
            [&](ioWriteContext& context) { writeMesh(context, mesh.get(), 1.0, references); },
            &writtenLines);
        std::vector<int> named;
        EXPECT_EQ(listing(bytes, named),
                  "header 2500 1001 | 0 | 23130 1 | 1 [4] | 0 | { 1 1 2 1000 1 3 2 1001 1 4 | 1 }\n"
                  "vertices 0+1000:[3000] 1000+1000:[3000] 2000+500:[1500]\n"
                  "triangles 0+1000:[3000] 1000+1:[3]\n"
                  "normals 0+1000:[3000] 1000+1000:[3000] 2000+500:[1500]\n"
                  "uvs 0+1000:[2000] 1000+1000:[2000] 2000+500:[1000]\n"
                  "sts 0+1000:[2000] 1000+1000:[2000] 2000+500:[1000]\n"
                  "colours 0+1000:[4000] 1000+1000:[4000] 2000+500:[2000]\n"
                  "trinormals 0+1000:[3000] 1000+1:[3]\n"
                  "seqarray 0 0 0+1000:[1000]\nseqarray 0 1 0+2:[2]\n"
                  "seqarray 1 0 0+3:[3]\nseqarray 1 1 0+1:[1]\n"
                  "seqarray 2 0 0+1000:[1000] 1000+1:[1]\nseqarray 2 1 0+2:[2]\n"
                  "seqarray 3 0 0+4:[4]\nseqarray 3 1 0+1:[1]\n"
                  "attributes weight 1 0+1000:[1000] 1000+1000:[1000] 2000+500:[500]\n"
                  "attributes offset 2 0+1000:[2000] 1000+1000:[2000] 2000+500:[1000]\n"
                  "attributes tangent 3 0+1000:[3000] 1000+1000:[3000] 2000+500:[1500]\n"
                  "attributes tint 4 0+1000:[4000] 1000+1000:[4000] 2000+500:[2000]\n");
        // With references the header defines the mesh and every data packet names it; without,
        // the header defines nothing and the data packets carry the null pointer.
        EXPECT_EQ(named, std::vector<int>(41, references ? 1 : 0));
        const koGeomTest::MeshRead read = readMeshes(bytes);
        ASSERT_TRUE(read.ok && read.invalid.empty() && read.mesh);
        EXPECT_TRUE(koGeomTest::meshDump(*read.mesh) == koGeomTest::meshDump(*mesh));
        std::string expectWritten;
        std::string expectRead;
        for (const char* name : {"weight", "offset", "tangent", "tint"}) {
            for (const int start : {0, 1000, 2000}) {
                const int length = start == 2000 ? 500 : 1000;
                expectWritten += koString::CString::format(
                                     "mesh = %p, attrib = %s, start = %d, length = %d\n",
                                     static_cast<const void*>(mesh.get()), name, start, length)
                                     .view();
                expectRead +=
                    koString::CString::format(
                        "m_mesh = %p, size = 1001, attrib = %s, start = %d, length = %d\n",
                        static_cast<const void*>(read.mesh.get()), name, start, length)
                        .view();
            }
        }
        EXPECT_EQ(writtenLines, expectWritten);
        EXPECT_EQ(read.log, expectRead);
    }
    // A scale multiplies the positions by itself rounded to float (0.1 in double would give
    // other bits) and changes nothing else, not even the mesh written.
    const std::string unscaled = koGeomTest::meshDump(*mesh);
    const koGeomTest::MeshRead read = readMeshes(meshBytes(*mesh, 0.1));
    ASSERT_TRUE(read.mesh);
    EXPECT_TRUE(koGeomTest::meshDump(*mesh) == unscaled);
    for (int i = 0; i < 3 * mesh->getNumVertices(); ++i) {
        mesh->getVerticesRaw()[i] *= 0.1f;
    }
    EXPECT_TRUE(koGeomTest::meshDump(*read.mesh) == koGeomTest::meshDump(*mesh));
}

TEST(PacketFile, RegisteredTypesReadAFileOfEveryPacketWholeOrIgnoreItsMeshes) {
    const koGeomTest::FileOfEveryPacket file;
    const koGeomTest::MeshRead read = readMeshes(file.bytes);
    ASSERT_TRUE(read.ok && read.invalid.empty() && read.mesh);
    EXPECT_TRUE(koGeomTest::meshDump(*read.mesh) == koGeomTest::meshDump(*file.mesh));
    ASSERT_EQ(read.halfEdgeMeshes.size(), 2u);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(koGeomTest::pictureOf(*read.halfEdgeMeshes[i]),
                  koGeomTest::pictureOf(file.halfEdge[i]));
    }
    // Ignored, the mesh's header is marked and its data packets are skipped unread.
    const koGeomTest::MeshRead ignored = readMeshes(file.bytes, {.ignoreMesh = true});
    EXPECT_TRUE(ignored.ok && !ignored.mesh && ignored.halfEdgeMeshes.size() == 2);
    EXPECT_EQ(ignored.invalid, std::vector<std::string>{"mesh packets are ignored"});
}

TEST(PacketFile, ComputedNormalsAndAMeshWithoutTrianglesWriteNoSuchPackets) {
    const MeshVertex vertices[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const MeshNormal normals[3] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    ko::Reference<CompactMesh> mesh(new CompactMesh(3, vertices, normals, nullptr, nullptr));
    mesh->setNormalsComputed(true);
    std::vector<int> named;
    const std::string header = "header 3 0 | 0 | 0 0 | 0 | 0 | { 0 0 0 0 0 0 0 0 0 0 | 0 }";
    EXPECT_EQ(listing(meshBytes(*mesh), named), header + "\nvertices 0+3:[9]\n");
    const int triangle[3] = {0, 1, 2};
    mesh->copyTriangles(1, triangle);
    mesh->allocTriangleNormalArray(); // marked computed since the mesh was made
    // The triangle normals make the mesh flat shaded by default: the header says so.
    EXPECT_EQ(listing(meshBytes(*mesh), named),
              "header 3 1 | 0 | 0 0 | 0 | 1 | { 0 0 0 0 0 0 0 0 0 0 | 0 }\n"
              "vertices 0+3:[9]\ntriangles 0+1:[3]\n");
}

TEST(PacketFile, MeshesNobodyTookGoWithTheLastReaderUnlessReferenced) {
    const ko::Reference<CompactMesh> sources[3] = {koGeomTest::everyArrayMesh(5, 2, 1),
                                                   koGeomTest::everyArrayMesh(6, 1, 2),
                                                   koGeomTest::everyArrayMesh(7, 3, 3)};
    const Bytes bytes = koGeomTest::packetBytes([&](ioWriteContext& context) {
        for (const auto& source : sources) {
            writeMesh(context, source.get(), 1.0, true);
        }
    });
    testing::internal::CaptureStderr(); // the reader's attribute lines
    const int before = numberOfActiveEntities();
    ko::Reference<CompactMesh> held;
    {
        ioReadContext context(bytes.data(), bytes.size());
        std::optional<ReadInterface> copy;
        {
            ReadInterface reader(context);
            ioPacketRegistry registry;
            registerTypes(&registry, &reader);
            ASSERT_TRUE(reader.read(registry));
            held = static_cast<CompactMesh*>(context.getReferenceDefinition(1)); // the first
            // The third, lent and ended by its borrower, is forgotten by the reader.
            ko::Reference<CompactMesh>(reader.getLastMesh(false)).reset();
            EXPECT_EQ(reader.getLastMesh(false), nullptr);
            copy.emplace(reader);
        }
        // The second mesh, which nobody took or holds, lives while a copy of its reader does.
        EXPECT_EQ(numberOfActiveEntities(), before + 2);
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(numberOfActiveEntities(), before + 1);
    EXPECT_TRUE(koGeomTest::meshDump(*held) == koGeomTest::meshDump(*sources[0]));
    held.reset();
    EXPECT_EQ(numberOfActiveEntities(), before);
}

} // namespace
} // namespace koGeom::packetFile
