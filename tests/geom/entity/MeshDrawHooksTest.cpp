#include "geom/entity/MeshDrawHooks.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "tessar/debugdraw/DebugDraw.h"

namespace koGeom {
namespace {

// Records the address each operation received, the operations numbered in declaration order.
class RecordingDrawer : public MeshDrawInterface {
public:
    void dispose(int) override { calls.emplace_back(0, nullptr); }
    void drawMesh(const CompactMesh& mesh) override { calls.emplace_back(1, &mesh); }
    void drawAddMesh(const CompactMesh& mesh) override { calls.emplace_back(2, &mesh); }
    void drawAddMeshPtr(const CompactMesh* mesh) override { calls.emplace_back(3, mesh); }
    void drawTopoMesh(const TopoMesh& mesh) override { calls.emplace_back(4, &mesh); }
    void drawAddTopoMesh(const TopoMesh& mesh) override { calls.emplace_back(5, &mesh); }
    void drawAddTopoMeshPtr(const TopoMesh* mesh) override { calls.emplace_back(6, mesh); }
    std::vector<std::pair<int, const void*>> calls;
};

// One test, because the hooks keep the interface they first find for the whole process.
TEST(MeshDrawHooks, ForwardToTheFirstInterfaceFoundAndDrawNothingWithout) {
    // The hooks only pass the meshes' addresses through; two distinct addresses stand in for
    // a compact and a topological mesh.
    alignas(16) static unsigned char compactStorage[16];
    alignas(16) static unsigned char topoStorage[16];
    const auto& compact = *reinterpret_cast<const CompactMesh*>(compactStorage);
    const auto& topo = *reinterpret_cast<const TopoMesh*>(topoStorage);

    // No interface registered: nothing is drawn and nothing fails.
    ASSERT_EQ(koDebugDraw::loadIFace(meshDrawInterfaceName), nullptr);
    koDebugDraw::drawMesh(compact);

    // The failed lookup was not kept: an interface registered now is found.
    RecordingDrawer first;
    koDebugDraw::registerIFace(meshDrawInterfaceName, static_cast<MeshDrawInterface*>(&first));
    koDebugDraw::drawMesh(compact);
    koDebugDraw::drawAddMesh(compact);
    koDebugDraw::drawAddMeshPtr(&compact);
    koDebugDraw::drawTopoMesh(topo);
    koDebugDraw::drawAddTopoMesh(topo);
    koDebugDraw::drawAddTopoMeshPtr(nullptr);
    const std::vector<std::pair<int, const void*>> expected = {
        {1, compactStorage}, {2, compactStorage}, {3, compactStorage},
        {4, topoStorage},    {5, topoStorage},    {6, nullptr}};
    EXPECT_EQ(first.calls, expected);

    // Deliberate: the first interface found is kept; a later registration is not seen.
    RecordingDrawer second;
    koDebugDraw::registerIFace(meshDrawInterfaceName, static_cast<MeshDrawInterface*>(&second));
    // The host still owns the kept interface: the registry may forget it, the hooks do not.
    koDebugDraw::drawMesh(compact);
    koDebugDraw::registerIFace(meshDrawInterfaceName, nullptr);
    koDebugDraw::drawMesh(compact);
    EXPECT_EQ(first.calls.size(), 8u);
    EXPECT_TRUE(second.calls.empty());
}

} // namespace
} // namespace koGeom
