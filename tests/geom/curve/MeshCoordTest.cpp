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
    const MeshVertex* vertices = cube.getVertices();
    const MeshTriangle* triangles = cube.getTriangles();
    const float* rawVertices = cube.getVerticesRaw();
    const int* rawTriangles = cube.getTrianglesRaw();
    // Triangle 4 of the cube is (0,0,0), (1,0,0), (1,0,1).
    const MeshCoord inside(4, 0.25, 0.25, 0.5);
    EXPECT_EQ(inside.evaluate(vertices, triangles), Point(0.75, 0, 0.5));
    EXPECT_EQ(inside.evaluate(rawVertices, rawTriangles), Point(0.75, 0, 0.5));
    MeshCoord a;
    MeshCoord b;
    ASSERT_TRUE(a.setFromPoint(4, rawVertices, rawTriangles, Point(0.75, 0, 0.5)));
    ASSERT_TRUE(b.setFromPoint(4, vertices, triangles, Point(0.75, 0, 0.5)));
    EXPECT_EQ(a, b);
    ASSERT_TRUE(a.project(4, rawVertices, rawTriangles, Point(0.75, 5, 0.5)));
    ASSERT_TRUE(b.project(4, vertices, triangles, Point(0.75, 5, 0.5)));
    EXPECT_TRUE(a == b && a.getTriangle() == 4);

    struct Case {
        MeshCoord coord;
        bool onEdge, interior, exterior;
        int corner; // -1 when not at a corner
    };
    const Case cases[] = {
        {inside, false, true, false, -1},
        {{4, 0.5, 0.5, 0.0}, true, false, false, -1},          // on edge 0
        {{4, 0.0, 1.0, 0.0}, true, false, false, 1},           // at corner 1
        {{4, 1.5, 0.5, -1.0}, false, false, true, -1},         // well outside
        {{4, 0.5 + 1e-9, 0.5, -1e-9}, true, false, false, -1}, // outside within the tolerance
    };
    for (const Case& k : cases) {
        int corner = -1;
        EXPECT_EQ(k.coord.onEdge(vertices, triangles, 1e-6, nullptr), k.onEdge);
        EXPECT_EQ(k.coord.onVertex(rawVertices, rawTriangles, 1e-6, &corner), k.corner >= 0);
        EXPECT_EQ(corner, k.corner);
        EXPECT_EQ(k.coord.isInterior(vertices, triangles, 1e-6), k.interior);
        EXPECT_EQ(k.coord.isExterior(rawVertices, rawTriangles, 1e-6), k.exterior);
    }
    // A degenerate triangle (two corners alike) keeps its index and invalidates the weights.
    EXPECT_FALSE(a.project(10, rawVertices, std::vector<int>(33, 1).data(), Point(0, 0, 0)));
    EXPECT_EQ(a, MeshCoord(10, 0, 0, 0));
}

const std::deque<MeshCoord> aroundTheBottom = {
    {0, 1, 0, 0}, {1, 0, 0.5, 0.5}, {1, 0, 0, 1}}; // (0,0,0), (1,0.5,0), (1,0,0)

TEST(MeshCurve, ClosedCurveBecomesAPolylineBackToItsStart) {
    CompactMesh cube;
    koGeomTest::makeCube(cube);
    const MeshCurve curve(aroundTheBottom, true);
    const ko::Reference<Polyline> line = curve.asPolyline(cube);
    ASSERT_TRUE(line);
    ASSERT_EQ(line->getNumVertices(), 4);
    const Point expected[4] = {Point(0, 0, 0), Point(1, 0.5, 0), Point(1, 0, 0), Point(0, 0, 0)};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(line->getVertex(i).point, expected[i]) << i;
        EXPECT_EQ(line->getVertex(i).param, double(i));
    }

    // The curve follows the mesh: lift the bottom and ask again.
    MeshVertex* vertices = cube.getVertices();
    for (int i = 0; i < 4; ++i) {
        vertices[i].z = 2.0f;
    }
    EXPECT_EQ(curve.asPolyline(cube)->getVertex(1).point, Point(1, 0.5, 2));

    MeshCurve open(aroundTheBottom, false);
    EXPECT_EQ(open.asPolyline(cube)->getNumVertices(), 3);
    open.getCoords().resize(1);
    EXPECT_FALSE(open.asPolyline(cube));
    EXPECT_FALSE(MeshCurve().asPolyline(cube));

    ko::Reference<MeshCurve> shared(new MeshCurve(curve));
    MeshCurve moved(std::move(*shared));
    open = moved;
    EXPECT_EQ(shared->refs(), 1);
    EXPECT_TRUE(open.isClosed() && open.getCoords() == aroundTheBottom);
}

} // namespace
} // namespace koGeom
