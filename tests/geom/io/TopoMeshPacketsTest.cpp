#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "geom/topomesh/TopoMeshAllocatorT.h"
#include "tests/geom/io/MeshFileSupport.h"

namespace koGeom {
namespace {

using koGeomTest::buildTopoMesh;
using koGeomTest::Bytes;
using koGeomTest::MeshRead;
using koGeomTest::pictureOf;
using koGeomTest::readMeshes;
using MeshRef = ko::Reference<TopoMesh>;

Bytes written(std::initializer_list<const TopoMesh*> meshes) {
    return koGeomTest::packetBytes([&](ioWriteContext& context) {
        for (const TopoMesh* mesh : meshes) {
            mesh->writePF(context);
        }
    });
}

// Reads `bytes` with the half-edge mesh types of `name` and `reader`.
MeshRead readAs(const Bytes& bytes, const char* name, void (*reader)(ioReadContext&)) {
    return readMeshes(bytes, {.halfEdgeName = name, .halfEdgeReader = reader});
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

// The mesh a host's reader reads into (see below).
TopoMesh* target = nullptr;

// Deliberate: a derived mesh's record packets keep the whole default name behind its base.
TEST(TopoMeshPackets, DerivedMeshesRoundTripUnderTheirBaseNameDeliberateIntoEmptyMeshesOnly) {
    TaggedMesh source;
    source.title = "tagged";
    const auto v = buildTopoMesh(source, {"", {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {{0, 1, 2}}});
    tagOf(v[0].data()) = 5;
    tagOf(source.firstEdge().nextInMesh().data()) = 6;
    tagOf(source.firstFace().data()) = 7;
    const Bytes bytes = written({&source});
    ioReadContext names(bytes.data(), bytes.size());
    std::vector<std::string> packets;
    while (names.nextPacket()) {
        packets.emplace_back(names.getPacketTypeName());
    }
    const std::string base = "test.tagged.ko.geom.topomesh.";
    EXPECT_EQ(packets, (std::vector<std::string>{"test.tagged", base + "vertex", base + "vertex",
                                                 base + "vertex", base + "edge", base + "edge",
                                                 base + "edge", base + "face"}));
    const MeshRead tagged = readAs(bytes, "test.tagged", &readTagged);
    ASSERT_EQ(tagged.halfEdgeMeshes.size(), 1u);
    const auto* mesh = dynamic_cast<const TaggedMesh*>(tagged.halfEdgeMeshes[0].get());
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(written({mesh}), bytes); // the title and every tag with the records
    // Without a reader a plain mesh reads the records and skips the hooks' fields; the
    // default names know none of the packets.
    const MeshRead plain = readAs(bytes, "test.tagged", nullptr);
    ASSERT_EQ(plain.halfEdgeMeshes.size(), 1u);
    EXPECT_EQ(dynamic_cast<const TaggedMesh*>(plain.halfEdgeMeshes[0].get()), nullptr);
    EXPECT_EQ(pictureOf(*plain.halfEdgeMeshes[0]), pictureOf(source));
    EXPECT_TRUE(readMeshes(bytes).halfEdgeMeshes.empty());
    // A host's reader into a mesh that has records: the header is rejected, the mesh kept.
    target = &source;
    const MeshRead into = readAs(bytes, "test.tagged", [](ioReadContext& context) {
        EXPECT_FALSE(target->readPF(context));
    });
    EXPECT_NE(into.reasons().find("not empty"), std::string::npos);
    EXPECT_TRUE(into.halfEdgeMeshes.empty());
    EXPECT_EQ(written({&source}), bytes);
    // A dropped derived mesh keeps its class and its allocator's kind.
    source.firstEdge().data()->twin = source.firstEdge().next().data();
    const MeshRead dropped = readAs(written({&source}), "test.tagged", &readTagged);
    ASSERT_EQ(dropped.halfEdgeMeshes.size(), 1u);
    EXPECT_NE(dropped.reasons().find("twin"), std::string::npos);
    EXPECT_EQ(dropped.halfEdgeMeshes[0]->numVertices(), 0);
    EXPECT_EQ(dropped.halfEdgeMeshes[0]->getImpl()->allocator()->vertexSize(),
              sizeof(Tagged<TopoMeshVertexData>));
}

// A file spelled out packet by packet, as writePF makes it, to be damaged before it is
// written. Links hold record addresses; a record packet's first link is its mesh.
struct Packet {
    std::string name;
    const void* object;
    std::vector<const void*> links;
    std::vector<double> point = {};
    std::vector<std::int32_t> counts = {};
};
struct Plan {
    Packet header;
    std::vector<Packet> v = {}, e = {}, f = {};
};
enum { linkMesh, edgeVertex, edgeNext, edgePrev, edgeTwin, edgeFace };

Plan planOf(const TopoMesh& mesh) {
    const TopoMeshHeader& h = mesh.getImpl()->header();
    const std::string name = "ko.geom.topomesh";
    Plan plan{
        Packet{name,
               &mesh,
               {h.firstVertex, h.lastVertex, h.firstFace, h.lastFace, h.firstEdge, h.lastEdge},
               {},
               {h.numVertices, h.numFaces, h.numEdges}}};
    for (const TopoMeshVertexData* v = h.firstVertex; v; v = v->nextInMesh) {
        plan.v.push_back(Packet{name + ".vertex",
                                v,
                                {&mesh, v->firstEdge, v->nextInMesh, v->prevInMesh},
                                {v->point.x, v->point.y, v->point.z}});
    }
    for (const TopoMeshEdgeData* e = h.firstEdge; e; e = e->nextInMesh) {
        plan.e.push_back(Packet{
            name + ".edge",
            e,
            {&mesh, e->vertex, e->next, e->prev, e->twin, e->face, e->nextInMesh, e->prevInMesh}});
    }
    for (const TopoMeshFaceData* f = h.firstFace; f; f = f->nextInMesh) {
        plan.f.push_back(
            Packet{name + ".face", f, {&mesh, f->firstEdge, f->nextInMesh, f->prevInMesh}});
    }
    return plan;
}

Bytes writtenPlans(std::initializer_list<const Plan*> plans) {
    return koGeomTest::packetBytes([&](ioWriteContext& context) {
        const auto write = [&context](const Packet& p) {
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
        };
        for (const Plan* plan : plans) {
            write(plan->header);
            for (const std::vector<Packet>* kind : {&plan->v, &plan->e, &plan->f}) {
                std::for_each(kind->begin(), kind->end(), write);
            }
        }
    });
}

// The half-edge meshes of the file of every packet, a bowtie (two triangles sharing vertex 0)
// and a tetrahedron, spelled out, damaged and written.
Bytes damaged(const koGeomTest::FileOfEveryPacket& file,
              const std::function<void(Plan& a, Plan& b)>& damage) {
    Plan a = planOf(file.halfEdge[0]);
    Plan b = planOf(file.halfEdge[1]);
    damage(a, b);
    return writtenPlans({&a, &b});
}

// Each shape's file is the packets spelled out from its records, and reads back into a mesh
// that writes the same bytes: every link, list order, count and point bit for bit.
TEST(TopoMeshPackets, MeshesWriteTheExactPacketsAndReadBackRecordForRecord) {
    std::vector<MeshRef> sources;
    for (const auto& shape :
         {koGeomTest::TopoMeshShape{}, koGeomTest::tetrahedron(), koGeomTest::sphere(1),
          koGeomTest::torus(5, 4), koGeomTest::fan(5, false), koGeomTest::quadGrid(3, 2, false),
          koGeomTest::bowtie()}) {
        sources.emplace_back(new TopoMesh);
        buildTopoMesh(*sources.back(), shape);
    }
    // Edits leave the lists out of creation order; odd points go bit for bit.
    TopoMesh& torus = *sources[3];
    torus.deleteFace(torus.firstFace().nextInMesh());
    torus.subdivideFace(torus.firstFace(), koLinear::Point(1, 2, 3));
    torus.allocVertex(koLinear::Point(-0.0, std::numeric_limits<double>::denorm_min(),
                                      std::bit_cast<double>(0x7FF4000000000123ull)));
    for (const MeshRef& source : sources) {
        const Bytes bytes = written({source.get()});
        const Plan plan = planOf(*source);
        EXPECT_EQ(writtenPlans({&plan}), bytes);
        const MeshRead read = readMeshes(bytes);
        ASSERT_TRUE(read.ok && read.invalid.empty()) << read.reasons();
        ASSERT_EQ(read.halfEdgeMeshes.size(), 1u);
        EXPECT_EQ(written({read.halfEdgeMeshes[0].get()}), bytes);
    }
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
    const koGeomTest::FileOfEveryPacket file;
    for (const auto& [reason, damage] : cases) {
        SCOPED_TRACE(reason);
        const MeshRead read = readMeshes(damaged(file, damage));
        EXPECT_NE(read.reasons().find(reason), std::string::npos) << read.reasons();
        for (const MeshRef& mesh : read.halfEdgeMeshes) { // mesh a never comes back with records
            EXPECT_NE(mesh->numVertices(), file.halfEdge[0].numVertices());
        }
    }
}

// Links set to any object of the file, null or nothing, and packets swapped: each mesh
// comes back sound or empty (readMeshes checks), never a sanitizer report.
TEST(TopoMeshPackets, RandomlyRelinkedFilesReadSoundOrEmpty) {
    static const char unknown = 0;
    const koGeomTest::FileOfEveryPacket file;
    std::mt19937 random(7);
    int sound = 0;
    for (int seed = 0; seed < 1500; ++seed) {
        const MeshRead read = readMeshes(damaged(file, [&](Plan& a, Plan& b) {
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
        sound += read.ok && read.invalid.empty();
    }
    EXPECT_GT(sound, 0); // a link set to what it was
    EXPECT_LT(sound, 500);
}

} // namespace
} // namespace koGeom
