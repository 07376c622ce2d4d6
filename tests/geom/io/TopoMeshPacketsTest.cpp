#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshAllocatorT.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::buildTopoMesh;
using koGeomTest::checkTopoMesh;
using koGeomTest::pictureOf;
using koGeomTest::TopoMeshPicture;
using Bytes = std::vector<std::uint8_t>;
using MeshRef = ko::Reference<TopoMesh>;

Bytes written(std::initializer_list<const TopoMesh*> meshes) {
    ioWriteContext context;
    for (const TopoMesh* mesh : meshes) {
        mesh->writePF(context);
    }
    EXPECT_TRUE(context.close()) << context.error().toString();
    return context.buffer();
}

struct Read {
    bool ok;
    std::string faults; // the error and the reasons of the invalid packets
    ko::vector<MeshRef> meshes;
};

Read readBack(const Bytes& bytes, const char* name = nullptr,
              void (*reader)(ioReadContext&) = nullptr) {
    ioPacketRegistry registry;
    TopoMesh::registerTypes(registry, name, reader);
    ioReadContext context(bytes.data(), bytes.size());
    Read read{context.readAll(registry), context.error().message, {}};
    for (const ioError& invalid : context.invalidPackets()) {
        read.faults += "|" + invalid.message;
    }
    read.meshes = TopoMesh::takeReadMeshes(registry, name);
    for (const MeshRef& mesh : read.meshes) {
        EXPECT_EQ(checkTopoMesh(*mesh), ""); // whatever the file, sound or empty
    }
    EXPECT_TRUE(TopoMesh::takeReadMeshes(registry, name).empty());
    return read;
}

// Every link mapped, list order, counts, and the points bit for bit.
void expectSameMesh(const TopoMesh& read, const TopoMesh& source) {
    ASSERT_EQ(checkTopoMesh(read), "");
    TopoMeshPicture a = pictureOf(read);
    TopoMeshPicture b = pictureOf(source);
    ASSERT_EQ(a.points.size(), b.points.size());
    for (std::size_t i = 0; i < a.points.size(); ++i) {
        for (int k = 0; k < 3; ++k) {
            EXPECT_EQ(std::bit_cast<std::uint64_t>(a.points[i][k]),
                      std::bit_cast<std::uint64_t>(b.points[i][k]));
        }
    }
    a.points.clear();
    b.points.clear();
    EXPECT_EQ(a, b);
}

std::vector<MeshRef> shapes() {
    std::vector<MeshRef> meshes;
    for (const koGeomTest::TopoMeshShape& shape :
         {koGeomTest::tetrahedron(), koGeomTest::sphere(1), koGeomTest::torus(5, 4),
          koGeomTest::fan(5, false), koGeomTest::quadGrid(3, 2, false), koGeomTest::bowtie()}) {
        meshes.emplace_back(new TopoMesh);
        buildTopoMesh(*meshes.back(), shape);
    }
    // Edits leave the lists out of creation order; odd points go bit for bit.
    TopoMesh& torus = *meshes[2];
    torus.deleteFace(torus.firstFace().nextInMesh());
    torus.subdivideFace(torus.firstFace(), koLinear::Point(1, 2, 3));
    torus.allocVertex(koLinear::Point(-0.0, std::numeric_limits<double>::denorm_min(),
                                      std::bit_cast<double>(0x7FF4000000000123ull)));
    return meshes;
}

TEST(TopoMeshPackets, ClosedAndOpenMeshesReadBackRecordForRecord) {
    const std::vector<MeshRef> sources = shapes();
    for (const MeshRef& source : sources) {
        const Read read = readBack(written({source.get()}));
        ASSERT_TRUE(read.ok) << read.faults;
        ASSERT_EQ(read.meshes.size(), 1u);
        expectSameMesh(*read.meshes[0], *source);
    }
    // Several meshes in one file come back in file order.
    const Read read = readBack(written({sources[3].get(), sources[0].get(), sources[4].get()}));
    ASSERT_EQ(read.meshes.size(), 3u);
    expectSameMesh(*read.meshes[1], *sources[0]);
    expectSameMesh(*read.meshes[2], *sources[4]);
}

