#include "geom/io/PacketFile.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "geom/entity/ActiveEntities.h"
#include "tests/geom/io/MeshFileSupport.h"
#include "tests/support/MeshShapes.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;
using koGeomTest::meshBytes;
using koGeomTest::readMeshes;

// The packets of a file, one line per run of packets of one kind: the short type name (and
// sequence and array kind, or attribute name and size), then start+count:values of each.
// `pointers` gets the mesh pointer field of every data packet, `header` the header's object.
std::string listing(const Bytes& bytes, std::vector<int>& pointers, int& header) {
    ioReadContext context(bytes.data(), bytes.size());
    std::string text;
    std::string last;
    while (context.nextPacket()) {
        std::string key(context.getPacketTypeName().substr(std::string("ko.tz.mesh").size()));
        if (key.empty()) {
            header = context.getPacketReference();
            text += last.empty() ? "header" : "\nheader";
            last = "header";
            continue;
        }
        key.erase(0, 1);
        pointers.push_back(context.readReferenceId());
        if (key == "seqarray") {
            key += " " + std::to_string(context.readInt());
            key += "/" + std::to_string(context.readInt());
        } else if (key == "attributes") {
            key += " " + context.readString();
            key += "/" + std::to_string(context.readInt());
        }
        if (key != last) {
            text += "\n" + key;
            last = key;
        }
        const int start = context.readInt();
        const int count = context.readInt();
        text += " " + std::to_string(start) + "+" + std::to_string(count) + ":" +
                std::to_string(context.peekArrayCount());
    }
    EXPECT_TRUE(context.ok()) << context.error().toString();
    return text + "\n";
}

TEST(PacketFile, WritesEveryArrayInBlocksAndReadsItBackBitForBit) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::fillEveryArray(*mesh, 2500, 1001, 7);
    for (const bool references : {true, false}) {
        SCOPED_TRACE(references);
        const Bytes bytes = meshBytes(*mesh, 1.0, references);
        std::vector<int> pointers;
        int header = -1;
        EXPECT_EQ(listing(bytes, pointers, header),
                  "header\n"
                  "vertices 0+1000:3000 1000+1000:3000 2000+500:1500\n"
                  "triangles 0+1000:3000 1000+1:3\n"
                  "normals 0+1000:3000 1000+1000:3000 2000+500:1500\n"
                  "uvs 0+1000:2000 1000+1000:2000 2000+500:1000\n"
                  "sts 0+1000:2000 1000+1000:2000 2000+500:1000\n"
                  "colours 0+1000:4000 1000+1000:4000 2000+500:2000\n"
                  "trinormals 0+1000:3000 1000+1:3\n"
                  "seqarray 0/0 0+1000:1000\n"
                  "seqarray 0/1 0+2:2\n"
                  "seqarray 1/0 0+3:3\n"
                  "seqarray 1/1 0+1:1\n"
                  "seqarray 2/0 0+1000:1000 1000+1:1\n"
                  "seqarray 2/1 0+2:2\n"
                  "seqarray 3/0 0+4:4\n"
                  "seqarray 3/1 0+1:1\n"
                  "attributes weight/1 0+1000:1000 1000+1000:1000 2000+500:500\n"
                  "attributes offset/2 0+1000:2000 1000+1000:2000 2000+500:1000\n"
                  "attributes tangent/3 0+1000:3000 1000+1000:3000 2000+500:1500\n"
                  "attributes tint/4 0+1000:4000 1000+1000:4000 2000+500:2000\n");
        // With references the header defines the mesh and every data packet names it; without,
        // the header defines nothing and the data packets carry the null pointer.
        EXPECT_EQ(header != 0, references);
        EXPECT_EQ(pointers, std::vector<int>(40, references ? header : 0));

        const koGeomTest::MeshRead read = readMeshes(bytes);
        ASSERT_TRUE(read.ok && read.invalid.empty() && read.mesh);
        koGeomTest::expectSameMesh(*mesh, *read.mesh);
    }
}

TEST(PacketFile, ScaleMultipliesThePositionsAsFloatAndNothingElse) {
    const MeshVertex vertices[2] = {{1.0f, -2.5f, 0.3f}, {7.0f, 1e-3f, -0.0f}};
    const MeshNormal normals[2] = {{0.0f, 0.6f, 0.8f}, {1.0f, 0.0f, 0.0f}};
    ko::Reference<CompactMesh> mesh(new CompactMesh(2, vertices, normals, nullptr, nullptr));
    for (const double scale : {2.0, 0.1}) {
        const koGeomTest::MeshRead read = readMeshes(meshBytes(*mesh, scale));
        ASSERT_TRUE(read.mesh);
        for (int i = 0; i < 2; ++i) {
            // The scale is rounded to float first: 0.1 in double would give other bits.
            const float factor = static_cast<float>(scale);
            const MeshVertex scaled{vertices[i].x * factor, vertices[i].y * factor,
                                    vertices[i].z * factor};
            EXPECT_EQ(read.mesh->getVertices()[i], scaled);
            EXPECT_EQ(read.mesh->getNormals()[i], normals[i]);
            EXPECT_EQ(mesh->getVertices()[i], vertices[i]);
        }
    }
}

