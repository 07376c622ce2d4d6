#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshBoundaryIterator.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::TopoMeshShape;
using Vertices = std::vector<TopoMeshVertex>;

std::vector<TopoMeshEdge> fanOf(TopoMeshVertex v, bool boundaryStart = false) {
    std::vector<TopoMeshEdge> fan;
    for (TopoMeshEdgeVertexIterator it(v, boundaryStart); it.valid(); it.next()) {
        fan.push_back(it.edge());
    }
    return fan;
}

std::vector<int> endsOf(const std::vector<TopoMeshEdge>& edges, const Vertices& v) {
    std::vector<int> ends;
    for (TopoMeshEdge e : edges) {
        ends.push_back(static_cast<int>(std::find(v.begin(), v.end(), e.v2()) - v.begin()));
    }
    return ends;
}

// On manifold shapes, the fan of every vertex, from either start, holds exactly the
// half-edges that leave it (a scan of the edge list), and the queries agree with scans.
TEST(TopoMeshTraversal, FansAndQueriesAgreeWithScansOnShapes) {
    for (const TopoMeshShape& shape :
         {koGeomTest::tetrahedron(), koGeomTest::torus(6, 5), koGeomTest::sphere(1),
          koGeomTest::fan(5, false), koGeomTest::quadGrid(3, 2, true),
          koGeomTest::quadGrid(2, 2, false)}) {
        SCOPED_TRACE(shape.name);
        TopoMesh mesh;
        koGeomTest::buildTopoMesh(mesh, shape);
        for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
            std::set<TopoMeshEdge> leaving;
            bool open = false;
            for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
                if (e.v1() == v) {
                    leaving.insert(e);
                    open = open || !e.twin();
                }
            }
            const std::vector<TopoMeshEdge> fan = fanOf(v);
            const std::vector<TopoMeshEdge> fromBoundary = fanOf(v, true);
            EXPECT_EQ(fan.front(), v.firstEdge());
            EXPECT_EQ(std::set<TopoMeshEdge>(fan.begin(), fan.end()), leaving);
            EXPECT_EQ(std::set<TopoMeshEdge>(fromBoundary.begin(), fromBoundary.end()), leaving);
            EXPECT_EQ(v.valence(), static_cast<int>(leaving.size()));
            EXPECT_EQ(v.onBoundary(), open);
            if (open) {
                EXPECT_FALSE(fromBoundary.front().prev().twin());
                EXPECT_FALSE(fromBoundary.back().twin());
            }
        }
        for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
            EXPECT_EQ(e.adjacent(e.next()), e.v2());
            EXPECT_TRUE(e.adjacent(e.v1()) && e.adjacent(e.v2()));
            const TopoMeshFace shared = e.v1().adjacent(e.v2());
            EXPECT_TRUE(shared.adjacent(e.v1()) && shared.adjacent(e.v2()));
            if (e.twin()) {
                EXPECT_EQ(e.face().adjacent(e.twin().face()), e);
            }
            EXPECT_EQ(e.face().adjacent(e.v1()).v1(), e.v1());
        }
        int corners = 0;
        for (TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
            corners += f.numVertices();
            bool open = false;
            for (TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
                open = open || (e.face() == f && !e.twin());
            }
            EXPECT_EQ(f.hasBoundaryEdge(), open);
        }
        EXPECT_EQ(corners, mesh.numEdges());
    }
}

// An open fan of four triangles round vertex 0, its first edge moved to the middle spoke 0-3:
// the plain walk turns one way to the boundary, then from the first edge the other way; the
// boundary start walks from one boundary to the other.
TEST(TopoMeshTraversal, FanOrderAroundBoundaryIsolatedAndNonManifoldVertices) {
    TopoMesh mesh;
    const Vertices v = koGeomTest::buildTopoMesh(mesh, koGeomTest::fan(4, false));
    mesh.setFirstEdge(v[0], TopoMesh::findEdge(v[0], v[3]));
    EXPECT_EQ(endsOf(fanOf(v[0]), v), (std::vector<int>{3, 4, 2, 1}));
    EXPECT_EQ(endsOf(fanOf(v[0], true), v), (std::vector<int>{4, 3, 2, 1}));
    EXPECT_EQ(v[5].valence(), 1);

    const TopoMeshVertex isolated = mesh.allocVertex();
    EXPECT_TRUE(fanOf(isolated).empty() && fanOf(isolated, true).empty());
    EXPECT_EQ(isolated.valence(), 0);
    EXPECT_FALSE(isolated.onBoundary());

    // Only the wedge of the first edge is walked round a non-manifold vertex.
    TopoMesh bowtie;
    const Vertices b = koGeomTest::buildTopoMesh(bowtie, koGeomTest::bowtie());
    EXPECT_EQ(b[0].valence(), 1);
}

