#include "geom/entity/MeshDrawHooks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tessar/debugdraw/DebugDraw.h"

namespace koGeom {
namespace {

// Records which operation received which address.
class RecordingDrawer : public MeshDrawInterface {
public:
    struct Call {
        std::string operation;
        const void* mesh;
        bool operator==(const Call&) const = default;
    };

    void dispose(int) override { calls.push_back({"dispose", nullptr}); }
    void drawMesh(const CompactMesh& mesh) override { calls.push_back({"drawMesh", &mesh}); }
    void drawAddMesh(const CompactMesh& mesh) override { calls.push_back({"drawAddMesh", &mesh}); }
    void drawAddMeshPtr(const CompactMesh* mesh) override {
        calls.push_back({"drawAddMeshPtr", mesh});
    }
    void drawTopoMesh(const TopoMesh& mesh) override { calls.push_back({"drawTopoMesh", &mesh}); }
    void drawAddTopoMesh(const TopoMesh& mesh) override {
        calls.push_back({"drawAddTopoMesh", &mesh});
    }
    void drawAddTopoMeshPtr(const TopoMesh* mesh) override {
        calls.push_back({"drawAddTopoMeshPtr", mesh});
    }

    std::vector<Call> calls;
};

void drawThroughEveryHook(const CompactMesh& compact, const TopoMesh& topo) {
    koDebugDraw::drawMesh(compact);
    koDebugDraw::drawAddMesh(compact);
    koDebugDraw::drawAddMeshPtr(&compact);
    koDebugDraw::drawTopoMesh(topo);
    koDebugDraw::drawAddTopoMesh(topo);
    koDebugDraw::drawAddTopoMeshPtr(nullptr);
}

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
    drawThroughEveryHook(compact, topo);

    // The failed lookup was not kept: an interface registered now is found.
    RecordingDrawer first;
    koDebugDraw::registerIFace(meshDrawInterfaceName, static_cast<MeshDrawInterface*>(&first));
    drawThroughEveryHook(compact, topo);
    using Call = RecordingDrawer::Call;
    const std::vector<Call> expected = {
        {"drawMesh", compactStorage},       {"drawAddMesh", compactStorage},
        {"drawAddMeshPtr", compactStorage}, {"drawTopoMesh", topoStorage},
        {"drawAddTopoMesh", topoStorage},   {"drawAddTopoMeshPtr", nullptr},
    };
    EXPECT_EQ(first.calls, expected);

    // Deliberate: the first interface found is kept; a later registration is not seen.
    RecordingDrawer second;
    koDebugDraw::registerIFace(meshDrawInterfaceName, static_cast<MeshDrawInterface*>(&second));
    first.calls.clear();
    koDebugDraw::drawMesh(compact);
    EXPECT_EQ(first.calls, (std::vector<Call>{{"drawMesh", compactStorage}}));
    EXPECT_TRUE(second.calls.empty());

    // The host still owns the kept interface: the registry may forget it, the hooks do not.
    koDebugDraw::registerIFace(meshDrawInterfaceName, nullptr);
    koDebugDraw::drawAddMeshPtr(&compact);
    EXPECT_EQ(first.calls.size(), 2u);
}

} // namespace
} // namespace koGeom