struct TaggedVertex : TopoMeshVertexData {
    std::int64_t tag;
};
struct TaggedEdge : TopoMeshEdgeData {
    std::int64_t tag;
};
struct TaggedFace : TopoMeshFaceData {
    std::int64_t tag;
};

// A derived mesh with a field per record and a title, written by its hooks.
class TaggedMesh : public TopoMesh {
public:
    TaggedMesh() : TopoMesh(new TopoMeshAllocatorT<TaggedVertex, TaggedEdge, TaggedFace>) {}

    template <class Tagged, class Handle>
    static std::int64_t& tag(Handle handle) {
        return static_cast<Tagged*>(handle.data())->tag;
    }
    std::string title;

protected:
    void onWritePF(ioWriteContext& c) const override { c.writeString(title); }
    void onReadPF(ioReadContext& c) override { title = c.readString(); }
    void onWriteVertexPF(TopoMeshVertex v, ioWriteContext& c) const override {
        c.writeInt64(tag<TaggedVertex>(v));
    }
    void onReadVertexPF(TopoMeshVertex v, ioReadContext& c) override {
        tag<TaggedVertex>(v) = c.readInt64();
    }
    void onWriteEdgePF(TopoMeshEdge e, ioWriteContext& c) const override {
        c.writeInt64(tag<TaggedEdge>(e));
    }
    void onReadEdgePF(TopoMeshEdge e, ioReadContext& c) override {
        tag<TaggedEdge>(e) = c.readInt64();
    }
    void onWriteFacePF(TopoMeshFace f, ioWriteContext& c) const override {
        c.writeInt64(tag<TaggedFace>(f));
    }
    void onReadFacePF(TopoMeshFace f, ioReadContext& c) override {
        tag<TaggedFace>(f) = c.readInt64();
    }

private:
    const char* getPacketType() const override { return "test.tagged"; }
};

void readTagged(ioReadContext& context) {
    auto* mesh = new TaggedMesh;
    if (!mesh->readPF(context)) {
        delete mesh;
    }
}

// The tags of a tagged mesh in list order: vertices, then half-edges, then faces.
std::vector<std::int64_t> tagsOf(const TopoMesh& mesh) {
    std::vector<std::int64_t> tags;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        tags.push_back(TaggedMesh::tag<TaggedVertex>(v));
    }
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        tags.push_back(TaggedMesh::tag<TaggedEdge>(e));
    }
    for (TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
        tags.push_back(TaggedMesh::tag<TaggedFace>(f));
    }
    return tags;
}

std::vector<std::string> packetNames(const Bytes& bytes) {
    ioReadContext context(bytes.data(), bytes.size());
    std::vector<std::string> names;
    while (context.nextPacket()) {
        names.emplace_back(context.getPacketTypeName());
    }
    EXPECT_TRUE(context.ok()) << context.error().toString();
    return names;
}

// Deliberate: the record packets of a derived mesh keep the whole default name behind the
// base and a dot.
TEST(TopoMeshPackets, DerivedMeshHooksRoundTripUnderItsBaseNameDeliberate) {
    TaggedMesh source;
    source.title = "tagged";
    const std::vector<TopoMeshVertex> v = buildTopoMesh(source, {"", {{}, {}, {}}, {{0, 1, 2}}});
    std::int64_t next = 11;
    for (TopoMeshVertex x : v) {
        TaggedMesh::tag<TaggedVertex>(x) = next++;
    }
    for (TopoMeshEdge e = source.firstEdge(); e; e = e.nextInMesh()) {
        TaggedMesh::tag<TaggedEdge>(e) = next++;
    }
    TaggedMesh::tag<TaggedFace>(source.firstFace()) = next;
    const Bytes bytes = written({&source});
    const std::string base = "test.tagged.ko.geom.topomesh.";
    EXPECT_EQ(
        packetNames(bytes),
        (std::vector<std::string>{"test.tagged", base + "vertex", base + "vertex", base + "vertex",
                                  base + "edge", base + "edge", base + "edge", base + "face"}));
    const Read tagged = readBack(bytes, "test.tagged", &readTagged);
    ASSERT_EQ(tagged.meshes.size(), 1u);
    const auto* mesh = dynamic_cast<const TaggedMesh*>(tagged.meshes[0].get());
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->title, "tagged");
    EXPECT_EQ(tagsOf(*mesh), tagsOf(source));
    expectSameMesh(*mesh, source);
    // Without a reader, a plain mesh reads the same records and skips the extra fields; the
    // default names see nothing of them.
    const Read plain = readBack(bytes, "test.tagged", nullptr);
    ASSERT_EQ(plain.meshes.size(), 1u);
    EXPECT_EQ(dynamic_cast<const TaggedMesh*>(plain.meshes[0].get()), nullptr);
    expectSameMesh(*plain.meshes[0], source);
    EXPECT_TRUE(readBack(bytes).meshes.empty());
}

