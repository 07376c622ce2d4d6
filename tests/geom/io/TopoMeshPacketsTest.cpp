#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <tuple>
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

// Reads through a registry and takes the meshes, each of which must be sound or empty.
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
        EXPECT_EQ(checkTopoMesh(*mesh), "");
    }
    EXPECT_TRUE(TopoMesh::takeReadMeshes(registry, name).empty());
    return read;
}

// Every link mapped, list order, counts, and the points bit for bit.
void expectSameMesh(const TopoMesh& read, const TopoMesh& source) {
    koGeomTest::TopoMeshPicture a = pictureOf(read);
    koGeomTest::TopoMeshPicture b = pictureOf(source);
    ASSERT_EQ(a.points.size(), b.points.size());
    for (std::size_t i = 0; i < a.points.size(); ++i) {
        using Bits = std::array<std::uint64_t, 3>;
        EXPECT_EQ(std::bit_cast<Bits>(a.points[i]), std::bit_cast<Bits>(b.points[i]));
    }
    a.points = b.points = {}; // NaN is not equal to itself
    EXPECT_EQ(a, b);
}

TEST(TopoMeshPackets, ClosedAndOpenMeshesReadBackRecordForRecord) {
    std::vector<MeshRef> sources;
    for (const auto& shape :
         {koGeomTest::tetrahedron(), koGeomTest::sphere(1), koGeomTest::torus(5, 4),
          koGeomTest::fan(5, false), koGeomTest::quadGrid(3, 2, false), koGeomTest::bowtie()}) {
        sources.emplace_back(new TopoMesh);
        buildTopoMesh(*sources.back(), shape);
    }
    // Edits leave the lists out of creation order; odd points go bit for bit.
    TopoMesh& torus = *sources[2];
    torus.deleteFace(torus.firstFace().nextInMesh());
    torus.subdivideFace(torus.firstFace(), koLinear::Point(1, 2, 3));
    torus.allocVertex(koLinear::Point(-0.0, std::numeric_limits<double>::denorm_min(),
                                      std::bit_cast<double>(0x7FF4000000000123ull)));
    for (const MeshRef& source : sources) {
        const Read read = readBack(written({source.get()}));
        ASSERT_TRUE(read.ok && read.faults.empty()) << read.faults;
        ASSERT_EQ(read.meshes.size(), 1u);
        expectSameMesh(*read.meshes[0], *source);
    }
    const Read read = readBack(written({sources[3].get(), sources[0].get(), sources[4].get()}));
    ASSERT_EQ(read.meshes.size(), 3u); // in file order
    expectSameMesh(*read.meshes[1], *sources[0]);
    expectSameMesh(*read.meshes[2], *sources[4]);
}

template <class Base>
struct Tagged : Base {
    std::int64_t tag;
};
template <class Base>
std::int64_t& tagOf(Base* record) {
    return static_cast<Tagged<Base>*>(record)->tag;
}

// A derived mesh with a field per record and a title, written by its hooks.
class TaggedMesh : public TopoMesh {
public:
    TaggedMesh()
        : TopoMesh(new TopoMeshAllocatorT<Tagged<TopoMeshVertexData>, Tagged<TopoMeshEdgeData>,
                                          Tagged<TopoMeshFaceData>>) {}
    std::string title;

protected:
    template <class Handle>
    static void put(Handle h, ioWriteContext& c) {
        c.writeInt64(tagOf(h.data()));
    }
    template <class Handle>
    static void get(Handle h, ioReadContext& c) {
        tagOf(h.data()) = c.readInt64();
    }
    void onWritePF(ioWriteContext& c) const override { c.writeString(title); }
    void onReadPF(ioReadContext& c) override { title = c.readString(); }
    void onWriteVertexPF(TopoMeshVertex v, ioWriteContext& c) const override { put(v, c); }
    void onReadVertexPF(TopoMeshVertex v, ioReadContext& c) override { get(v, c); }
    void onWriteEdgePF(TopoMeshEdge e, ioWriteContext& c) const override { put(e, c); }
    void onReadEdgePF(TopoMeshEdge e, ioReadContext& c) override { get(e, c); }
    void onWriteFacePF(TopoMeshFace f, ioWriteContext& c) const override { put(f, c); }
    void onReadFacePF(TopoMeshFace f, ioReadContext& c) override { get(f, c); }

private:
    const char* getPacketType() const override { return "test.tagged"; }
};

