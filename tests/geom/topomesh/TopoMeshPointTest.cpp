#include "geom/topomesh/TopoMeshPoint.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

#include "geom/topomesh/TopoMesh.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koLinear::Point;

std::string pointers(const char* format, const void* a, const void* b = nullptr,
                     const void* c = nullptr) {
    char text[128];
    std::snprintf(text, sizeof text, format, a, b, c);
    return text;
}

void expectNear(const Point& a, const Point& b) {
    EXPECT_NEAR(a.x, b.x, 1e-12);
    EXPECT_NEAR(a.y, b.y, 1e-12);
    EXPECT_NEAR(a.z, b.z, 1e-12);
}

// The unit square split by the diagonal 1-3 (a flip of 0-2): the first face's first edge is
// 1>3, so its corners in weight order are 1, 3, 0 and its sides 1>3, 3>0, 0>1.
class TopoMeshPointTest : public ::testing::Test {
protected:
    void SetUp() override {
        v = koGeomTest::buildTopoMesh(
            mesh, {"square", {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2}, {0, 2, 3}}});
        ASSERT_TRUE(mesh.swapEdge(TopoMesh::findEdge(v[0], v[2])));
        face = mesh.firstFace();
        other = face.nextInMesh();
        ASSERT_EQ(face.firstEdge(), TopoMesh::findEdge(v[1], v[3]));
    }
    TopoMeshEdge edge(int a, int b) const { return TopoMesh::findEdge(v[a], v[b]); }

    TopoMesh mesh;
    std::vector<TopoMeshVertex> v;
    TopoMeshFace face;
    TopoMeshFace other;
};

TEST_F(TopoMeshPointTest, CoordinatesNameTheCornersFromTheFirstEdge) {
    const TopoMeshCoord c(face, 0.2, 0.3, 0.5);
    expectNear(c.evaluate(), Point(0.2, 0.3, 0));
    TopoMeshCoord set;
    ASSERT_TRUE(set.setFromPoint(face, Point(0.2, 0.3, 0)));
    ASSERT_TRUE(set.project(face, Point(0.2, 0.3, 4)));
    EXPECT_NEAR(set.w0(), 0.2, 1e-12);
    EXPECT_NEAR(set.w2(), 0.5, 1e-12);
    EXPECT_FALSE(set.setFromPoint(TopoMeshFace(), Point()));

    TopoMeshVertex corner;
    EXPECT_TRUE(TopoMeshCoord(face, 0.01, 0.98, 0.01).onVertex(0.1, &corner));
    EXPECT_EQ(corner, v[3]);
    const struct {
        double w0, w1, w2;
        TopoMeshEdge side;
    } sides[] = {{0.5, 0.5, 0, edge(1, 3)}, {0, 0.5, 0.5, edge(3, 0)}, {0.5, 0, 0.5, edge(0, 1)}};
    for (const auto& s : sides) {
        TopoMeshEdge found;
        EXPECT_TRUE(TopoMeshCoord(face, s.w0, s.w1, s.w2).onEdge(0.01, &found));
        EXPECT_EQ(found, s.side);
    }
    EXPECT_TRUE(c.isInterior(0.01));
    EXPECT_FALSE(c.isExterior(0.01));
    EXPECT_TRUE(TopoMeshCoord(face, -0.5, 0.5, 1.0).isExterior(0.01));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(TopoMeshCoord(face, nan, 0.5, 0.5).isExterior(0.01));
}

TEST_F(TopoMeshPointTest, ConstructorsClassifyAndPlaceThePoint) {
    const TopoMeshPoint atVertex(v[3]);
    EXPECT_TRUE(atVertex.isVertexPoint());
    EXPECT_EQ(atVertex.getFace(), v[3].firstEdge().face());
    EXPECT_EQ(atVertex.point(), v[3].point());
    EXPECT_FALSE(TopoMeshPoint(mesh.allocVertex()).getFace());

    // Weight a on the edge's origin and b on its end, whichever side of the face it is.
    for (const TopoMeshEdge e : {edge(1, 3), edge(3, 0), edge(0, 1)}) {
        const TopoMeshPoint onEdge(e, face, 0.25, 0.75);
        EXPECT_TRUE(onEdge.isEdgePoint());
        expectNear(onEdge.point(), koLinear::combine(e.v1().point(), 0.25, e.v2().point(), 0.75));
        double a = 0;
        double b = 0;
        onEdge.getEdgeWeights(a, b);
        EXPECT_EQ(a, 0.25);
        EXPECT_EQ(b, 0.75);
    }

    const TopoMeshPoint nearCorner(TopoMeshCoord(face, 0.001, 0.998, 0.001), 0.01);
    EXPECT_TRUE(nearCorner.isVertexPoint());
    EXPECT_EQ(nearCorner.getVertex(), v[3]);
    EXPECT_EQ(nearCorner.point(), v[3].point());
    EXPECT_EQ(nearCorner.getCoord().w1(), 1.0);

    // 0.035 from the side 1>3: moved onto it.
    const TopoMeshPoint nearSide(TopoMeshCoord(face, 0.5, 0.45, 0.05), 0.1);
    EXPECT_TRUE(nearSide.isEdgePoint());
    EXPECT_EQ(nearSide.getEdge(), edge(1, 3));
    expectNear(nearSide.point(), Point(0.525, 0.475, 0));
    EXPECT_NEAR(nearSide.getCoord().w2(), 0.0, 1e-12);

    const TopoMeshPoint inside(TopoMeshCoord(face, 0.2, 0.3, 0.5), 0.01);
    EXPECT_TRUE(inside.isFacePoint());
    expectNear(inside.point(), Point(0.2, 0.3, 0));
}

