#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::checkTopoMesh;
using koGeomTest::describeTopoMesh;
using koGeomTest::TopoMeshShape;
using koLinear::Point;
using Vertices = std::vector<TopoMeshVertex>;

// Two triangles over the unit square, split by the diagonal 0-2.
const TopoMeshShape square{
    "square", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}}};
const TopoMeshShape quad{"quad", square.points, {{0, 1, 2, 3}}};
const TopoMeshShape triangle{"triangle", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {{0, 1, 2}}};
// Two quads sharing the path 0-4-2 through a vertex 4 of valence 2.
const TopoMeshShape bent{
    "bent", {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}, {1, 1, 0}}, {{0, 1, 2, 4}, {0, 4, 2, 3}}};
// Two triangles apart; their edges 0-1 and 3-4 lie on the same segment, opposite ways.
const TopoMeshShape apart{"apart",
                          {{0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, {1, 0, 0}, {0, 0, 0}, {0.5, -1, 0}},
                          {{0, 1, 2}, {3, 4, 5}}};
// The second triangle shares the end of the edge 0-1 (vertex 1), or its start (vertex 0).
const TopoMeshShape touchingAtEnd{"touchingAtEnd", apart.points, {{0, 1, 2}, {1, 4, 5}}};
const TopoMeshShape touchingAtStart{"touchingAtStart", apart.points, {{0, 1, 2}, {3, 0, 5}}};
const TopoMeshShape pentagon{
    "pentagon", {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}}, {{0, 1, 2, 3, 4}}};
const TopoMeshShape points{"points", square.points, {}};
// One face running along both sides of the edge 1-2.
const TopoMeshShape slit{"slit", triangle.points, {{0, 1, 2, 1}}};

// Every record of a mesh, its address and bytes, in list order: equal snapshots mean the same
// records hold the same links and points.
struct RecordSnapshot {
    std::vector<std::pair<const void*, std::vector<unsigned char>>> records;
    bool operator==(const RecordSnapshot&) const = default;
};

template <class Handle>
void addList(RecordSnapshot& snapshot, Handle head) {
    for (Handle h = head; h; h = h.nextInMesh()) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(h.data());
        snapshot.records.emplace_back(h.data(),
                                      std::vector<unsigned char>(bytes, bytes + sizeof(*h.data())));
    }
}

RecordSnapshot snapshotOf(const TopoMesh& mesh) {
    RecordSnapshot snapshot;
    addList(snapshot, mesh.firstVertex());
    addList(snapshot, mesh.firstEdge());
    addList(snapshot, mesh.firstFace());
    return snapshot;
}

struct EditCase {
    const char* name;
    TopoMeshShape shape;
    std::function<void(TopoMesh&, const Vertices&)> edit;
    std::string expected;
    // False where the edit leaves links to a freed record on purpose.
    bool sound = true;
};

TopoMeshEdge edge(const Vertices& v, int from, int to) {
    const TopoMeshEdge e = TopoMesh::findEdge(v[from], v[to]);
    EXPECT_TRUE(e) << from << ">" << to;
    return e;
}

const Point p9(9, 9, 9);