void readTagged(ioReadContext& context) {
    auto* mesh = new TaggedMesh;
    if (!mesh->readPF(context)) {
        delete mesh;
    }
}

std::vector<std::string> packetNames(const Bytes& bytes) {
    ioReadContext context(bytes.data(), bytes.size());
    std::vector<std::string> names;
    while (context.nextPacket()) {
        names.emplace_back(context.getPacketTypeName());
    }
    return names;
}

// Deliberate: a derived mesh's record packets keep the whole default name behind its base.
TEST(TopoMeshPackets, DerivedMeshHooksRoundTripUnderItsBaseNameDeliberate) {
    TaggedMesh source;
    source.title = "tagged";
    const auto v = buildTopoMesh(source, {"", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2}}});
    tagOf(v[0].data()) = 5;
    tagOf(source.firstEdge().nextInMesh().data()) = 6;
    tagOf(source.firstFace().data()) = 7;
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
    EXPECT_EQ(tagOf(mesh->firstVertex().data()), 5);
    EXPECT_EQ(tagOf(mesh->firstEdge().nextInMesh().data()), 6);
    EXPECT_EQ(tagOf(mesh->firstFace().data()), 7);
    expectSameMesh(*mesh, source);
    // Without a reader a plain mesh reads the records and skips the hooks' fields; the
    // default names know none of the packets.
    const Read plain = readBack(bytes, "test.tagged", nullptr);
    ASSERT_EQ(plain.meshes.size(), 1u);
    EXPECT_EQ(dynamic_cast<const TaggedMesh*>(plain.meshes[0].get()), nullptr);
    expectSameMesh(*plain.meshes[0], source);
    EXPECT_TRUE(readBack(bytes).meshes.empty());
    // A dropped derived mesh keeps its class and its allocator's kind.
    source.firstEdge().data()->twin = source.firstEdge().next().data();
    const Read dropped = readBack(written({&source}), "test.tagged", &readTagged);
    ASSERT_EQ(dropped.meshes.size(), 1u);
    EXPECT_NE(dropped.faults.find("twin"), std::string::npos);
    EXPECT_EQ(dropped.meshes[0]->numVertices(), 0);
    EXPECT_EQ(dropped.meshes[0]->getImpl()->allocator()->vertexSize(),
              sizeof(Tagged<TopoMeshVertexData>));
}

// A file spelled out packet by packet, as writePF makes it, to be damaged before it is
// written. Links hold record addresses; a record packet's first link is its mesh.
struct Packet {
    std::string name;
    const void* object;
    std::vector<const void*> links;
    std::vector<double> point;
    std::vector<std::int32_t> counts;
};
struct Plan {
    Packet header;
    std::vector<Packet> v, e, f;
};
enum { linkMesh, edgeVertex, edgeNext, edgePrev, edgeTwin, edgeFace };

Plan planOf(const TopoMesh& mesh) {
    const TopoMeshHeader& h = mesh.getImpl()->header();
    const std::string name = "ko.geom.topomesh";
    Plan plan{{name,
               &mesh,
               {h.firstVertex, h.lastVertex, h.firstFace, h.lastFace, h.firstEdge, h.lastEdge},
               {},
               {h.numVertices, h.numFaces, h.numEdges}},
              {},
              {},
              {}};
    for (const TopoMeshVertexData* v = h.firstVertex; v; v = v->nextInMesh) {
        plan.v.push_back({name + ".vertex",
                          v,
                          {&mesh, v->firstEdge, v->nextInMesh, v->prevInMesh},
                          {v->point.x, v->point.y, v->point.z},
                          {}});
    }
    for (const TopoMeshEdgeData* e = h.firstEdge; e; e = e->nextInMesh) {
        plan.e.push_back(
            {name + ".edge",
             e,
             {&mesh, e->vertex, e->next, e->prev, e->twin, e->face, e->nextInMesh, e->prevInMesh},
             {},
             {}});
    }
    for (const TopoMeshFaceData* f = h.firstFace; f; f = f->nextInMesh) {
        plan.f.push_back(
            {name + ".face", f, {&mesh, f->firstEdge, f->nextInMesh, f->prevInMesh}, {}, {}});
    }
    return plan;
}

