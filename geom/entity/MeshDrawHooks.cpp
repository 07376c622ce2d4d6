#include "geom/entity/MeshDrawHooks.h"

#include "tessar/debugdraw/DebugDraw.h"

namespace koDebugDraw {

namespace {

// The interface found by the first successful lookup. A failed lookup is not kept, so a
// host that registers its interface late is still found.
koGeom::MeshDrawInterface* keptInterface = nullptr;

koGeom::MeshDrawInterface* meshDrawInterface() {
    if (keptInterface == nullptr) {
        keptInterface =
            static_cast<koGeom::MeshDrawInterface*>(loadIFace(koGeom::meshDrawInterfaceName));
    }
    return keptInterface;
}

// Forwards to `operation` of the interface, or draws nothing when the host offers none.
template <class Operation, class Mesh>
void forward(Operation operation, const Mesh& mesh) {
    if (koGeom::MeshDrawInterface* drawer = meshDrawInterface()) {
        (drawer->*operation)(mesh);
    }
}

} // namespace

void drawMesh(const koGeom::CompactMesh& mesh) {
    forward(&koGeom::MeshDrawInterface::drawMesh, mesh);
}

void drawAddMesh(const koGeom::CompactMesh& mesh) {
    forward(&koGeom::MeshDrawInterface::drawAddMesh, mesh);
}

void drawAddMeshPtr(const koGeom::CompactMesh* mesh) {
    forward(&koGeom::MeshDrawInterface::drawAddMeshPtr, mesh);
}

void drawTopoMesh(const koGeom::TopoMesh& mesh) {
    forward(&koGeom::MeshDrawInterface::drawTopoMesh, mesh);
}

void drawAddTopoMesh(const koGeom::TopoMesh& mesh) {
    forward(&koGeom::MeshDrawInterface::drawAddTopoMesh, mesh);
}

void drawAddTopoMeshPtr(const koGeom::TopoMesh* mesh) {
    forward(&koGeom::MeshDrawInterface::drawAddTopoMeshPtr, mesh);
}

} // namespace koDebugDraw