// The values of each packet: references as ids, the point, the counts.
struct PacketValues {
    std::string name;
    int object;
    std::vector<int> references;
    std::vector<double> point;
    std::vector<int> counts;
};

std::vector<PacketValues> packetValues(const Bytes& bytes) {
    ioReadContext context(bytes.data(), bytes.size());
    std::vector<PacketValues> packets;
    while (context.nextPacket()) {
        PacketValues p{
            std::string(context.getPacketTypeName()), context.getPacketReference(), {}, {}, {}};
        const bool header = p.name == "ko.geom.topomesh";
        const bool vertex = p.name == "ko.geom.topomesh.vertex";
        const int links = header ? 6 : vertex ? 4 : p.name == "ko.geom.topomesh.edge" ? 8 : 4;
        for (int i = 0; i < links; ++i) {
            if (vertex && i == 1) {
                p.point.resize(3);
                EXPECT_EQ(context.readDoubleArray(p.point.data(), 3), 3u);
            }
            p.references.push_back(context.readReferenceId());
        }
        for (int i = 0; header && i < 3; ++i) {
            p.counts.push_back(context.readInt());
        }
        packets.push_back(p);
    }
    EXPECT_TRUE(context.ok()) << context.error().toString();
    return packets;
}

TEST(TopoMeshPackets, OneTriangleAndAnEmptyMeshWriteTheExactPackets) {
    const std::vector<PacketValues> empty = packetValues(written({MeshRef(new TopoMesh).get()}));
    ASSERT_EQ(empty.size(), 1u);
    EXPECT_EQ(empty[0].name, "ko.geom.topomesh");
    EXPECT_EQ(empty[0].references, std::vector<int>(6, 0));
    EXPECT_EQ(empty[0].counts, std::vector<int>(3, 0));

    TopoMesh mesh;
    buildTopoMesh(mesh, {"", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}}});
    const std::vector<PacketValues> p = packetValues(written({&mesh}));
    ASSERT_EQ(p.size(), 8u);
    // Packet i's object is the reference r[i]; null links are 0.
    std::vector<int> r;
    for (const PacketValues& packet : p) {
        r.push_back(packet.object);
    }
    const int m = r[0];
    EXPECT_EQ(p[0].references, (std::vector<int>{r[1], r[3], r[7], r[7], r[4], r[6]}));
    EXPECT_EQ(p[0].counts, (std::vector<int>{3, 1, 3}));
    EXPECT_EQ(p[1].references, (std::vector<int>{m, r[4], r[2], 0}));
    EXPECT_EQ(p[2].point, (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(p[3].references, (std::vector<int>{m, r[6], 0, r[2]}));
    // vertex, next, prev, twin, face, next and previous in the mesh
    EXPECT_EQ(p[4].references, (std::vector<int>{m, r[1], r[5], r[6], 0, r[7], r[5], 0}));
    EXPECT_EQ(p[6].references, (std::vector<int>{m, r[3], r[4], r[5], 0, r[7], 0, r[5]}));
    EXPECT_EQ(p[7].references, (std::vector<int>{m, r[4], 0, 0}));
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(p[i].name, std::string("ko.geom.topomesh") + (i == 0  ? ""
                                                                : i < 4 ? ".vertex"
                                                                : i < 7 ? ".edge"
                                                                        : ".face"));
    }
}