TEST(PacketFile, ComputedNormalsAndAMeshWithoutTrianglesWriteNoSuchPackets) {
    const MeshVertex vertices[3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    const MeshNormal normals[3] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}};
    ko::Reference<CompactMesh> mesh(new CompactMesh(3, vertices, normals, nullptr, nullptr));
    mesh->setNormalsComputed(true);
    std::vector<int> pointers;
    int header = 0;
    EXPECT_EQ(listing(meshBytes(*mesh), pointers, header), "header\nvertices 0+3:9\n");
    const int triangle[3] = {0, 1, 2};
    mesh->copyTriangles(1, triangle);
    mesh->allocTriangleNormalArray(); // marked computed since the mesh was made
    EXPECT_EQ(listing(meshBytes(*mesh), pointers, header),
              "header\nvertices 0+3:9\ntriangles 0+1:3\n");

    const koGeomTest::MeshRead read = readMeshes(meshBytes(*mesh));
    ASSERT_TRUE(read.mesh);
    EXPECT_TRUE(read.mesh->getNormalsAttr() == nullptr &&
                read.mesh->getTriangleNormals() == nullptr);
    EXPECT_EQ(read.mesh->getNumTriangles(), 1);
}

TEST(PacketFile, AttributeLinesGoToStandardErrorDeliberatelyWithTheTriangleCountAsSize) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::fillEveryArray(*mesh, 1200, 3, 1);
    testing::internal::CaptureStderr();
    const Bytes bytes = koGeomTest::packetBytes(
        [&](ioWriteContext& context) { writeMesh(context, mesh.get(), 1.0, true); });
    const std::string written = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    const koGeomTest::MeshRead read = readMeshes(bytes, false, false);
    const std::string readLines = testing::internal::GetCapturedStderr();
    ASSERT_TRUE(read.mesh);

    std::string expectWritten;
    std::string expectRead;
    for (const char* name : {"weight", "offset", "tangent", "tint"}) {
        for (const int start : {0, 1000}) {
            const int length = start == 0 ? 1000 : 200;
            expectWritten +=
                koString::CString::format("mesh = %p, attrib = %s, start = %d, length = %d\n",
                                          static_cast<const void*>(mesh.get()), name, start, length)
                    .view();
            // Deliberate: "size" is the mesh's number of triangles (3), not the attribute's.
            expectRead += koString::CString::format(
                              "m_mesh = %p, size = 3, attrib = %s, start = %d, length = %d\n",
                              static_cast<const void*>(read.mesh.get()), name, start, length)
                              .view();
        }
    }
    EXPECT_EQ(written, expectWritten);
    EXPECT_EQ(readLines, expectRead);
}

// Holds the first mesh by reference as soon as its header is read.
struct FirstMeshHolder : ReadInterface {
    using ReadInterface::ReadInterface;
    void postPacketRead(const ioPacketType&, bool) override {
        if (!first) {
            first = getLastMesh(false);
        }
    }
    ko::Reference<CompactMesh> first;
};

TEST(PacketFile, MeshesNobodyTookGoWithTheLastReaderUnlessReferenced) {
    ko::Reference<CompactMesh> source(new CompactMesh);
    koGeomTest::fillEveryArray(*source, 5, 2, 3);
    testing::internal::CaptureStderr();
    const Bytes bytes = koGeomTest::packetBytes([&](ioWriteContext& context) {
        for (int i = 0; i < 3; ++i) {
            writeMesh(context, source.get(), 1.0, false);
        }
    });
    const int before = numberOfActiveEntities();
    ko::Reference<CompactMesh> held;
    ko::Reference<CompactMesh> taken;
    {
        ioReadContext context(bytes.data(), bytes.size());
        std::optional<ReadInterface> copy;
        {
            FirstMeshHolder reader(context);
            ioPacketRegistry registry;
            registerTypes(&registry, &reader);
            ASSERT_TRUE(reader.read(registry));
            taken = reader.getLastMesh(true);
            EXPECT_EQ(reader.getLastMesh(false), nullptr);
            held = reader.first;
            copy.emplace(reader);
        }
        // The second mesh, which nobody took or holds, lives while a copy of its reader does.
        EXPECT_EQ(numberOfActiveEntities(), before + 3);
    }
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(numberOfActiveEntities(), before + 2);
    ASSERT_TRUE(held && taken && held != taken);
    koGeomTest::expectSameMesh(*source, *held);
    koGeomTest::expectSameMesh(*source, *taken);
    held.reset();
    taken.reset();
    EXPECT_EQ(numberOfActiveEntities(), before);
}

} // namespace
} // namespace koGeom::packetFile