const std::vector<EditCase> editCases = {
    {"SwapEdge", square, [](auto& m, auto& v) { EXPECT_TRUE(m.swapEdge(edge(v, 0, 2))); },
     "faces 1 3 0,3 1 2; open 0>1 1>2 2>3 3>0; first 0>1 1>3 2>3 3>1"},
    {"SubdivideFaceAroundCentre", quad, [](auto& m, auto&) { m.subdivideFace(m.firstFace(), p9); },
     "faces 0 1 4,1 2 4,2 3 4,3 0 4; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0 4>0"},
    {"SubdivideEdge", square, [](auto& m, auto& v) { m.subdivideEdge(edge(v, 0, 2), p9); },
     "faces 0 1 2 4,0 4 2 3; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>4 3>0 4>2"},
    {"SubdivideBoundaryEdge", square, [](auto& m, auto& v) { m.subdivideEdge(edge(v, 0, 1), p9); },
     "faces 0 4 1 2,0 2 3; open 0>4 1>2 2>3 3>0 4>1; first 0>4 1>2 2>0 3>0 4>1"},
    {"SubdivideFaceBetweenCorners", quad,
     [](auto& m, auto& v) {
         const TopoMeshEdge a = m.subdivideFace(m.firstFace(), v[0], v[2]);
         EXPECT_EQ(a.v1(), v[0]);
     },
     "faces 0 2 3,2 0 1; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0"},
    {"SplitFace", quad, [](auto& m, auto& v) { m.splitFace(edge(v, 0, 1), edge(v, 2, 3)); },
     "faces 0 2 3,2 0 1; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0"},
    {"SubdivideFaceOverEdge", triangle,
     [](auto& m, auto& v) { m.subdivideFace(m.firstFace(), edge(v, 0, 1), p9); },
     "faces 1 2 0 3,0 1 3; open 0>1 1>2 2>0; first 0>1 1>2 2>0 3>1"},
    {"CutFaceThroughPoints", quad,
     [](auto& m, auto& v) {
         ko::vector<TopoMeshVertex> made;
         const TopoMeshFace far = m.subdivideFace(m.firstFace(), v[0], v[2], {p9, p9}, made);
         EXPECT_EQ(far, m.firstFace().nextInMesh());
         EXPECT_EQ(made.size(), 2u);
     },
     "faces 0 4 5 2 3,2 5 4 0 1; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0 4>5 5>2"},
    {"CutFaceBesideSideFromItsOrigin", quad,
     [](auto& m, auto& v) {
         ko::vector<TopoMeshVertex> made;
         m.subdivideFace(m.firstFace(), v[0], v[1], {p9, p9}, made);
         EXPECT_EQ(made, (ko::vector<TopoMeshVertex>{v[3].nextInMesh(), made[0].nextInMesh()}));
     },
     "faces 1 2 3 0 4 5,0 1 5 4; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0 4>5 5>1"},
    {"CutFaceBesideSideFromItsEnd", quad,
     [](auto& m, auto& v) {
         // The apex over the side is made first and holds the last point.
         ko::vector<TopoMeshVertex> made;
         m.subdivideFace(m.firstFace(), v[1], v[0], {p9, p9}, made);
         EXPECT_EQ(made, (ko::vector<TopoMeshVertex>{made[1].nextInMesh(), v[3].nextInMesh()}));
     },
     "faces 1 2 3 0 4 5,0 1 5 4; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0 4>5 5>1"},
    {"DeleteEdge", square, [](auto& m, auto& v) { EXPECT_TRUE(m.deleteEdge(edge(v, 0, 2))); },
     "faces 2 3 0 1; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0"},
    {"DeleteFace", square, [](auto& m, auto&) { m.deleteFace(m.firstFace()); },
     "faces 0 2 3; open 0>2 2>3 3>0; first 0>2 - 2>3 3>0"},
    {"DeleteVertexOfValenceOne", square,
     [](auto& m, auto& v) { EXPECT_FALSE(m.deleteVertex(v[1])); },
     "faces 0 1 2; open 0>1 1>2 2>0; first 0>1 1>2 2>0"},
    {"DeleteVertexOfValenceThree", koGeomTest::tetrahedron(),
     [](auto& m, auto& v) { EXPECT_TRUE(m.deleteVertex(v[0])); },
     "faces 0 1 2,1 0 2; open; first 0>1 1>2 2>0"},
    {"ContractEdge", square,
     [](auto& m, auto& v) { EXPECT_EQ(m.contractEdge(edge(v, 0, 1)), v[1]); },
     "faces 0 1 2; open 0>1 1>2 2>0; first 0>1 1>2 2>0"},
    {"SplitEdge", square, [](auto& m, auto& v) { m.splitEdge(edge(v, 0, 2)); },
     "faces 4 1 5,0 2 3; open 4>1 1>5 5>4 0>2 2>3 3>0; first 0>2 1>5 2>3 3>0 4>1 5>4"},
    {"SplitVertexAtEdge", square, [](auto& m, auto& v) { m.splitVertex(v[0], edge(v, 0, 2)); },
     "faces 4 1 2,0 2 3; open 4>1 1>2 2>4 0>2 2>3 3>0; first 0>2 1>2 2>4 3>0 4>1"},
    {"SplitVertexBetweenEdges", koGeomTest::fan(4, true),
     [](auto& m, auto& v) { m.splitVertex(edge(v, 2, 0), edge(v, 0, 4)); },
     "faces 0 1 2,5 2 3,5 3 4,0 4 1; open 1>2 2>0 5>2 2>3 3>4 4>5 0>4 4>1; first 0>4 1>2 2>0 3>5 "
     "4>5 5>2"},
    {"MergeVerticesFreeingBoth", apart,
     [](auto& m, auto& v) { m.mergeVertices(edge(v, 0, 1), edge(v, 3, 4)); },
     "faces 0 1 2,1 0 3; open 1>2 2>0 0>3 3>1; first 0>1 1>2 2>0 3>1"},
    {"MergeFaces", bent, [](auto& m, auto& v) { m.mergeFaces(edge(v, 0, 4), edge(v, 4, 2)); },
     "faces 2 3 0 1; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0"},
    {"DeleteValenceTwoVertex", bent, [](auto& m, auto& v) { m.deleteValenceTwoVertex(v[4]); },
     "faces 0 1 2,0 2 3; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>0 3>0"},
    {"DeleteValenceOneBoundaryVertex", pentagon,
     [](auto& m, auto& v) { m.deleteValenceTwoVertex(v[1]); },
     "faces 0 1 2 3; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>3 3>0"},
    {"AllocTrianglesOfSameOrientationStayUnpaired", points,
     [](auto& m, auto& v) {
         m.allocTriangle(v[0], v[1], v[2]);
         m.allocTriangle(v[0], v[3], v[2]);
     },
     "faces 0 1 2,0 3 2; open 0>1 1>2 2>0 0>3 3>2 2>0; first 0>1 1>2 2>0 3>2"},
    {"AllocQuadAndFaceBeside", points,
     [](auto& m, auto& v) {
         m.allocQuad(v[0], v[1], v[2], v[3]);
         const TopoMeshVertex extra = m.allocVertex(Point(2, 0, 0));
         m.allocFace({v[1], extra, v[2]});
         EXPECT_FALSE(m.allocFace({}));
     },
     "faces 0 1 2 3,1 4 2; open 0>1 2>3 3>0 1>4 4>2; first 0>1 1>2 2>3 3>0 4>2"},
    {"SetPointAndFirstEdge", square,
     [](auto& m, auto& v) {
         m.setPoint(v[0], p9);
         m.setFirstEdge(v[0], edge(v, 0, 2));
         EXPECT_EQ(v[0].point(), p9);
     },
     "faces 0 1 2,0 2 3; open 0>1 1>2 2>3 3>0; first 0>2 1>2 2>0 3>0"},
    {"MergeVerticesSharingTheEnd", touchingAtEnd,
     [](auto& m, auto& v) {
         // Vertex 1 has two separate wedges, so its fan does not reach the half-edge 1-4.
         m.mergeVertices(edge(v, 0, 1), m.firstFace().nextInMesh().firstEdge());
     },
     "faces 0 1 2,1 0 4; open 1>2 2>0 0>4 4>1; first 0>1 1>2 2>0 - 4>1"},
    {"MergeVerticesSharingTheStart", touchingAtStart,
     [](auto& m, auto& v) { m.mergeVertices(edge(v, 0, 1), edge(v, 3, 0)); },
     "faces 0 1 2,1 0 4; open 1>2 2>0 0>4 4>1; first 0>1 1>2 2>0 - 4>1"},
    {"MergeVerticesSharingBoth", square,
     [](auto& m, auto& v) {
         const TopoMeshEdge e1 = edge(v, 0, 2);
         const TopoMeshEdge e2 = e1.twin();
         for (TopoMeshEdge e : {e1, e2}) {
             m.getImpl()->recordModified(e);
             e.data()->twin = nullptr;
         }
         m.mergeVertices(e1, e2);
     },
     "faces 0 1 2,0 2 3; open 0>1 1>2 2>3 3>0; first 0>1 1>2 2>0 3>0"},
    {"DeleteVertexOfValenceFourFreesOnlyTheVertexDeliberate", koGeomTest::fan(4, true),
     [](auto& m, auto& v) {
         EXPECT_FALSE(m.deleteVertex(v[0]));
         EXPECT_EQ(m.numVertices(), 4);
     },
     "faces ? 0 1,? 1 2,? 2 3,? 3 0; open 0>1 1>2 2>3 3>0; first 0>1 1>? 2>? 3>?", false},
    {"ContractEdgeLeavesTheTwinSideDeliberate", koGeomTest::tetrahedron(),
     [](auto& m, auto& v) {
         const TopoMeshEdge twin = edge(v, 1, 0);
         EXPECT_EQ(m.contractEdge(edge(v, 0, 1)), v[1]);
         EXPECT_FALSE(twin.twin());
         EXPECT_EQ(twin.v1(), v[1]);
         EXPECT_EQ(twin.v2(), v[1]);
         EXPECT_EQ(twin.face().numVertices(), 3);
     },
     "faces 0 1 0,0 1 2,0 2 1; open 0>0; first 0>2 1>0 2>0"},
    // A third face over an edge that has two already does not take one of its half-edges.
    {"NewFaceLeavesAPairedEdgeAlone", square,
     [](auto& m, auto& v) { m.allocTriangle(v[2], v[0], m.allocVertex(p9)); },
     "faces 0 1 2,0 2 3,2 0 4; open 0>1 1>2 2>3 3>0 2>0 0>4 4>2; first 0>1 1>2 2>0 3>0 4>2"},
    // A face passing corner 1 twice must not leave the corner's first edge on the freed pass.
    {"DeleteFacePassingACornerTwice", slit, [](auto& m, auto&) { m.deleteFace(m.firstFace()); },
     "faces; open; first - - -"},
    // deleteEdge checks only for a twin: on a face running along both sides of one edge it
    // frees the face itself, leaving its other half-edges on no face.
    {"DeleteEdgeWithinOneFaceFreesThatFaceDeliberate", slit,
     [](auto& m, auto& v) { EXPECT_TRUE(m.deleteEdge(edge(v, 0, 1))); },
     "faces; open; first - 1>2 2>1", false},
    {"DeleteFacesInsideTheMesh", koGeomTest::quadGrid(4, 4, false),
     [](auto& m, auto& v) {
         ko::unordered_set<TopoMeshFace> region;
         for (TopoMeshEdgeVertexIterator it(v[12]); it.valid(); it.next()) {
             region.insert(it.edge().face());
         }
         ko::vector<TopoMeshEdge> border;
         for (TopoMeshEdge e = m.firstEdge(); e; e = e.nextInMesh()) {
             if (e.twin() && region.count(e.twin().face()) && !region.count(e.face())) {
                 border.push_back(e);
             }
         }
         m.deleteFaces(region, border);
         EXPECT_EQ(m.numVertices(), 24);
         EXPECT_EQ(m.numEdges(), 64 - 16);
         for (TopoMeshEdge e : border) {
             EXPECT_FALSE(e.twin());
             EXPECT_EQ(e.v1().firstEdge(), e);
         }
     },
     ""},
};

