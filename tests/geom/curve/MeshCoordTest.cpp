#include "geom/curve/MeshCoord.h"

#include <gtest/gtest.h>

#include <random>

#include "geom/mesh/CompactMesh.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

using koLinear::Point;

class MeshCoordOnCube : public ::testing::Test {
protected:
    void SetUp() override { koGeomTest::makeCube(cube); }

    const float* rawVertices() const { return cube.getVerticesRaw(); }
    const int* rawTriangles() const { return cube.getTrianglesRaw(); }
    const MeshVertex* vertices() const { return cube.getVertices(); }
    const MeshTriangle* triangles() const { return cube.getTriangles(); }

    CompactMesh cube;
};

TEST_F(MeshCoordOnCube, BothArrayFormsNameTheSamePointsOfTheRightTriangle) {
    std::mt19937 random(17);
    std::uniform_real_distribution<double> unit(-0.2, 1.2);
    for (int trial = 0; trial < 100; ++trial) {
        const int triangle = trial % 12;
        const Point x = MeshCoord(triangle, 0.2, 0.3, 0.5).evaluate(vertices(), triangles());
        // The triangle's corners, read by hand from the index array.
        const MeshTriangle& t = triangles()[triangle];
        const Point corner0 = vertices()[t[0]].asPoint();
        EXPECT_LT(distance(x, combine(corner0, 0.2, vertices()[t[1]].asPoint(), 0.3,
                                      vertices()[t[2]].asPoint(), 0.5)),
                  1e-12);
        // A point of the triangle's plane round-trips through both forms alike.
        const double w0 = unit(random);
        const double w1 = unit(random);
        const Point inPlane =
            MeshCoord(triangle, w0, w1, 1 - w0 - w1).evaluate(rawVertices(), rawTriangles());
        MeshCoord a;
        MeshCoord b;
        ASSERT_TRUE(a.setFromPoint(triangle, rawVertices(), rawTriangles(), inPlane));
        ASSERT_TRUE(b.setFromPoint(triangle, vertices(), triangles(), inPlane));
        EXPECT_EQ(a, b);
        EXPECT_EQ(a.getTriangle(), triangle);
        EXPECT_LT(distance(a.evaluate(vertices(), triangles()), inPlane), 1e-12);
        const Point above = inPlane + koLinear::Vector(1, 2, 3);
        ASSERT_TRUE(a.project(triangle, rawVertices(), rawTriangles(), above));
        ASSERT_TRUE(b.project(triangle, vertices(), triangles(), above));
        EXPECT_EQ(a, b);
    }
}

TEST_F(MeshCoordOnCube, InteriorAndExteriorExcludeTheEdges) {
    struct Case {
        MeshCoord coord;
        bool onEdge, interior, exterior;
        int corner; // -1 when not at a corner
    };
    const Case cases[] = {
        {{4, 0.2, 0.3, 0.5}, false, true, false, -1},
        {{4, 0.5, 0.5, 0.0}, true, false, false, -1},          // on edge 0
        {{4, 0.0, 1.0, 0.0}, true, false, false, 1},           // at corner 1
        {{4, 1.5, 0.5, -1.0}, false, false, true, -1},         // well outside
        {{4, 0.5 + 1e-9, 0.5, -1e-9}, true, false, false, -1}, // just outside, within the tolerance
    };
    for (const Case& k : cases) {
        int edge = -1;
        int corner = -1;
        EXPECT_EQ(k.coord.onEdge(vertices(), triangles(), 1e-6, &edge), k.onEdge);
        EXPECT_EQ(k.coord.onVertex(rawVertices(), rawTriangles(), 1e-6, &corner), k.corner >= 0);
        EXPECT_EQ(corner, k.corner);
        EXPECT_EQ(k.coord.isInterior(vertices(), triangles(), 1e-6), k.interior);
        EXPECT_EQ(k.coord.isInterior(rawVertices(), rawTriangles(), 1e-6), k.interior);
        EXPECT_EQ(k.coord.isExterior(vertices(), triangles(), 1e-6), k.exterior);
        EXPECT_EQ(k.coord.isExterior(rawVertices(), rawTriangles(), 1e-6), k.exterior);
    }
}

TEST(MeshCoord, DegenerateTriangleKeepsItsIndexAndInvalidatesTheWeights) {
    const float vertices[9] = {0, 0, 0, 1, 0, 0, 1, 0, 0};
    const int triangles[6] = {0, 1, 2, 0, 1, 2};
    MeshCoord coord(0, 0.2, 0.3, 0.5);
    EXPECT_FALSE(coord.project(1, vertices, triangles, Point(0, 0, 0)));
    EXPECT_EQ(coord, MeshCoord(1, 0, 0, 0));
    EXPECT_NE(coord, MeshCoord(0, 0, 0, 0));
    EXPECT_FALSE(coord.valid());
    EXPECT_EQ(MeshCoord(), MeshCoord(0, 0, 0, 0));
}

} // namespace
} // namespace koGeom
