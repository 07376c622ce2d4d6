// The half-edge mesh packet reader on any bytes: a read through a registry with the default
// names and a derived mesh's names (whose hooks read fields and reject some records), as the
// input is and with its checksums put right. Every mesh handed over must be sound or empty:
// each is walked as editing code walks it (lists, face loops, vertex fans, ends of edges) and
// written again, and the file it makes must read back to the same bytes.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"
#include "fuzz/support/PacketSeals.h"
#include "geom/topomesh/TopoMesh.h"

namespace {

using koGeom::TopoMesh;
using MeshList = ko::vector<ko::Reference<TopoMesh>>;

// A derived mesh under the base name the seeds use: an integer per vertex, a negative one
// rejects the vertex packet.
class FieldMesh : public TopoMesh {
protected:
    void onReadVertexPF(koGeom::TopoMeshVertex, ioReadContext& context) override {
        if (context.readInt() < 0) {
            context.invalidPacket("negative field");
        }
    }
    void onWriteVertexPF(koGeom::TopoMeshVertex, ioWriteContext& context) const override {
        context.writeInt(1);
    }

private:
    const char* getPacketType() const override { return "fuzz.fields"; }
};

void readFieldMesh(ioReadContext& context) {
    auto* mesh = new FieldMesh;
    if (!mesh->readPF(context)) {
        delete mesh;
    }
}

MeshList readMeshes(const std::uint8_t* data, std::size_t size) {
    ioPacketRegistry registry;
    TopoMesh::registerTypes(registry, nullptr, nullptr);
    TopoMesh::registerTypes(registry, "fuzz.fields", &readFieldMesh);
    ioReadContext context(data, size);
    context.readAll(registry);
    MeshList meshes = TopoMesh::takeReadMeshes(registry);
    for (const auto& mesh : TopoMesh::takeReadMeshes(registry, "fuzz.fields")) {
        meshes.push_back(mesh);
    }
    return meshes;
}

// Walks everything a traversal follows; a broken link shows as a sanitizer report or a hang.
long walk(const TopoMesh& mesh) {
    long steps = 0;
    for (koGeom::TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        steps += v.valence() + v.onBoundary();
    }
    for (koGeom::TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        steps += (e.v2() == e.v1()) + (e.twin() && e.twin().twin() == e) + e.isPrimary();
    }
    for (koGeom::TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
        steps += f.hasBoundaryEdge() + f.isTriangle();
    }
    return steps;
}

std::vector<std::uint8_t> written(const MeshList& meshes) {
    ioWriteContext context;
    for (const auto& mesh : meshes) {
        mesh->writePF(context);
    }
    context.close();
    return context.buffer();
}

void readEveryWay(const std::uint8_t* data, std::size_t size) {
    const MeshList meshes = readMeshes(data, size);
    long steps = 0;
    for (const auto& mesh : meshes) {
        steps += walk(*mesh);
        const TopoMesh copy(*mesh);
        steps += copy.numEdges();
    }
    // What was read writes a file that reads back to itself.
    const std::vector<std::uint8_t> once = written(meshes);
    const MeshList again = readMeshes(once.data(), once.size());
    if (again.size() != meshes.size() || written(again) != once) {
        std::abort();
    }
    volatile long sink = steps;
    (void)sink;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    readEveryWay(data, size);
    std::vector<std::uint8_t> resealed(data, data + size);
    formworkFuzz::resealPackets(resealed);
    readEveryWay(resealed.data(), resealed.size());
    return 0;
}