TEST(TopoMeshTraversal, BoundaryWalksGoRoundTheLoopEitherWay) {
    TopoMesh mesh;
    const Vertices v = koGeomTest::buildTopoMesh(mesh, koGeomTest::fan(4, false));
    // The loop 0-1-2-3-4-5-0, forward from 0 and backward from 0.
    const std::vector<std::vector<int>> expected = {{0, 1, 2, 3, 4, 5}, {0, 5, 4, 3, 2, 1}};
    for (bool forward : {true, false}) {
        std::vector<int> origins;
        for (TopoMeshBoundaryIterator it(v[0], forward); it.valid(); it.next()) {
            origins.push_back(
                static_cast<int>(std::find(v.begin(), v.end(), it.edge().v1()) - v.begin()));
        }
        EXPECT_EQ(origins, expected[forward ? 0 : 1]);
    }
    const TopoMeshEdge start = TopoMesh::findEdge(v[0], v[1]);
    TopoMeshBoundaryIterator it(start, false);
    EXPECT_EQ(it.nextEdge(), TopoMesh::findEdge(v[5], v[0]));
    EXPECT_EQ(it.prevEdge(), TopoMesh::findEdge(v[1], v[2]));
    it.reset(start, true);
    EXPECT_EQ(it.nextEdge(), TopoMesh::findEdge(v[1], v[2]));
    EXPECT_EQ(it.prevEdge(), TopoMesh::findEdge(v[5], v[0]));
    TopoMeshEdge prev;
    TopoMeshEdge next;
    TopoMeshBoundaryIterator::getPrevNextEdges(v[3], prev, next);
    EXPECT_EQ(prev, TopoMesh::findEdge(v[2], v[3]));
    EXPECT_EQ(next, TopoMesh::findEdge(v[3], v[4]));

    TopoMesh grid;
    const Vertices g = koGeomTest::buildTopoMesh(grid, koGeomTest::quadGrid(2, 2, false));
    int steps = 0;
    for (TopoMeshBoundaryIterator walk(g[1]); walk.valid(); walk.next()) {
        ++steps;
    }
    EXPECT_EQ(steps, 8);
    EXPECT_FALSE(TopoMeshBoundaryIterator(g[4]).valid());
    const TopoMeshEdge spoke = TopoMesh::findEdge(g[1], g[4]);
    EXPECT_EQ(spoke.midpoint(), koLinear::Point(1, 0.5, 0));
    EXPECT_EQ(spoke.vector(), koLinear::Vector(0, 1, 0));
    EXPECT_EQ(grid.firstFace().centroid(), koLinear::Point(0.5, 0.5, 0));

    // From the second wedge of a non-manifold vertex the walk goes on round the first wedge's
    // loop and never meets its start again: it ends all the same.
    TopoMesh bowtie;
    const Vertices b = koGeomTest::buildTopoMesh(bowtie, koGeomTest::bowtie());
    steps = 0;
    const TopoMeshEdge second = bowtie.firstFace().nextInMesh().firstEdge();
    ASSERT_EQ(second.v2(), b[3]);
    for (TopoMeshBoundaryIterator walk(second); walk.valid() && steps < 100; walk.next()) {
        ++steps;
    }
    EXPECT_EQ(steps, 6);

    TopoMesh closed;
    koGeomTest::buildTopoMesh(closed, koGeomTest::tetrahedron());
    EXPECT_FALSE(TopoMeshBoundaryIterator(closed.firstVertex()).valid());
}

} // namespace
} // namespace koGeom
