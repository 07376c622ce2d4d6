#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "geom/topomesh/SubdivideSqrt3.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::TopoMeshShape;
using koLinear::Point;

std::vector<Point> pointsOf(const TopoMesh& mesh) {
    std::vector<Point> points;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        points.push_back(v.point());
    }
    return points;
}

// The undirected edges whose both ends are among the first `numOld` vertices of the list.
int edgesBetweenOld(const TopoMesh& mesh, int numOld) {
    std::vector<TopoMeshVertex> old;
    for (TopoMeshVertex v = mesh.firstVertex(); v && static_cast<int>(old.size()) < numOld;
         v = v.nextInMesh()) {
        old.push_back(v);
    }
    auto isOld = [&](TopoMeshVertex v) {
        for (TopoMeshVertex o : old) {
            if (o == v) {
                return true;
            }
        }
        return false;
    };
    int count = 0;
    for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        count += e.isPrimary() && isOld(e.v1()) && isOld(e.v2()) ? 1 : 0;
    }
    return count;
}

TEST(SubdivideSqrt3, ClosedTorusTriplesFacesWithCentresAtCentroidsAndFlipsEveryOldEdge) {
    TopoMesh mesh;
    koGeomTest::buildTopoMesh(mesh, koGeomTest::torus(6, 4));
    const int v = mesh.numVertices();
    const int f = mesh.numFaces();
    std::vector<Point> centroids;
    for (TopoMeshFace face = mesh.firstFace(); face; face = face.nextInMesh()) {
        centroids.push_back(face.centroid());
    }
    const std::vector<Point> before = pointsOf(mesh);

    subdivideSqrt3(mesh, Sqrt3Vertices::Kept);

    ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
    EXPECT_EQ(mesh.numVertices(), v + f);
    EXPECT_EQ(mesh.numFaces(), 3 * f);
    EXPECT_EQ(mesh.numEdges(), 9 * f); // 3 half-edges per face, all paired
    EXPECT_EQ(edgesBetweenOld(mesh, v), 0);
    const std::vector<Point> after = pointsOf(mesh);
    // Old vertices unmoved and first; then one centre per old face, in face order.
    EXPECT_EQ(std::vector<Point>(after.begin(), after.begin() + v), before);
    EXPECT_EQ(std::vector<Point>(after.begin() + v, after.end()), centroids);
    for (TopoMeshVertex vertex = mesh.firstVertex(); vertex; vertex = vertex.nextInMesh()) {
        EXPECT_EQ(vertex.valence(), 6);
    }
}

TEST(SubdivideSqrt3, RelaxedOctahedronVertexMovesByTheRuleForValenceFour) {
    // Each corner of the octahedron has four neighbours summing to the origin, so it moves
    // to (1 - a) p with a = (4 - 2 cos(pi / 2)) / 9 = 4 / 9.
    TopoMesh mesh;
    koGeomTest::buildTopoMesh(mesh, koGeomTest::sphere(0));
    subdivideSqrt3(mesh, Sqrt3Vertices::Relaxed);
    ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
    const std::vector<Point> after = pointsOf(mesh);
    ASSERT_EQ(after.size(), 14u);
    EXPECT_NEAR(after[0].x, 5.0 / 9.0, 1e-15);
    EXPECT_EQ(after[0].y, 0.0);
    EXPECT_NEAR(after[5].z, -5.0 / 9.0, 1e-15);
    // The centres stay at the centroids of the unmoved corners.
    EXPECT_NEAR(after[6].x, 1.0 / 3.0, 1e-15);
}

TEST(SubdivideSqrt3, OpenGridKeepsBoundaryEdgesAndBoundaryVerticesAndItsEulerCharacteristic) {
    for (const Sqrt3Vertices rule : {Sqrt3Vertices::Kept, Sqrt3Vertices::Relaxed}) {
        SCOPED_TRACE(rule == Sqrt3Vertices::Kept ? "kept" : "relaxed");
        TopoMesh mesh;
        const TopoMeshShape grid = koGeomTest::quadGrid(3, 3, true);
        koGeomTest::buildTopoMesh(mesh, grid);
        subdivideSqrt3(mesh, rule);
        ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
        EXPECT_EQ(edgesBetweenOld(mesh, 16), 12); // the boundary of the 3 x 3 grid
        // V - E + F with E = the paired half-edges / 2 + the 12 boundary ones.
        EXPECT_EQ(mesh.numVertices() - (mesh.numEdges() - 12) / 2 - 12 + mesh.numFaces(), 1);
        const std::vector<Point> after = pointsOf(mesh);
        // Of the 16 old vertices only the 4 interior ones (5, 6, 9, 10) may move.
        for (int i = 0; i < 16; ++i) {
            const bool interior = i == 5 || i == 6 || i == 9 || i == 10;
            if (!interior || rule == Sqrt3Vertices::Kept) {
                EXPECT_EQ(after[static_cast<std::size_t>(i)],
                          grid.points[static_cast<std::size_t>(i)])
                    << i;
            }
        }
    }
}

TEST(SubdivideSqrt3, RecordedAsOneStateThatSetStateUndoes) {
    TopoMesh mesh;
    koGeomTest::buildTopoMesh(mesh, koGeomTest::torus(4, 4));
    mesh.enableTransactions();
    const ko::Reference<TopoMeshState> root = mesh.createState();
    const koGeomTest::TopoMeshPicture original = koGeomTest::pictureOf(mesh);
    subdivideSqrt3(mesh, Sqrt3Vertices::Relaxed);
    const ko::Reference<TopoMeshState> step = mesh.createState();
    const koGeomTest::TopoMeshPicture subdivided = koGeomTest::pictureOf(mesh);
    mesh.setState(root);
    ASSERT_EQ(koGeomTest::checkTopoMesh(mesh), "");
    EXPECT_EQ(koGeomTest::pictureOf(mesh), original);
    mesh.setState(step);
    EXPECT_EQ(koGeomTest::pictureOf(mesh), subdivided);
}

} // namespace
} // namespace koGeom