// Each edit gives the links worked out by hand; with transactions on, going back to the state
// before it restores every record byte for byte, and going forward again restores the edit.
TEST(TopoMeshEdit, EditsGiveTheirLinksAndUndoRecordByRecord) {
    for (const EditCase& c : editCases) {
        SCOPED_TRACE(c.name);
        TopoMesh plain;
        c.edit(plain, koGeomTest::buildTopoMesh(plain, c.shape));
        ASSERT_EQ(checkTopoMesh(plain).empty(), c.sound) << checkTopoMesh(plain);
        if (!c.expected.empty()) {
            EXPECT_EQ(describeTopoMesh(plain), c.expected);
        }

        TopoMesh mesh;
        const Vertices vertices = koGeomTest::buildTopoMesh(mesh, c.shape);
        mesh.enableTransactions();
        const ko::Reference<TopoMeshState> before = mesh.createState();
        const RecordSnapshot original = snapshotOf(mesh);
        c.edit(mesh, vertices);
        EXPECT_EQ(describeTopoMesh(mesh), describeTopoMesh(plain));
        const RecordSnapshot edited = snapshotOf(mesh);
        const ko::Reference<TopoMeshState> after = mesh.createState();
        mesh.setState(before);
        ASSERT_EQ(checkTopoMesh(mesh), "");
        EXPECT_TRUE(snapshotOf(mesh) == original);
        mesh.setState(after);
        EXPECT_TRUE(snapshotOf(mesh) == edited);
    }
}

