#include "geom/curve/MeshCurve.h"

#include <gtest/gtest.h>

#include <deque>
#include <utility>

#include "geom/mesh/CompactMesh.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

using koLinear::Point;

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
    EXPECT_TRUE(line->getClosed());
    EXPECT_EQ(line->refs(), 1);

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
}

TEST(MeshCurve, CopiesAndMovesCarryCoordsAndClosedFlag) {
    ko::Reference<MeshCurve> shared(new MeshCurve(aroundTheBottom, true));
    MeshCurve copy(*shared);
    EXPECT_EQ(copy.refs(), 0);
    EXPECT_EQ(copy.getCoords(), aroundTheBottom);
    EXPECT_TRUE(copy.isClosed());
    MeshCurve moved(std::move(copy));
    EXPECT_EQ(moved.getCoords(), aroundTheBottom);
    MeshCurve assigned;
    assigned = moved;
    EXPECT_EQ(assigned.getCoords(), aroundTheBottom);
    EXPECT_TRUE(assigned.isClosed());
    assigned = MeshCurve();
    EXPECT_TRUE(assigned.getCoords().empty());
    EXPECT_FALSE(assigned.isClosed());
    EXPECT_EQ(shared->refs(), 1);
}

} // namespace
} // namespace koGeom