TEST_F(TopoMeshPointTest, NamesAndText) {
    EXPECT_STREQ(TopoMeshPoint(v[0]).typeName(), "vertex");
    EXPECT_STREQ(TopoMeshPoint(edge(1, 3), face, 0.5, 0.5).typeName(), "edge");
    EXPECT_STREQ(TopoMeshPoint::typeName(TopoMeshPoint::Type::Face), "face");
    EXPECT_STREQ(TopoMeshPoint::typeName(static_cast<TopoMeshPoint::Type>(3)), "<none>");
    EXPECT_EQ(std::string(TopoMeshPoint(v[0]).asString().c_str()),
              pointers("vertex(%p)", v[0].data()));
    EXPECT_EQ(std::string(TopoMeshPoint(edge(3, 0), face, 0.5, 0.5).asString().c_str()),
              pointers("edge(%p,%p)", v[3].data(), v[0].data()));
    EXPECT_EQ(
        std::string(TopoMeshPoint(TopoMeshCoord(face, 0.2, 0.3, 0.5), 0.01).asString().c_str()),
        pointers("face(%p,%p,%p)", v[1].data(), v[3].data(), v[0].data()));
}

TEST_F(TopoMeshPointTest, EquivalenceBoundaryAndAdjacency) {
    const TopoMeshPoint diagonal(edge(1, 3), face, 0.5, 0.5);
    const TopoMeshPoint diagonalTwin(edge(3, 1), other, 0.5, 0.5);
    const TopoMeshPoint inFace(TopoMeshCoord(face, 0.2, 0.3, 0.5), 0.01);
    const TopoMeshPoint inOther(TopoMeshCoord(other, 0.2, 0.3, 0.5), 0.01);
    const TopoMeshPoint at0(v[0]);
    const TopoMeshPoint at2(v[2]);
    EXPECT_TRUE(diagonal.equivalent(diagonalTwin));
    EXPECT_TRUE(at0.equivalent(TopoMeshPoint(v[0], face)));
    EXPECT_FALSE(inFace.equivalent(inFace));
    EXPECT_FALSE(at0.equivalent(diagonal));

    EXPECT_TRUE(at0.onBoundary());
    EXPECT_FALSE(diagonal.onBoundary());
    EXPECT_TRUE(TopoMeshPoint(edge(0, 1), face, 0.5, 0.5).onBoundary());
    EXPECT_FALSE(inFace.onBoundary());

    EXPECT_FALSE(at2.adjacent(face));
    EXPECT_TRUE(at2.adjacent(other));
    EXPECT_TRUE(diagonal.adjacent(face) && diagonal.adjacent(other));
    EXPECT_FALSE(inFace.adjacent(other));

    EXPECT_EQ(at0.adjacent(TopoMeshPoint(v[1])), face);
    EXPECT_EQ(at2.adjacent(diagonal), other);
    EXPECT_EQ(diagonal.adjacent(at2), other);
    EXPECT_EQ(diagonal.adjacent(TopoMeshPoint(edge(3, 0), face, 0.5, 0.5)), face);
    EXPECT_FALSE(TopoMeshPoint(edge(0, 1), face, 0.5, 0.5)
                     .adjacent(TopoMeshPoint(edge(2, 3), other, 0.5, 0.5)));
    EXPECT_EQ(inFace.adjacent(at0), face);
    EXPECT_EQ(at0.adjacent(inFace), face);
    EXPECT_FALSE(inOther.adjacent(at0));
    EXPECT_FALSE(inOther.adjacent(inFace));

    // Two faces sharing both edges at a valence-2 vertex: the first point's face comes first.
    const TopoMeshVertex m = mesh.subdivideEdge(edge(1, 3), Point(0.5, 0.5, 0));
    EXPECT_EQ(TopoMeshPoint(TopoMesh::findEdge(v[1], m), face, 0.5, 0.5)
                  .adjacent(TopoMeshPoint(TopoMesh::findEdge(v[3], m), other, 0.5, 0.5)),
              face);
}

} // namespace
} // namespace koGeom
