#include "geom/topomesh/TopoMeshHandles.h"

#include <gtest/gtest.h>

#include <functional>
#include <unordered_set>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshEntity.h"
#include "tests/support/TopoMeshRecordFaces.h"

namespace koGeom {
namespace {

using koLinear::Point;

// A quad, a triangle and a pentagon in a row, sharing the edges 1-2 and 4-2.
struct Row {
    TopoMesh mesh;
    std::vector<TopoMeshVertex> v = koGeomTest::addFacesByRecords(
        mesh,
        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 0}, {3, 1, 0}, {3, 2, 0}, {2, 3, 0}},
        {{0, 1, 2, 3}, {1, 4, 2}, {2, 4, 5, 6, 7}});
};

TEST(TopoMeshHandles, EdgeAccessorsReadTheirLinks) {
    Row row;
    for (TopoMeshEdge e = row.mesh.firstEdge(); e; e = e.nextInMesh()) {
        EXPECT_EQ(e.v1(), e.data()->vertex);
        EXPECT_EQ(e.v2(), e.next().firstVertex());
        EXPECT_EQ(e.secondVertex(), e.next().data()->vertex);
        EXPECT_EQ(e.prev().next(), e);
        EXPECT_EQ(e.face(), e.data()->face);
        EXPECT_EQ(e.twin(), e.data()->twin);
    }
    EXPECT_EQ(row.v[0].firstEdge().v2(), row.v[1]);
    Point p;
    row.v[6].point(p);
    koLinear::Point2 flat;
    row.v[6].point(flat);
    EXPECT_EQ(p.y, 2.0);
    EXPECT_EQ(flat.x, 3.0);
    EXPECT_EQ(flat.y, 2.0);
}

TEST(TopoMeshHandles, TriangleAndQuadTestsLookOnlyAtLoopLength) {
    Row row;
    std::vector<std::pair<bool, bool>> kinds;
    for (TopoMeshFace f = row.mesh.firstFace(); f; f = f.nextInMesh()) {
        kinds.emplace_back(f.isTriangle(), f.isQuad());
    }
    EXPECT_EQ(kinds,
              (std::vector<std::pair<bool, bool>>{{false, true}, {true, false}, {false, false}}));
}

TEST(TopoMeshHandles, ExactlyOneOfATwinPairIsPrimaryByAddressDeliberate) {
    Row row;
    int primary = 0;
    int boundary = 0;
    for (TopoMeshEdge e = row.mesh.firstEdge(); e; e = e.nextInMesh()) {
        if (!e.twin()) {
            EXPECT_TRUE(e.isPrimary());
            ++boundary;
            continue;
        }
        EXPECT_NE(e.isPrimary(), e.twin().isPrimary());
        EXPECT_EQ(e.isPrimary(), e.data() < e.twin().data());
        primary += e.isPrimary() ? 1 : 0;
    }
    EXPECT_EQ(primary, 2);
    EXPECT_EQ(boundary, 8);
}

TEST(TopoMeshHandles, OrderAndHashFollowTheRecordAddress) {
    Row row;
    std::unordered_set<TopoMeshVertex> set(row.v.begin(), row.v.end());
    EXPECT_EQ(set.size(), row.v.size());
    EXPECT_EQ(set.count(TopoMeshVertex(row.v[3].data())), 1u);
    for (std::size_t i = 1; i < row.v.size(); ++i) {
        TopoMeshVertex a = row.v[i - 1];
        TopoMeshVertex b = row.v[i];
        EXPECT_EQ(a < b, std::less<const void*>()(a.data(), b.data()));
        EXPECT_EQ(a > b, b < a);
        EXPECT_NE(std::hash<TopoMeshVertex>()(a), std::hash<TopoMeshVertex>()(b));
    }
    EXPECT_TRUE(TopoMeshFace() == nullptr);
    EXPECT_FALSE(TopoMeshEdge());
}

TEST(TopoMeshEntity, TypedViewsAndNames) {
    Row row;
    const TopoMeshEntity entities[] = {row.v[0], row.mesh.firstEdge(), row.mesh.firstFace()};
    const char* names[] = {"Vertex", "Edge", "Face"};
    for (int i = 0; i < 3; ++i) {
        const TopoMeshEntity& e = entities[i];
        EXPECT_EQ(static_cast<int>(e.getType()), i);
        EXPECT_STREQ(e.getTypeName(), names[i]);
        EXPECT_EQ(e.asVertex().data() != nullptr, i == 0);
        EXPECT_EQ(e.asEdge().data() != nullptr, i == 1);
        EXPECT_EQ(e.asFace().data() != nullptr, i == 2);
    }
    EXPECT_EQ(entities[1].asEdge(), row.mesh.firstEdge());
    EXPECT_STREQ(
        TopoMeshEntity(nullptr, static_cast<TopoMeshTypedefs::EntityType>(3)).getTypeName(),
        "Unknown");
    // Compared and hashed by the pointer alone.
    const TopoMeshEntity retyped(row.v[0].data(), TopoMeshTypedefs::EntityType::Face);
    EXPECT_EQ(retyped, entities[0]);
    EXPECT_EQ(std::hash<TopoMeshEntity>()(retyped), std::hash<TopoMeshEntity>()(entities[0]));
    EXPECT_FALSE(TopoMeshEntity().data());
}

} // namespace
} // namespace koGeom
