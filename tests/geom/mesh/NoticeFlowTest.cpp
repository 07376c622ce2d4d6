// How a change travels from a mesh edit to the listeners, end to end: the mesh drops what
// the notice declares stale before anyone hears of it, listeners run in connection order and
// see that state, and entities that forward changes break loops with the cause chain.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "geom/entity/Entity.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshModification.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::NoticeRecorder;

// What a listener can read of a compact mesh's derived data: the channels, then whether there
// are triangle normals, strips, fans, line strips, line strip starts and polygon starts.
std::string derivedState(const PointMesh& base, const EntityModification&) {
    const auto& mesh = static_cast<const CompactMesh&>(base);
    std::string state = koGeomTest::channelNames(mesh) + " ";
    for (bool present : {mesh.getTriangleNormals() != nullptr, mesh.getNumTriStrips() > 0,
                         mesh.getNumTriFans() > 0, mesh.getNumLineStrips() > 0,
                         mesh.getLineStrips().numStarts() > 0, mesh.getPolys().numStarts() > 0}) {
        state += present ? '1' : '0';
    }
    return state;
}

// A cube with every kind of derived data: normals, colours and a client channel side by side,
// triangle normals, one strip, one fan, one line strip and one polygon, with their starts.
void decorate(CompactMesh& mesh) {
    koGeomTest::makeCube(mesh);
    mesh.allocNormalArray();
    mesh.allocColourArray();
    ASSERT_NE(mesh.allocAttributes("weights", 1), nullptr);
    mesh.allocTriangleNormalArray();
    const int strip[4] = {0, 1, 2, 3};
    for (MeshSequence* sequence :
         {&mesh.getTriStrips(), &mesh.getTriFans(), &mesh.getLineStrips(), &mesh.getPolys()}) {
        sequence->points().setCount(4);
        std::copy_n(strip, 4, sequence->points().elements());
        sequence->lengths().setCount(1);
        sequence->lengths().elements()[0] = 4;
        sequence->invalidate();
    }
    mesh.getLineStripStarts();
    mesh.getPolyStarts();
}

TEST(NoticeFlow, ListenersSeeStaleDataAlreadyDroppedInConnectionOrder) {
    using Type = MeshModification::Type;
    using Vouch = void (MeshModification::*)();
    struct Case {
        Type type;
        std::vector<Vouch> vouch;
        const char* expected;
    };
    // A topology change drops every sequence's starts and whatever the sender does not vouch
    // for (colours and weights side by side here); a transform drops the normals and the
    // triangle normals only.
    const Vouch normals = &MeshModification::normalsValid;
    const Vouch lineStrips = &MeshModification::lineStripsValid;
    const Vouch triangleNormals = &MeshModification::triangleNormalsValid;
    for (const Case& c :
         {Case{Type::TopologyModified, {normals, lineStrips}, "vertices,normals 000100"},
          Case{Type::TopologyModified, {triangleNormals}, "vertices 100000"},
          Case{Type::Transformed, {}, "vertices,colours,weights 011111"},
          Case{Type::Transformed, {triangleNormals}, "vertices,colours,weights 111111"}}) {
        ko::Reference<CompactMesh> mesh(new CompactMesh);
        decorate(*mesh);
        NoticeRecorder first(*mesh, derivedState), second(*mesh, derivedState);
        MeshModification mod(mesh.get(), c.type, nullptr);
        for (Vouch vouch : c.vouch) {
            (mod.*vouch)();
        }
        mesh->modified(mod);
        for (const NoticeRecorder* recorder : {&first, &second}) {
            ASSERT_EQ(recorder->seen.size(), 1u);
            EXPECT_EQ(recorder->seen[0].snapshot, c.expected);
            EXPECT_EQ(recorder->seen[0].notice, &mod);
        }
        EXPECT_LT(first.seen[0].call, second.seen[0].call);
        // The notice the listeners received already says that the dropped channels changed.
        for (const char* name : {"normals", "colours", "weights"}) {
            EXPECT_EQ(mod.areVertexAttribsModified(name),
                      std::string(c.expected).find(name) == std::string::npos);
        }
    }
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

} // namespace
} // namespace koGeom
