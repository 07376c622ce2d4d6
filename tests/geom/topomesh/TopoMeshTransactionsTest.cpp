#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshModification.h"
#include "geom/topomesh/TopoMeshState.h"
#include "tessar/rtb/SignalClient.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/TopoMeshChecker.h"

namespace koGeom {
namespace {

using koGeomTest::checkTopoMesh;
using koGeomTest::pictureOf;
using koGeomTest::recordsOut;
using koGeomTest::TopoMeshPicture;
using koLinear::Point;
using Bulletin = TopoMeshTypedefs::BulletinType;
using StateRef = ko::Reference<TopoMeshState>;

std::vector<std::size_t> liveRecords(const TopoMesh& mesh) {
    return {static_cast<std::size_t>(mesh.numVertices()), static_cast<std::size_t>(mesh.numEdges()),
            static_cast<std::size_t>(mesh.numFaces())};
}

void movePoint(TopoMesh& mesh, TopoMeshVertex v, const Point& p) {
    mesh.getImpl()->recordModified(v);
    v.data()->point = p;
}

// The first bulletin of a record stays unless it is deleted; created then deleted leaves
// nothing (and no record out); only the first modification makes a copy.
TEST(TopoMeshTransactions, RecordingKeepsTheFirstBulletinAndTheFirstCopy) {
    TopoMesh mesh;
    mesh.enableTransactions();
    const StateRef root = mesh.createState();
    mesh.getImpl()->freeVertexRecord(mesh.allocVertex());
    ko::unordered_map<TopoMeshEntity, Bulletin> changes{{TopoMeshEntity(), Bulletin::Created}};
    EXPECT_EQ(mesh.getChanges(changes), 0);
    EXPECT_EQ(mesh.createState(), root);
    const TopoMeshVertex kept = mesh.allocVertex(Point(1, 2, 3));
    const TopoMeshVertex gone = mesh.allocVertex();
    const StateRef before = mesh.createState();
    const TopoMeshVertex made = mesh.allocVertex();
    movePoint(mesh, made, Point(1, 1, 1));
    movePoint(mesh, kept, Point(4, 5, 6));
    movePoint(mesh, kept, Point(7, 8, 9));
    mesh.getImpl()->freeVertexRecord(gone);
    ASSERT_EQ(mesh.getChanges(changes), 3);
    EXPECT_EQ(changes.at(made), Bulletin::Created);
    EXPECT_EQ(changes.at(gone), Bulletin::Deleted);
    EXPECT_EQ(changes.at(kept), Bulletin::Modified);
    EXPECT_EQ(recordsOut(mesh)[0], 5u); // three records, one copy each of kept and gone
    const StateRef after = mesh.createState();
    EXPECT_EQ(mesh.createState(), after);
    mesh.setState(before);
    EXPECT_EQ(kept.point().x, 1.0);
    mesh.setState(after);
    EXPECT_EQ(kept.point().z, 9.0);
}

TEST(TopoMeshTransactions, FailedCreateStateKeepsThePendingChanges) {
    TopoMesh mesh;
    mesh.allocVertex();
    mesh.enableTransactions();
    const StateRef root = mesh.createState();
    movePoint(mesh, mesh.firstVertex(), Point(1, 1, 1));
    mesh.allocVertex();
    ko::unordered_map<TopoMeshEntity, Bulletin> changes;
    StateRef saved;
    for (std::size_t allowed = 0; !saved; ++allowed) {
        try {
            heapProbe::FailureScope scope(allowed);
            saved = mesh.createState();
        } catch (const std::bad_alloc&) {
            ASSERT_EQ(mesh.getChanges(changes), 2) << allowed;
        }
    }
    EXPECT_NE(saved, root);
    EXPECT_EQ(mesh.getChanges(changes), 0);
    mesh.setState(root);
    EXPECT_EQ(mesh.numVertices(), 1);
}

// Joining the steps P -> S -> C when S is dropped, with the live records on C's side (S
// dropped while C is current) or on P's side (S dropped after going back to P). Each case
// counts the vertex records out before and after the join and then checks both ends.
TEST(TopoMeshTransactions, JoiningTwoStepsKeepsOneCopyPerRecordOnEitherSide) {
    struct Case {
        const char* name;
        void (*first)(TopoMesh&);
        void (*second)(TopoMesh&);
        std::size_t before;
        std::size_t after;
    };
    const Case cases[] = {
        // The vertex keeps one copy of two.
        {"modified, modified", [](TopoMesh& m) { movePoint(m, m.firstVertex(), Point(1, 0, 0)); },
         [](TopoMesh& m) { movePoint(m, m.firstVertex(), Point(2, 0, 0)); }, 4, 3},
        // The new vertex needs no copy: it does not exist at P.
        {"created, modified", [](TopoMesh& m) { m.allocVertex(Point(1, 0, 0)); },
         [](TopoMesh& m) { movePoint(m, m.getImpl()->lastVertex(), Point(2, 0, 0)); }, 5, 4},
        // The vertex exists at neither end and goes back to the pool, and the old tail keeps
        // one copy of two.
        {"created, deleted", [](TopoMesh& m) { m.allocVertex(Point(1, 0, 0)); },
         [](TopoMesh& m) { m.getImpl()->freeVertexRecord(m.getImpl()->lastVertex()); }, 5, 3},
        // The deleted vertex keeps its copy from the first step.
        {"modified, deleted",
         [](TopoMesh& m) { movePoint(m, m.getImpl()->lastVertex(), Point(1, 0, 0)); },
         [](TopoMesh& m) { m.getImpl()->freeVertexRecord(m.getImpl()->lastVertex()); }, 4, 4},
    };
    for (const Case& c : cases) {
        for (bool backAtParent : {false, true}) {
            SCOPED_TRACE(testing::Message() << c.name << (backAtParent ? " at P" : " at C"));
            TopoMesh mesh;
            mesh.allocVertex(Point(0, 0, 0));
            mesh.allocVertex(Point(0, 1, 0));
            mesh.enableTransactions();
            const StateRef parent = mesh.createState();
            const TopoMeshPicture atParent = pictureOf(mesh);
            c.first(mesh);
            StateRef middle = mesh.createState();
            c.second(mesh);
            const StateRef child = mesh.createState();
            const TopoMeshPicture atChild = pictureOf(mesh);
            if (backAtParent) {
                mesh.setState(parent);
            }
            EXPECT_EQ(recordsOut(mesh)[0], c.before);
            middle.reset();
            EXPECT_EQ(recordsOut(mesh)[0], c.after);
            for (const StateRef& state : {parent, child, parent, child}) {
                mesh.setState(state);
                ASSERT_EQ(checkTopoMesh(mesh), "");
                EXPECT_EQ(pictureOf(mesh), state == parent ? atParent : atChild);
            }
        }
    }
}

TEST(TopoMeshTransactions, DroppedRootAndLeafGiveBackTheirRecordsAndTags) {
    TopoMesh mesh;
    mesh.allocVertex();
    const TopoMeshVertex gone = mesh.allocVertex();
    mesh.enableTransactions();
    mesh.getImpl()->freeVertexRecord(gone);
    movePoint(mesh, mesh.firstVertex(), Point(1, 1, 1));
    // The unreferenced root goes when its child becomes current, with the deleted vertex and
    // the copy of the moved one.
    const StateRef first = mesh.createState();
    EXPECT_EQ(first->getTag(), 1);
    EXPECT_EQ(recordsOut(mesh), liveRecords(mesh));
    // A leaf goes when nothing holds it and the mesh is elsewhere, with the vertex created
    // in the step into it; the next state reuses its tag.
    mesh.allocVertex();
    StateRef leaf = mesh.createState();
    EXPECT_EQ(leaf->getTag(), 0);
    mesh.setState(first);
    leaf.reset();
    EXPECT_EQ(recordsOut(mesh), liveRecords(mesh));
    movePoint(mesh, mesh.firstVertex(), Point(2, 2, 2));
    EXPECT_EQ(mesh.createState()->getTag(), 0);
    EXPECT_EQ(mesh.createState()->getTag(), 0);
}

// A caller that switches states with changes pending breaks the undo history, but the
// records those changes name stay valid: the vertex created in the step to a dropped leaf
// and moved while pending is not given back.
TEST(TopoMeshTransactions, SwitchingWithChangesPendingKeepsTheirRecords) {
    TopoMesh mesh;
    mesh.enableTransactions();
    const StateRef root = mesh.createState();
    const TopoMeshVertex v = mesh.allocVertex();
    StateRef leaf = mesh.createState();
    movePoint(mesh, v, Point(3, 3, 3));
    mesh.setState(root);
    leaf.reset();
    EXPECT_EQ(recordsOut(mesh)[0], 2u);
    const StateRef next = mesh.createState();
    mesh.setState(root);
    mesh.setState(next);
    EXPECT_EQ(v.point().x, 3.0);
    EXPECT_EQ(mesh.numVertices(), 0);
}

TEST(TopoMeshTransactions, StatesOfOtherMeshesAndOfGoneMeshesAreSafe) {
    StateRef outlived;
    TopoMesh other;
    other.enableTransactions();
    {
        TopoMesh mesh;
        mesh.enableTransactions();
        outlived = mesh.createState();
        mesh.allocVertex();
        other.setState(mesh.createState());
    }
    other.setState(outlived);
    EXPECT_EQ(other.numVertices(), 0);
    EXPECT_EQ(outlived->getTag(), 0);
    TopoMesh off;
    EXPECT_FALSE(off.createState());
    EXPECT_FALSE(TopoMesh(other).transactionsEnabled());
}

TEST(TopoMeshModification, ModifiedTellsListenersTheType) {
    using Type = TopoMeshModification::Type;
    TopoMesh mesh;
    koRTB::SignalClient listener;
    std::vector<Type> heard;
    mesh.modifiedSignal.connect(listener, [&heard](EntityModification& notice) {
        EXPECT_EQ(notice.getType(), EntityModificationType::Mesh);
        heard.push_back(static_cast<TopoMeshModification&>(notice).getType());
    });
    const std::vector<Type> sent = {Type::Transformed, Type::TopologyModified, Type::StateChanged};
    for (Type type : sent) {
        TopoMeshModification notice(&mesh, type);
        mesh.modified(notice);
    }
    EXPECT_EQ(heard, sent);
}

} // namespace
} // namespace koGeom
