#include "geom/curve/MeshCoord.h"

#include <gtest/gtest.h>

#include <deque>
#include <utility>
#include <vector>

#include "geom/curve/MeshCurve.h"
#include "geom/mesh/CompactMesh.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

using koLinear::Point;

TEST(MeshCoord, ReadsCornersThroughTheTriangleIndicesInBothArrayForms) {
    CompactMesh cube;
    koGeomTest::makeCube(cube);
    const MeshVertex* v = cube.getVertices();
    const MeshTriangle* t = cube.getTriangles();
    const float* rawV = cube.getVerticesRaw();
    const int* rawT = cube.getTrianglesRaw();
    // Triangle 4 of the cube is (0,0,0), (1,0,0), (1,0,1).
    const MeshCoord inside(4, 0.25, 0.25, 0.5);
    EXPECT_TRUE(inside.evaluate(v, t) == Point(0.75, 0, 0.5) &&
                inside.evaluate(rawV, rawT) == Point(0.75, 0, 0.5));
    MeshCoord a, b; // projected from off the plane y = 0 straight onto `inside`
    ASSERT_TRUE(a.setFromPoint(4, v, t, Point(0.75, 0, 0.5)));
    ASSERT_TRUE(b.project(4, rawV, rawT, Point(0.75, 5, 0.5)));
    EXPECT_TRUE(a == inside && b == inside);

    // Corners nearest first, the lower-numbered among equals; -1: none within 1e-6.
    struct Case {
        MeshCoord coord;
        int edge, corner;
        bool interior, exterior;
    };
    const Case cases[] = {
        {inside, -1, -1, true, false},
        {{4, 1, 0, 0}, 0, 0, false, false},                 // corner 0: edges 0 and 2 meet
        {{4, 0, 1, 0}, 0, 1, false, false},                 // corner 1: edges 0 and 1
        {{4, 0, 0, 1}, 1, 2, false, false},                 // corner 2: edges 1 and 2
        {{4, 0, 0.5, 0.5}, 1, -1, false, false},            // middle of edge 1
        {{4, 1.5, -0.5, 0}, -1, -1, false, true},           // on edge 0's line, past corner 0
        {{4, 1.5, 0.5, -1.0}, -1, -1, false, true},         // well outside
        {{4, 0.5 + 1e-9, 0.5, -1e-9}, 0, -1, false, false}, // outside within the tolerance
    };
    for (const Case& k : cases) {
        int edge = 7, corner = 7; // untouched when false
        EXPECT_EQ(k.coord.onEdge(v, t, 1e-6, &edge), k.edge >= 0);
        EXPECT_EQ(edge, k.edge >= 0 ? k.edge : 7);
        EXPECT_EQ(k.coord.onVertex(rawV, rawT, 1e-6, &corner), k.corner >= 0);
        EXPECT_EQ(corner, k.corner >= 0 ? k.corner : 7);
        EXPECT_EQ(k.coord.isInterior(v, t, 1e-6), k.interior);
        EXPECT_EQ(k.coord.isExterior(rawV, rawT, 1e-6), k.exterior);
    }
    // The comparison with the tolerance is strict: nothing is within 0.
    EXPECT_FALSE(cases[1].coord.onVertex(v, t, 0.0, nullptr) ||
                 cases[4].coord.onEdge(v, t, 0.0, nullptr));
    // A degenerate triangle (two corners alike) keeps its index and invalidates the weights.
    EXPECT_FALSE(a.project(10, rawV, std::vector<int>(33, 1).data(), Point(0, 0, 0)));
    EXPECT_EQ(a, MeshCoord(10, 0, 0, 0));
}

TEST(MeshCurve, ClosedCurveBecomesAPolylineBackToItsStartAndFollowsTheMesh) {
    CompactMesh cube;
    koGeomTest::makeCube(cube);
    const std::deque<MeshCoord> aroundTheBottom = {{0, 1, 0, 0}, {1, 0, 0.5, 0.5}, {1, 0, 0, 1}};
    const MeshCurve curve(aroundTheBottom, true);
    for (int i = 0; i < 4; ++i) cube.getVertices()[i].z = 2.0f; // lift the bottom
    const ko::Reference<Polyline> line = curve.asPolyline(cube);
    ASSERT_TRUE(line && line->getNumVertices() == 4);
    const Point expected[4] = {Point(0, 0, 2), Point(1, 0.5, 2), Point(1, 0, 2), Point(0, 0, 2)};
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(line->getVertex(i).point == expected[i] && line->getVertex(i).param == i) << i;
    }
    MeshCurve open(aroundTheBottom, false);
    EXPECT_EQ(open.asPolyline(cube)->getNumVertices(), 3);
    open.getCoords().resize(1);
    EXPECT_FALSE(open.asPolyline(cube) || MeshCurve().asPolyline(cube));

    ko::Reference<MeshCurve> shared(new MeshCurve(curve));
    MeshCurve moved(std::move(*shared));
    open = moved;
    EXPECT_EQ(shared->refs(), 1);
    EXPECT_TRUE(open.isClosed() && open.getCoords() == aroundTheBottom);
}

} // namespace
} // namespace koGeom
