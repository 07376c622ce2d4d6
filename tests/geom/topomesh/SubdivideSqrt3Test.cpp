#include "geom/topomesh/SubdivideSqrt3.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koLinear::Point;

std::vector<Point> pointsOf(const TopoMesh& mesh) {
    std::vector<Point> points;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        points.push_back(v.point());
    }
    return points;
}

// The undirected edges between two of the first `numOld` vertices of the list.
int edgesBetweenOld(const TopoMesh& mesh, int numOld) {
    std::set<TopoMeshVertex> old;
    for (TopoMeshVertex v = mesh.firstVertex(); static_cast<int>(old.size()) < numOld;
         v = v.nextInMesh()) {
        old.insert(v);
    }
    int count = 0;
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        count += e.isPrimary() && old.count(e.v1()) != 0 && old.count(e.v2()) != 0 ? 1 : 0;
    }
    return count;
}

TEST(SubdivideSqrt3, ClosedTorusTriplesFacesAroundCentroidsFlipsEveryOldEdgeAndUndoes) {
    TopoMesh mesh;
    koGeomTest::buildTopoMesh(mesh, koGeomTest::torus(6, 4));
    const int v = mesh.numVertices();
    const int f = mesh.numFaces();
    std::vector<Point> expected = pointsOf(mesh);
    for (TopoMeshFace face = mesh.firstFace(); face; face = face.nextInMesh()) {
        expected.push_back(face.centroid());
    }
    mesh.enableTransactions();
    const ko::Reference<TopoMeshState> before = mesh.createState();
    const koGeomTest::TopoMeshPicture original = koGeomTest::pictureOf(mesh);

    subdivideSqrt3(mesh, Sqrt3Vertices::Kept);

    ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
    EXPECT_EQ(mesh.numFaces(), 3 * f);
    EXPECT_EQ(mesh.numEdges(), 9 * f); // three half-edges a face, all paired
    EXPECT_EQ(edgesBetweenOld(mesh, v), 0);
    // The old vertices unmoved and first, then one centre per old face in face order.
    EXPECT_EQ(pointsOf(mesh), expected);
    for (TopoMeshVertex vertex = mesh.firstVertex(); vertex; vertex = vertex.nextInMesh()) {
        EXPECT_EQ(vertex.valence(), 6);
    }
    // The step is recorded like any edit: setState takes it back.
    mesh.createState();
    mesh.setState(before);
    EXPECT_EQ(koGeomTest::pictureOf(mesh), original);
}

TEST(SubdivideSqrt3, RelaxedOctahedronCornerMovesByTheRuleForValenceFour) {
    // Each corner's four neighbours sum to the origin, so it moves to (1 - a) p with
    // a = (4 - 2 cos(pi / 2)) / 9 = 4 / 9; the centres are placed before any corner moves.
    TopoMesh mesh;
    koGeomTest::buildTopoMesh(mesh, koGeomTest::sphere(0));
    subdivideSqrt3(mesh, Sqrt3Vertices::Relaxed);
    ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
    const std::vector<Point> after = pointsOf(mesh);
    ASSERT_EQ(after.size(), 14u);
    EXPECT_NEAR(after[0].x, 5.0 / 9.0, 1e-15);
    EXPECT_EQ(after[0].y, 0.0);
    EXPECT_NEAR(after[5].z, -5.0 / 9.0, 1e-15);
    EXPECT_NEAR(after[6].x, 1.0 / 3.0, 1e-15);
}

TEST(SubdivideSqrt3, OpenGridKeepsItsBoundaryEdgesVerticesAndEulerCharacteristic) {
    for (const Sqrt3Vertices rule : {Sqrt3Vertices::Kept, Sqrt3Vertices::Relaxed}) {
        SCOPED_TRACE(rule == Sqrt3Vertices::Kept ? "kept" : "relaxed");
        TopoMesh mesh;
        koGeomTest::TopoMeshShape grid = koGeomTest::quadGrid(3, 3, true);
        grid.points[5].z = 1.0;
        koGeomTest::buildTopoMesh(mesh, grid);
        subdivideSqrt3(mesh, rule);
        ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
        EXPECT_EQ(edgesBetweenOld(mesh, 16), 12); // the boundary of the 3 x 3 grid
        // V - E + F, E being the paired half-edges / 2 and the 12 boundary ones.
        EXPECT_EQ(mesh.numVertices() - (mesh.numEdges() - 12) / 2 - 12 + mesh.numFaces(), 1);
        // Of the 16 old vertices only the 4 interior ones (5, 6, 9, 10) move, and only when
        // relaxed: vertex 5, raised off the plane, and its three interior neighbours.
        const std::vector<Point> after = pointsOf(mesh);
        for (std::size_t i = 0; i < 16; ++i) {
            const bool interior = i == 5 || i == 6 || i == 9 || i == 10;
            EXPECT_EQ(after[i] == grid.points[i], !interior || rule == Sqrt3Vertices::Kept) << i;
        }
    }
}

} // namespace
} // namespace koGeom