// A file spelled out packet by packet, as writePF makes it, to be damaged before it is
// written. Links hold record addresses; the mesh is the first link of a record packet.
struct Packet {
    std::string name;
    const void* object;
    std::vector<const void*> links;
    std::vector<double> point;
    std::vector<std::int32_t> counts;
};
struct Plan {
    Packet header;
    std::vector<Packet> vertices;
    std::vector<Packet> edges;
    std::vector<Packet> faces;
};
// Link positions in edge packets.
enum { linkMesh, edgeVertex, edgeNext, edgePrev, edgeTwin, edgeFace };

Plan planOf(const TopoMesh& mesh) {
    const TopoMeshHeader& h = mesh.getImpl()->header();
    Plan plan{{"ko.geom.topomesh",
               &mesh,
               {h.firstVertex, h.lastVertex, h.firstFace, h.lastFace, h.firstEdge, h.lastEdge},
               {},
               {h.numVertices, h.numFaces, h.numEdges}},
              {},
              {},
              {}};
    for (const TopoMeshVertexData* v = h.firstVertex; v; v = v->nextInMesh) {
        plan.vertices.push_back({"ko.geom.topomesh.vertex",
                                 v,
                                 {&mesh, v->firstEdge, v->nextInMesh, v->prevInMesh},
                                 {v->point.x, v->point.y, v->point.z},
                                 {}});
    }
    for (const TopoMeshEdgeData* e = h.firstEdge; e; e = e->nextInMesh) {
        plan.edges.push_back(
            {"ko.geom.topomesh.edge",
             e,
             {&mesh, e->vertex, e->next, e->prev, e->twin, e->face, e->nextInMesh, e->prevInMesh},
             {},
             {}});
    }
    for (const TopoMeshFaceData* f = h.firstFace; f; f = f->nextInMesh) {
        plan.faces.push_back({"ko.geom.topomesh.face",
                              f,
                              {&mesh, f->firstEdge, f->nextInMesh, f->prevInMesh},
                              {},
                              {}});
    }
    return plan;
}

std::vector<Packet> packetsOf(const Plan& plan) {
    std::vector<Packet> packets{plan.header};
    for (const std::vector<Packet>* kind : {&plan.vertices, &plan.edges, &plan.faces}) {
        packets.insert(packets.end(), kind->begin(), kind->end());
    }
    return packets;
}

Bytes writePackets(const std::vector<Packet>& packets) {
    ioWriteContext context;
    for (const Packet& p : packets) {
        context.startPacket(p.name, p.object);
        for (std::size_t i = 0; i < p.links.size(); ++i) {
            if (i == 1 && !p.point.empty()) {
                context.writeDoubleArray(p.point.data(), p.point.size());
            }
            context.writePointer(p.links[i]);
        }
        for (const std::int32_t count : p.counts) {
            context.writeInt(count);
        }
        context.endPacket();
    }
    EXPECT_TRUE(context.close());
    return context.buffer();
}

// Two meshes a (a bowtie: two triangles sharing a vertex) and b (a tetrahedron) in one file.
struct TwoMeshes {
    TwoMeshes() {
        buildTopoMesh(meshA, koGeomTest::bowtie());
        buildTopoMesh(meshB, koGeomTest::tetrahedron());
    }
    Bytes bytes(const std::function<void(Plan&, Plan&)>& damage) const {
        Plan a = planOf(meshA);
        Plan b = planOf(meshB);
        damage(a, b);
        std::vector<Packet> packets = packetsOf(a);
        const std::vector<Packet> second = packetsOf(b);
        packets.insert(packets.end(), second.begin(), second.end());
        return writePackets(packets);
    }
    TopoMesh meshA;
    TopoMesh meshB;
};