Bytes writtenPlans(std::initializer_list<const Plan*> plans) {
    std::vector<const Packet*> packets;
    for (const Plan* plan : plans) {
        packets.push_back(&plan->header);
        for (const std::vector<Packet>* kind : {&plan->v, &plan->e, &plan->f}) {
            for (const Packet& p : *kind) {
                packets.push_back(&p);
            }
        }
    }
    ioWriteContext context;
    for (const Packet* p : packets) {
        context.startPacket(p->name, p->object);
        for (std::size_t i = 0; i < p->links.size(); ++i) {
            if (i == 1 && !p->point.empty()) {
                context.writeDoubleArray(p->point.data(), p->point.size());
            }
            context.writePointer(p->links[i]);
        }
        for (const std::int32_t count : p->counts) {
            context.writeInt(count);
        }
        context.endPacket();
    }
    EXPECT_TRUE(context.close());
    return context.buffer();
}

// Mesh a (a bowtie: two triangles sharing vertex 0) and mesh b (a tetrahedron) in one file.
struct TwoMeshes {
    TwoMeshes() {
        buildTopoMesh(a, koGeomTest::bowtie());
        buildTopoMesh(b, koGeomTest::tetrahedron());
    }
    Bytes bytes(const std::function<void(Plan&, Plan&)>& damage) const {
        Plan planA = planOf(a);
        Plan planB = planOf(b);
        damage(planA, planB);
        return writtenPlans({&planA, &planB});
    }
    TopoMesh a;
    TopoMesh b;
};

// One triangle: a header, three vertex, three edge and one face packet, no twin; an empty
// mesh: six null references and three zeros. The spelled-out packets are the written bytes.
TEST(TopoMeshPackets, OneTriangleAndAnEmptyMeshWriteTheExactPackets) {
    TopoMesh mesh;
    const Plan empty = planOf(mesh);
    EXPECT_EQ(writtenPlans({&empty}), written({&mesh}));
    EXPECT_EQ(empty.header.links, std::vector<const void*>(6, nullptr));
    EXPECT_EQ(empty.header.counts, std::vector<std::int32_t>(3, 0));
    EXPECT_EQ(empty.v.size() + empty.e.size() + empty.f.size(), 0u);
    buildTopoMesh(mesh, {"", {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}, {{0, 1, 2}}});
    const Plan p = planOf(mesh);
    EXPECT_EQ(writtenPlans({&p}), written({&mesh}));
    ASSERT_EQ(p.v.size() * 100 + p.e.size() * 10 + p.f.size(), 331u);
    EXPECT_EQ(p.header.counts, (std::vector<std::int32_t>{3, 1, 3}));
    for (const Packet& e : p.e) {
        EXPECT_EQ(e.links[edgeTwin], nullptr);
    }
    const TwoMeshes two;
    EXPECT_EQ(two.bytes([](Plan&, Plan&) {}), written({&two.a, &two.b}));
}

TEST(TopoMeshPackets, DamagedLinksAndPacketsAreRejectedAndTheMeshDropped) {
    static const char unknown = 0; // an object no packet of the file defines (but one below)
    const std::vector<std::tuple<const char*, std::function<void(Plan&, Plan&)>>> cases = {
        {"kind", [](Plan& a, Plan&) { a.e[0].links[edgeVertex] = a.f[0].object; }},
        {"kind", [](Plan& a, Plan& b) { a.e[0].links[edgeTwin] = b.e[0].object; }},
        {"not a half-edge mesh", [](Plan& a, Plan&) { a.v[1].links[linkMesh] = a.v[0].object; }},
        {"names no record", [](Plan& a, Plan&) { std::swap(a.header, a.f.back()); }},
        {"names no record", [](Plan& a, Plan&) { a.e[2].links[edgeTwin] = &unknown; }},
        {"half-edge count 7 but 6", [](Plan& a, Plan&) { ++a.header.counts[2]; }},
        {"twin's twin", [](Plan& a, Plan&) { a.e[0].links[edgeTwin] = a.e[1].object; }},
        {"prev of its next", [](Plan& a, Plan&) { a.e[0].links[edgeNext] = a.e[0].object; }},
        {"face of its next", [](Plan& a, Plan&) { a.e[0].links[edgeFace] = a.f[1].object; }},
        {"no origin", [](Plan& a, Plan&) { a.e[2].links[edgeVertex] = nullptr; }},
        {"starts elsewhere", [](Plan& a, Plan&) { a.v[0].links[1] = a.e[4].object; }},
        {"not on it", [](Plan& a, Plan&) { a.f[0].links[1] = a.e[4].object; }},
        {"defines no mesh", [](Plan& a, Plan&) { a.header.object = nullptr; }},
        {"defines no record", [](Plan& a, Plan&) { a.f[1].object = nullptr; }},
        {"three doubles", [](Plan& a, Plan&) { a.v[2].point.pop_back(); }},
        {"vertex 0 of the list has a previous link",
         [](Plan& a, Plan&) { // a list coming back to its head
             a.v.back().links[2] = a.v[0].object;
             a.v[0].links[3] = a.v.back().object;
         }},
        {"vertex list ends after 5 of its 6",
         [](Plan& a, Plan&) { // a vertex nobody links
             a.v.push_back({a.v[0].name,
                            &unknown,
                            {a.header.object, nullptr, nullptr, nullptr},
                            {0, 0, 0},
                            {}});
             ++a.header.counts[0];
         }},
        {"3 half-edges lie on no face loop",
         [](Plan& a, Plan&) { // the second triangle's half-edges given to the first
             for (int i = 3; i < 6; ++i) {
                 a.e[i].links[edgeFace] = a.f[0].object;
             }
             a.f.pop_back();
             a.f[0].links[2] = nullptr;
             a.header.links[3] = a.f[0].object;
             a.header.counts[1] = 1;
         }},
    };
    const TwoMeshes two;
    for (const auto& [reason, damage] : cases) {
        SCOPED_TRACE(reason);
        const Read read = readBack(two.bytes(damage));
        EXPECT_NE(read.faults.find(reason), std::string::npos) << read.faults;
        for (const MeshRef& mesh : read.meshes) { // mesh a never comes back with records
            EXPECT_NE(mesh->numVertices(), two.a.numVertices());
        }
    }
}

