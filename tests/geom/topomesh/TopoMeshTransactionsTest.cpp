#include <gtest/gtest.h>

#include <new>
#include <random>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshModification.h"
#include "geom/topomesh/TopoMeshState.h"
#include "geom/topomesh/detail/TopoMeshImplAlloc.h"
#include "tessar/rtb/SignalClient.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshRecordFaces.h"

namespace koGeom {
namespace {

using koGeomTest::checkTopoMesh;
using koGeomTest::pictureOf;
using koGeomTest::TopoMeshPicture;
using koLinear::Point;
using Bulletin = TopoMeshTypedefs::BulletinType;
using StateRef = ko::Reference<TopoMeshState>;

const detail::TopoMeshImplAlloc& pools(const TopoMesh& mesh) {
    return dynamic_cast<const detail::TopoMeshImplAlloc&>(*mesh.getImpl()->allocator());
}

// Vertex, edge and face records out of the pools: live ones, copies, and records kept for
// saved states.
std::vector<std::size_t> recordsOut(const TopoMesh& mesh) {
    return {pools(mesh).vertexPool().numAllocated(), pools(mesh).edgePool().numAllocated(),
            pools(mesh).facePool().numAllocated()};
}

std::vector<std::size_t> liveRecords(const TopoMesh& mesh) {
    return {static_cast<std::size_t>(mesh.numVertices()), static_cast<std::size_t>(mesh.numEdges()),
            static_cast<std::size_t>(mesh.numFaces())};
}

void movePoint(TopoMesh& mesh, TopoMeshVertex v, const Point& p) {
    mesh.getImpl()->recordModified(v);
    v.data()->point = p;
}

template <class Handle>
Handle nth(Handle first, std::size_t n) {
    while (n-- > 0) {
        first = first.nextInMesh();
    }
    return first;
}

// One random edit made with the record primitives: a new vertex, a moved vertex, a freed
// isolated vertex, a new triangle, or a deleted face.
void randomEdit(TopoMesh& mesh, std::mt19937& rng) {
    std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
    const auto pick = [&rng](int count) { return static_cast<std::size_t>(rng() % count); };
    const int vertices = mesh.numVertices();
    switch (rng() % 5) {
        case 0:
            mesh.allocVertex(Point(coordinate(rng), coordinate(rng), coordinate(rng)));
            return;
        case 1:
            if (vertices > 0) {
                movePoint(mesh, nth(mesh.firstVertex(), pick(vertices)),
                          Point(coordinate(rng), 0, 0));
            }
            return;
        case 2:
            for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
                if (!v.firstEdge()) {
                    mesh.getImpl()->freeVertexRecord(v);
                    return;
                }
            }
            return;
        case 3:
            if (vertices >= 3) {
                std::vector<std::size_t> corners{pick(vertices), pick(vertices), pick(vertices)};
                if (corners[0] != corners[1] && corners[1] != corners[2] &&
                    corners[0] != corners[2]) {
                    koGeomTest::addFaceByRecords(mesh, {nth(mesh.firstVertex(), corners[0]),
                                                        nth(mesh.firstVertex(), corners[1]),
                                                        nth(mesh.firstVertex(), corners[2])});
                }
            }
            return;
        default:
            if (mesh.numFaces() > 0) {
                koGeomTest::deleteFaceByRecords(mesh, nth(mesh.firstFace(), pick(mesh.numFaces())));
            }
            return;
    }
}

struct Saved {
    StateRef state;
    TopoMeshPicture picture;
};

// Grows a tree of states from random earlier ones, drops references at random (so states are
// joined, cut off as leaves and removed as roots on either side of the live records), and
// returns to random states, comparing every record each time. At the end only the current
// state is left, and every record out of the pools is a live one.
TEST(TopoMeshTransactions, UndoAndRedoAcrossABranchingTreeRestoreEveryRecord) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 rng(seed);
        TopoMesh mesh;
        koGeomTest::addFacesByRecords(mesh, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}},
                                      {{0, 1, 2}, {2, 1, 3}});
        mesh.enableTransactions();
        std::vector<Saved> saved{{mesh.createState(), pictureOf(mesh)}};
        for (int step = 0; step < 120; ++step) {
            const unsigned action = rng() % 10;
            Saved& some = saved[rng() % saved.size()];
            if (action < 4 && saved.size() < 14) {
                mesh.setState(some.state);
                for (unsigned edits = 1 + rng() % 6; edits > 0; --edits) {
                    randomEdit(mesh, rng);
                }
                StateRef state = mesh.createState();
                saved.push_back({state, pictureOf(mesh)});
            } else if (action < 6 && saved.size() > 1) {
                saved.erase(saved.begin() + (&some - saved.data()));
            } else {
                mesh.setState(some.state);
                ASSERT_EQ(checkTopoMesh(mesh), "") << step;
                ASSERT_EQ(pictureOf(mesh), some.picture) << step;
            }
        }
        const StateRef current = mesh.createState();
        saved.clear();
        EXPECT_EQ(recordsOut(mesh), liveRecords(mesh));
        EXPECT_EQ(current->refs(), 1);
    }
}

