// Seeds of the half-edge mesh packet reader: closed and open meshes, an empty one, two meshes
// in one file, and a derived mesh's packets with a field per vertex (the names the fuzz target
// registers).

#include <initializer_list>
#include <vector>

#include "fuzz/seeds/SeedFiles.h"
#include "geom/topomesh/TopoMesh.h"

namespace {

using koGeom::TopoMesh;
using koGeom::TopoMeshVertex;

// A mesh of the given points and triangles (vertex indices, one orientation).
void build(TopoMesh& mesh, std::initializer_list<koLinear::Point> points,
           std::initializer_list<std::initializer_list<int>> triangles) {
    std::vector<TopoMeshVertex> v;
    for (const koLinear::Point& p : points) {
        v.push_back(mesh.allocVertex(p));
    }
    for (const auto& t : triangles) {
        const int* i = t.begin();
        mesh.allocTriangle(v[i[0]], v[i[1]], v[i[2]]);
    }
}

void tetrahedron(TopoMesh& mesh) {
    build(mesh, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
          {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
}

// Four triangles round a boundary centre, and a vertex of no face.
void openFan(TopoMesh& mesh) {
    build(mesh, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {-1, 1, 0}, {-1, 0, 0}, {9, 9, 9}},
          {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}, {0, 4, 5}});
}

class FieldMesh : public TopoMesh {
    void onWriteVertexPF(TopoMeshVertex, ioWriteContext& context) const override {
        context.writeInt(1);
    }
    const char* getPacketType() const override { return "fuzz.fields"; }
};

[[maybe_unused]] const bool registered = formworkFuzz::registerSeeds({
    {"topoMeshPacketFuzz", "closed",
     [](ioWriteContext& out) {
         TopoMesh mesh;
         tetrahedron(mesh);
         mesh.writePF(out);
     }},
    {"topoMeshPacketFuzz", "open",
     [](ioWriteContext& out) {
         TopoMesh mesh;
         openFan(mesh);
         mesh.writePF(out);
     }},
    {"topoMeshPacketFuzz", "emptyAndClosed",
     [](ioWriteContext& out) {
         TopoMesh empty;
         TopoMesh mesh;
         tetrahedron(mesh);
         empty.writePF(out);
         mesh.writePF(out);
     }},
    {"topoMeshPacketFuzz", "derived",
     [](ioWriteContext& out) {
         FieldMesh mesh;
         openFan(mesh);
         mesh.writePF(out);
     }},
});

} // namespace
