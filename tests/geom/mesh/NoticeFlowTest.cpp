// How a change travels from a mesh edit to the listeners, end to end: the mesh drops what
// the notice declares stale before anyone hears of it, listeners run in connection order and
// see that state, and entities that forward changes break loops with the cause chain.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "geom/entity/Entity.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshModification.h"
#include "geom/mesh/MoveableMesh.h"
#include "geom/spatial/BoundingBox.h"
#include "geom/storage/MoveableArrayAllocator.h"
#include "tessar/os/MoveableAllocator.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::NoticeRecorder;

// What a listener can read of a compact mesh's derived data.
std::string derivedState(const PointMesh& base, const EntityModification&) {
    const auto& mesh = static_cast<const CompactMesh&>(base);
    return koGeomTest::channelNames(mesh) +
           " triNormals=" + std::to_string(mesh.getTriangleNormals() != nullptr ? 1 : 0) +
           " strips=" + std::to_string(mesh.getNumTriStrips()) +
           " fans=" + std::to_string(mesh.getNumTriFans()) +
           " lineStrips=" + std::to_string(mesh.getNumLineStrips()) +
           " normalsAttr=" + std::to_string(mesh.getNormalsAttr() != nullptr ? 1 : 0);
}

// A cube with every kind of derived data: normals, colours, a client channel, triangle
// normals, one strip, one fan and one line strip.
void decorate(CompactMesh& mesh) {
    koGeomTest::makeCube(mesh);
    mesh.allocNormalArray();
    mesh.allocColourArray();
    ASSERT_NE(mesh.allocAttributes("weights", 1), nullptr);
    mesh.allocTriangleNormalArray();
    mesh.resizeTriStripArrays(4, 1);
    mesh.resizeTriFanArrays(3, 1);
    mesh.resizeLineStripArrays(2, 1);
    const int strip[4] = {0, 1, 2, 3};
    std::copy_n(strip, 4, mesh.getTriStripPoints());
    mesh.getTriStripLengths()[0] = 4;
    std::copy_n(strip, 3, mesh.getTriFanPoints());
    mesh.getTriFanLengths()[0] = 3;
    std::copy_n(strip, 2, mesh.getLineStripPoints());
    mesh.getLineStripLengths()[0] = 2;
}

TEST(NoticeFlow, ListenersSeeStaleDataAlreadyDroppedInConnectionOrder) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    decorate(*mesh);
    ASSERT_EQ(koGeomTest::channelNames(*mesh), "vertices,normals,colours,weights");

    NoticeRecorder first(*mesh, derivedState), second(*mesh, derivedState),
        third(*mesh, derivedState);

    // A topology change after which the sender vouches only for the colours and the line
    // strips: everything else derived from the old topology is stale.
    MeshModification mod(mesh.get(), MeshModification::Type::TopologyModified, nullptr);
    mod.coloursValid();
    mod.lineStripsValid();
    mesh->modified(mod);

    const std::string expected =
        "vertices,colours triNormals=0 strips=0 fans=0 lineStrips=1 normalsAttr=0";
    for (const NoticeRecorder* recorder : {&first, &second, &third}) {
        ASSERT_EQ(recorder->seen.size(), 1u);
        EXPECT_EQ(recorder->seen[0].snapshot, expected);
        EXPECT_EQ(recorder->seen[0].notice, &mod);
    }
    EXPECT_LT(first.seen[0].call, second.seen[0].call);
    EXPECT_LT(second.seen[0].call, third.seen[0].call);

    // The notice the listeners received already says that the dropped channels changed.
    EXPECT_TRUE(mod.areNormalsModified());
    EXPECT_TRUE(mod.areVertexAttribsModified("weights"));
    EXPECT_FALSE(mod.areColoursModified());
    EXPECT_EQ(derivedState(*mesh, mod), expected);
}

TEST(NoticeFlow, TransformDropsNormalsAndTriangleNormalsOnly) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    decorate(*mesh);
    NoticeRecorder recorder(*mesh, derivedState);

    MeshModification mod(mesh.get(), MeshModification::Type::Transformed, nullptr);
    mesh->modified(mod);
    ASSERT_EQ(recorder.seen.size(), 1u);
    EXPECT_EQ(recorder.seen[0].snapshot,
              "vertices,colours,weights triNormals=0 strips=1 fans=1 lineStrips=1 normalsAttr=0");
}