// Edits applied outside their preconditions, where doing the literal steps would corrupt the
// mesh or read a missing record: each leaves every record as it was.
TEST(TopoMeshEdit, EditsOutsideTheirPreconditionsChangeNothing) {
    const std::vector<EditCase> cases = {
        {"SplitBoundaryEdge", square, [](auto& m, auto& v) { m.splitEdge(edge(v, 0, 1)); }, ""},
        {"SplitVertexAtBoundaryEdge", square,
         [](auto& m, auto& v) { EXPECT_FALSE(m.splitVertex(v[0], edge(v, 0, 1))); }, ""},
        {"DeleteBoundaryEdge", square,
         [](auto& m, auto& v) { EXPECT_FALSE(m.deleteEdge(edge(v, 0, 1))); }, ""},
        {"DeleteValenceTwoVertexBesideTriangle", square,
         [](auto& m, auto& v) { m.deleteValenceTwoVertex(v[1]); }, ""},
        {"SwapBoundaryEdge", square,
         [](auto& m, auto& v) { EXPECT_FALSE(m.swapEdge(edge(v, 0, 1))); }, ""},
        {"SplitFaceAtOneCorner", quad,
         [](auto& m, auto& v) { m.splitFace(edge(v, 0, 1), edge(v, 0, 1)); }, ""},
        {"SplitFaceAcrossTwoFaces", square,
         [](auto& m, auto& v) { m.splitFace(edge(v, 0, 1), edge(v, 2, 3)); }, ""},
        {"SubdivideFaceAtAnotherFacesCorner", square,
         [](auto& m, auto& v) {
             EXPECT_FALSE(m.subdivideFace(m.firstFace(), v[0], v[3]));
             EXPECT_FALSE(m.subdivideFace(m.firstFace(), v[3], v[1], {p9}));
         },
         ""},
        {"MergeFacesOfEdgesApart", bent,
         [](auto& m, auto& v) { m.mergeFaces(edge(v, 0, 4), edge(v, 2, 3)); }, ""},
        {"DeleteBoundaryVertexBetweenTwoQuads", koGeomTest::quadGrid(2, 1, false),
         [](auto& m, auto& v) {
             ASSERT_EQ(v[1].valence(), 2);
             m.deleteValenceTwoVertex(v[1]);
         },
         ""},
    };
    for (const EditCase& c : cases) {
        SCOPED_TRACE(c.name);
        TopoMesh mesh;
        const Vertices vertices = koGeomTest::buildTopoMesh(mesh, c.shape);
        const RecordSnapshot original = snapshotOf(mesh);
        c.edit(mesh, vertices);
        EXPECT_TRUE(snapshotOf(mesh) == original);
    }
}

// The rules of findFace in order, on a closed fan of four triangles round vertex 0.
TEST(TopoMeshEdit, FindFaceTriesEachRuleInTurn) {
    TopoMesh mesh;
    const Vertices v = koGeomTest::buildTopoMesh(mesh, koGeomTest::fan(4, true));
    const auto face = [&](int a, int b) { return edge(v, a, b).face(); };
    EXPECT_EQ(TopoMesh::findFace(edge(v, 0, 1), edge(v, 1, 2)), face(0, 1));
    EXPECT_EQ(TopoMesh::findFace(edge(v, 0, 2), edge(v, 1, 2)), face(1, 2));
    EXPECT_EQ(TopoMesh::findFace(edge(v, 1, 2), edge(v, 0, 2)), face(1, 2));
    EXPECT_FALSE(TopoMesh::findFace(edge(v, 1, 2), edge(v, 3, 4)));
    EXPECT_EQ(TopoMesh::findFace(edge(v, 0, 2), edge(v, 1, 0)), face(0, 1));
    EXPECT_FALSE(TopoMesh::findFace(edge(v, 0, 3), edge(v, 1, 0)));
}

} // namespace
} // namespace koGeom