TEST(TopoMeshPackets, SpelledOutPacketsAreTheWrittenBytes) {
    const TwoMeshes two;
    EXPECT_EQ(two.bytes([](Plan&, Plan&) {}), written({&two.meshA, &two.meshB}));
}

TEST(TopoMeshPackets, DamagedLinksAndPacketsAreRejectedAndTheMeshDropped) {
    static const char unknown = 0; // an object no packet defines
    struct Case {
        const char* what;
        std::function<void(Plan&, Plan&)> damage;
        const char* reason;
    };
    const std::vector<Case> cases = {
        {"origin names a face",
         [](Plan& a, Plan&) { a.edges[0].links[edgeVertex] = a.faces[0].object; }, "kind"},
        {"twin in another mesh",
         [](Plan& a, Plan& b) { a.edges[0].links[edgeTwin] = b.edges[0].object; }, "kind"},
        {"mesh names a vertex",
         [](Plan& a, Plan&) { a.vertices[1].links[linkMesh] = a.vertices[0].object; },
         "not a half-edge mesh"},
        {"header after its records", [](Plan& a, Plan&) { std::swap(a.header, a.faces.back()); },
         "names no record"},
        {"count off by one", [](Plan& a, Plan&) { ++a.header.counts[2]; }, "half-edge count"},
        {"twin not pointing back",
         [](Plan& a, Plan&) { a.edges[0].links[edgeTwin] = a.edges[1].object; }, "twin"},
        {"next whose prev is another",
         [](Plan& a, Plan&) { a.edges[0].links[edgeNext] = a.edges[0].object; }, "prev of its"},
        {"face not the face of next",
         [](Plan& a, Plan&) { a.edges[0].links[edgeFace] = a.faces[1].object; }, "face of its"},
        {"list coming back",
         [](Plan& a, Plan&) {
             a.vertices.back().links[2] = a.vertices[0].object;
             a.vertices[0].links[3] = a.vertices.back().object;
         },
         "previous link"},
        {"vertex nobody links",
         [](Plan& a, Plan&) {
             a.vertices.push_back(a.vertices[0]);
             a.vertices.back().object = &unknown;
             a.vertices.back().links = {a.header.object, nullptr, nullptr, nullptr};
             ++a.header.counts[0];
         },
         "ends after"},
        {"no origin", [](Plan& a, Plan&) { a.edges[2].links[edgeVertex] = nullptr; }, "no origin"},
        {"twin never defined", [](Plan& a, Plan&) { a.edges[2].links[edgeTwin] = &unknown; },
         "names no record"},
        {"first edge elsewhere", [](Plan& a, Plan&) { a.vertices[0].links[1] = a.edges[4].object; },
         "starts elsewhere"},
        {"face edge not on it", [](Plan& a, Plan&) { a.faces[0].links[1] = a.edges[4].object; },
         "not on it"},
        {"edges on no loop",
         [](Plan& a, Plan&) {
             for (int i = 3; i < 6; ++i) {
                 a.edges[i].links[edgeFace] = a.faces[0].object;
             }
             a.faces.pop_back();
             a.faces[0].links[2] = nullptr;
             a.header.links[3] = a.faces[0].object;
             a.header.counts[1] = 1;
         },
         "3 half-edges lie on no face loop"},
        {"header defines no mesh", [](Plan& a, Plan&) { a.header.object = nullptr; },
         "defines no mesh"},
        {"record defines none", [](Plan& a, Plan&) { a.faces[1].object = nullptr; },
         "defines no record"},
        {"point of two doubles", [](Plan& a, Plan&) { a.vertices[2].point.pop_back(); },
         "three doubles"},
    };
    const TwoMeshes two;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const Read read = readBack(two.bytes(c.damage));
        EXPECT_NE(read.faults.find(c.reason), std::string::npos) << read.faults;
        // Mesh a does not come back with records.
        for (const MeshRef& mesh : read.meshes) {
            EXPECT_NE(mesh->numVertices(), two.meshA.numVertices());
        }
    }
}

// A host's reader whose mesh is not empty: the header is rejected and the mesh kept as it was.
MeshRef target;
void readIntoTarget(ioReadContext& context) { EXPECT_FALSE(target->readPF(context)); }