// An entity that keeps something derived from another and forwards its changes, unless it
// took part in the change already.
class Follower : public Entity {
public:
    void follow(Entity& source) {
        source.modifiedSignal.connect(signalClient, *this, &Follower::onModified);
    }
    int forwarded = 0;

private:
    void onModified(EntityModification& mod) {
        if (mod.entityPresent(this)) {
            return;
        }
        ++forwarded;
        resendMessage(mod);
    }
};

TEST(NoticeFlow, ForwardingAcrossThreeEntitiesStopsAtTheLoop) {
    // The mesh tells `near`, which tells `far`, which tells `near` again: the second time,
    // `near` finds itself in the cause chain and stops.
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::makeCube(*mesh);
    ko::Reference<Follower> near(new Follower), far(new Follower);
    near->follow(*mesh);
    far->follow(*near);
    near->follow(*far);

    std::vector<std::vector<const Entity*>> chains;
    koRTB::SignalClient observer;
    far->modifiedSignal.connect(observer, [&](EntityModification& mod) {
        std::vector<const Entity*> chain;
        for (const EntityModification* n = &mod; n != nullptr; n = n->causedBy()) {
            chain.push_back(n->getEntity());
        }
        chains.push_back(chain);
        EXPECT_EQ(mod.getType(), EntityModificationType::General);
        EXPECT_EQ(mod.getRoot()->getType(), EntityModificationType::Mesh);
    });

    MeshModification mod(mesh.get(), MeshModification::Type::AttributesModified, nullptr);
    mesh->modified(mod);
    EXPECT_EQ(near->forwarded, 1);
    EXPECT_EQ(far->forwarded, 1);
    ASSERT_EQ(chains.size(), 1u);
    EXPECT_EQ(chains[0], (std::vector<const Entity*>{far.get(), near.get(), mesh.get()}));
}

TEST(NoticeFlow, TypicalRoadThroughMoveableStorage) {
    koOS::MoveableAllocator chunks;
    ko::Reference<MoveableArrayAllocator> storage(new MoveableArrayAllocator(chunks));
    // The allocator is given while the mesh is empty, so every array is keyed by itself.
    ko::Reference<CompactMesh> mesh(new CompactMesh(storage));
    {
        ko::Reference<MoveableMesh> open(new MoveableMesh(*mesh));
        koGeomTest::makeCube(*mesh);
        mesh->allocNormalArray();
        mesh->allocTriangleNormalArray();
        BoundingBox box;
        mesh->getBoundingBox(box);
        EXPECT_EQ(box.maxPt().x, 1.0f);
    }
    // Idle: the arrays are out of memory.
    EXPECT_FALSE(storage->isMapped());
    EXPECT_EQ(mesh->getVertices(), nullptr);

    ko::Reference<MoveableMesh> open(new MoveableMesh(*mesh));
    ASSERT_NE(mesh->getVertices(), nullptr);
    EXPECT_EQ(mesh->getVertices()[7], (MeshVertex{1.0f, 1.0f, 1.0f}));

    // The host moves the mesh and says so.
    NoticeRecorder recorder(*mesh, derivedState);
    for (int i = 0; i < mesh->getNumVertices(); ++i) {
        mesh->getVertices()[i].x += 10.0f;
    }
    MeshModification moved(mesh.get(), MeshModification::Type::Transformed, nullptr);
    mesh->modified(moved);
    ASSERT_EQ(recorder.seen.size(), 1u);
    EXPECT_EQ(recorder.seen[0].snapshot,
              "vertices triNormals=0 strips=0 fans=0 lineStrips=0 normalsAttr=0");

    // The range is rescanned once after the notice...
    BoundingBox box;
    mesh->getBoundingBox(box);
    EXPECT_EQ(box.minPt().x, 10.0f);
    EXPECT_EQ(box.maxPt().x, 11.0f);
    // ...and then served from the cache: a change made without a notice is not seen.
    mesh->getVertices()[0].x = -50.0f;
    mesh->getBoundingBox(box);
    EXPECT_EQ(box.minPt().x, 10.0f);

    // Unmapped and mapped again, possibly elsewhere: the contents are intact.
    open.reset();
    open = new MoveableMesh(*mesh);
    EXPECT_EQ(mesh->getVertices()[0].x, -50.0f);
    EXPECT_EQ(mesh->getTriangles()[11], (MeshTriangle{{1, 7, 5}}));
}

} // namespace
} // namespace koGeom