// A host's reader into a mesh that has records: the header is rejected, the mesh kept.
MeshRef target;
void readIntoTarget(ioReadContext& context) { EXPECT_FALSE(target->readPF(context)); }

TEST(TopoMeshPackets, HeaderIsNotReadIntoAMeshThatHasRecords) {
    target = new TopoMesh;
    buildTopoMesh(*target, koGeomTest::tetrahedron());
    const koGeomTest::TopoMeshPicture before = pictureOf(*target);
    const Read read = readBack(written({target.get()}), "ko.geom.topomesh", &readIntoTarget);
    EXPECT_NE(read.faults.find("not empty"), std::string::npos);
    EXPECT_TRUE(read.meshes.empty());
    EXPECT_EQ(pictureOf(*target), before);
    target.reset();
}

// Links set to any object of the file, null or nothing, and packets swapped: each mesh
// comes back sound or empty (readBack checks), never a sanitizer report.
TEST(TopoMeshPackets, RandomlyRelinkedFilesReadSoundOrEmpty) {
    static const char unknown = 0;
    const TwoMeshes two;
    std::mt19937 random(7);
    int sound = 0;
    for (int seed = 0; seed < 1500; ++seed) {
        const Read read = readBack(two.bytes([&](Plan& a, Plan& b) {
            std::vector<Packet*> packets{&a.header, &b.header};
            std::vector<const void*> objects{nullptr, &unknown};
            for (std::vector<Packet>* kind : {&a.v, &a.e, &a.f, &b.v, &b.e, &b.f}) {
                for (Packet& p : *kind) {
                    packets.push_back(&p);
                    objects.push_back(p.object);
                }
            }
            for (int change = random() % 3; change >= 0; --change) {
                Packet& p = *packets[random() % packets.size()];
                if (random() % 8 == 0) {
                    std::swap(p, *packets[random() % packets.size()]);
                } else {
                    p.links[random() % p.links.size()] = objects[random() % objects.size()];
                }
            }
        }));
        sound += read.ok && read.faults.empty();
    }
    EXPECT_GT(sound, 0); // a link set to what it was
    EXPECT_LT(sound, 500);
}

// Every cut of a real file and seeded bit flips and byte overwrites fail cleanly.
TEST(TopoMeshPackets, TruncatedAndCorruptedFilesFailCleanly) {
    const TwoMeshes two;
    const Bytes bytes = written({&two.a, &two.b});
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const Read read = readBack(Bytes(bytes.begin(), bytes.begin() + size));
        EXPECT_TRUE(!read.ok || !read.faults.empty() || read.meshes.size() < 2) << size;
    }
    std::mt19937 random(11);
    for (int seed = 0; seed < 2000; ++seed) {
        Bytes damaged = bytes;
        std::uint8_t& byte = damaged[random() % damaged.size()];
        byte = static_cast<std::uint8_t>(seed % 2 == 0 ? byte ^ (1u << (random() % 8)) : random());
        readBack(damaged);
    }
}

} // namespace
} // namespace koGeom