TEST(TopoMeshPackets, HeaderIsNotReadIntoAMeshThatHasRecords) {
    target = new TopoMesh;
    buildTopoMesh(*target, koGeomTest::tetrahedron());
    const TopoMeshPicture before = pictureOf(*target);
    const Read read = readBack(written({target.get()}), "ko.geom.topomesh", &readIntoTarget);
    EXPECT_NE(read.faults.find("not empty"), std::string::npos);
    EXPECT_TRUE(read.meshes.empty());
    EXPECT_EQ(pictureOf(*target), before);
    target.reset();
}

// A dropped derived mesh keeps its class and its allocator's kind.
TEST(TopoMeshPackets, DroppedDerivedMeshKeepsItsRecordKind) {
    TaggedMesh source;
    buildTopoMesh(source, koGeomTest::tetrahedron());
    source.firstEdge().data()->twin = source.firstEdge().next().data();
    const Read read = readBack(written({&source}), "test.tagged", &readTagged);
    EXPECT_NE(read.faults.find("twin"), std::string::npos);
    ASSERT_EQ(read.meshes.size(), 1u);
    EXPECT_EQ(read.meshes[0]->numVertices(), 0);
    EXPECT_NE(dynamic_cast<const TaggedMesh*>(read.meshes[0].get()), nullptr);
    EXPECT_EQ(read.meshes[0]->getImpl()->allocator()->vertexSize(), sizeof(TaggedVertex));
}

// Any damage to the links or the packet order: each mesh comes back sound or empty (checked
// by readBack), never a sanitizer report.
TEST(TopoMeshPackets, RandomlyRelinkedFilesReadSoundOrEmpty) {
    const TwoMeshes two;
    static const char unknown = 0;
    std::mt19937 random(7);
    int sound = 0;
    for (int seed = 0; seed < 1500; ++seed) {
        const Bytes bytes = two.bytes([&](Plan& a, Plan& b) {
            std::vector<Packet*> packets{&a.header, &b.header};
            for (Plan* plan : {&a, &b}) {
                for (std::vector<Packet>* kind : {&plan->vertices, &plan->edges, &plan->faces}) {
                    for (Packet& p : *kind) {
                        packets.push_back(&p);
                    }
                }
            }
            std::vector<const void*> objects{nullptr, &unknown};
            for (const Packet* p : packets) {
                objects.push_back(p->object);
            }
            const int changes = 1 + static_cast<int>(random() % 3);
            for (int i = 0; i < changes; ++i) {
                Packet& p = *packets[random() % packets.size()];
                if (random() % 8 == 0) {
                    std::swap(p, *packets[random() % packets.size()]);
                } else {
                    p.links[random() % p.links.size()] = objects[random() % objects.size()];
                }
            }
        });
        const Read read = readBack(bytes);
        sound += read.faults.empty();
    }
    // Some relinks are harmless (a link set to what it was); most are caught.
    EXPECT_GT(sound, 0);
    EXPECT_LT(sound, 500);
}

// Every cut of a real file and seeded bit flips and byte overwrites: a clean failure or a
// sound mesh, never a sanitizer report.
TEST(TopoMeshPackets, TruncatedAndCorruptedFilesFailCleanly) {
    const TwoMeshes two;
    const Bytes bytes = written({&two.meshA, &two.meshB});
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const Read read = readBack(Bytes(bytes.begin(), bytes.begin() + size));
        EXPECT_TRUE(!read.ok || !read.faults.empty() || read.meshes.size() < 2) << size;
    }
    std::mt19937 random(11);
    for (int seed = 0; seed < 2000; ++seed) {
        Bytes damaged = bytes;
        const std::size_t at = random() % damaged.size();
        if (seed % 2 == 0) {
            damaged[at] ^= static_cast<std::uint8_t>(1u << (random() % 8));
        } else {
            damaged[at] = static_cast<std::uint8_t>(random());
        }
        readBack(damaged);
    }
}

} // namespace
} // namespace koGeom