TEST(TopoMeshTransactions, CreatedThenDeletedLeavesNoChange) {
    TopoMesh mesh;
    mesh.enableTransactions();
    const StateRef root = mesh.createState();
    mesh.getImpl()->freeVertexRecord(mesh.allocVertex());
    ko::unordered_map<TopoMeshEntity, Bulletin> changes;
    EXPECT_EQ(mesh.getChanges(changes), 0);
    EXPECT_EQ(mesh.createState(), root);
    EXPECT_EQ(recordsOut(mesh), liveRecords(mesh));
}

TEST(TopoMeshTransactions, ChangesReportTheFirstBulletinUnlessDeleted) {
    TopoMesh mesh;
    const TopoMeshVertex kept = mesh.allocVertex();
    const TopoMeshVertex gone = mesh.allocVertex();
    mesh.enableTransactions();
    const TopoMeshVertex made = mesh.allocVertex(); // created, then modified by its append
    movePoint(mesh, made, Point(1, 1, 1));
    movePoint(mesh, gone, Point(2, 2, 2));
    mesh.getImpl()->freeVertexRecord(gone); // modified, then deleted
    ko::unordered_map<TopoMeshEntity, Bulletin> changes{{TopoMeshEntity(), Bulletin::Created}};
    ASSERT_EQ(mesh.getChanges(changes), 3);
    EXPECT_EQ(changes.at(made), Bulletin::Created);
    EXPECT_EQ(changes.at(gone), Bulletin::Deleted);
    EXPECT_EQ(changes.at(kept), Bulletin::Modified); // its next link changed twice
    EXPECT_EQ(changes.find(made)->first.getType(), TopoMeshTypedefs::EntityType::Vertex);
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

TEST(TopoMeshTransactions, ModifyingTwiceKeepsTheFirstCopy) {
    TopoMesh mesh;
    const TopoMeshVertex v = mesh.allocVertex(Point(1, 2, 3));
    mesh.enableTransactions();
    const StateRef before = mesh.createState();
    movePoint(mesh, v, Point(4, 5, 6));
    movePoint(mesh, v, Point(7, 8, 9));
    const StateRef after = mesh.createState();
    EXPECT_EQ(recordsOut(mesh)[0], 2u);
    mesh.setState(before);
    EXPECT_EQ(v.point().x, 1.0);
    mesh.setState(after);
    EXPECT_EQ(v.point().z, 9.0);
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
        const StateRef later = mesh.createState();
        other.allocVertex();
        other.setState(later);
        EXPECT_EQ(other.numVertices(), 1);
    }
    other.setState(outlived);
    EXPECT_EQ(outlived->getTag(), 0);
    EXPECT_EQ(outlived->refs(), 1);

    TopoMesh off;
    ko::unordered_map<TopoMeshEntity, Bulletin> changes;
    EXPECT_FALSE(off.createState());
    EXPECT_EQ(off.getChanges(changes), 0);
    TopoMesh copy(other);
    EXPECT_FALSE(copy.transactionsEnabled());
}

struct Listener : koRTB::SignalClient {
    std::vector<TopoMeshModification::Type> types;
    void onModified(EntityModification& notice) {
        EXPECT_EQ(notice.getType(), EntityModificationType::Mesh);
        types.push_back(static_cast<TopoMeshModification&>(notice).getType());
    }
};

TEST(TopoMeshModification, ModifiedTellsListenersTheType) {
    TopoMesh mesh;
    Listener listener;
    mesh.modifiedSignal.connect(listener, &Listener::onModified);
    using Type = TopoMeshModification::Type;
    for (Type type : {Type::Transformed, Type::TopologyModified, Type::StateChanged}) {
        TopoMeshModification notice(&mesh, type);
        EXPECT_EQ(notice.getEntity(), &mesh);
        EXPECT_EQ(notice.transformed(), type == Type::Transformed);
        EXPECT_EQ(notice.topologyModified(), type != Type::Transformed);
        mesh.modified(notice);
    }
    EXPECT_EQ(listener.types,
              (std::vector<Type>{Type::Transformed, Type::TopologyModified, Type::StateChanged}));
}

} // namespace
} // namespace koGeom
