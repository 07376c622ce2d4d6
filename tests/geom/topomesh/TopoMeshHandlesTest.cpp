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

// A quad, a triangle and a pentagon in a row, sharing the edges 1-2 and 4-2.
struct Row {
    TopoMesh mesh;
    std::vector<TopoMeshVertex> v = koGeomTest::addFacesByRecords(
        mesh,
        {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 0}, {3, 1, 0}, {3, 2, 0}, {2, 3, 0}},
        {{0, 1, 2, 3}, {1, 4, 2}, {2, 4, 5, 6, 7}});
};

TEST(TopoMeshHandles, LoopShapesAndPoints) {
    Row row;
    std::vector<std::pair<bool, bool>> kinds;
    for (TopoMeshFace f = row.mesh.firstFace(); f; f = f.nextInMesh()) {
        kinds.emplace_back(f.isTriangle(), f.isQuad());
    }
    EXPECT_EQ(kinds,
              (std::vector<std::pair<bool, bool>>{{false, true}, {true, false}, {false, false}}));
    const TopoMeshEdge e = row.v[4].firstEdge(); // 4 -> 2 in the triangle
    EXPECT_EQ(e.v2(), row.v[2]);
    EXPECT_EQ(e.next().v1(), row.v[2]);
    EXPECT_EQ(e.twin().v2(), row.v[4]);
    EXPECT_EQ(e.prev().face(), e.face());
    koLinear::Point2 flat;
    row.v[6].point(flat);
    EXPECT_EQ(flat.x + flat.y, 5.0);
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
    EXPECT_EQ(set.count(TopoMeshVertex(row.v[3].data())), 1u);
    for (std::size_t i = 1; i < row.v.size(); ++i) {
        TopoMeshVertex a = row.v[i - 1];
        TopoMeshVertex b = row.v[i];
        EXPECT_EQ(a < b, std::less<const void*>()(a.data(), b.data()));
        EXPECT_EQ(a > b, b < a);
    }
    EXPECT_EQ(set.size(), row.v.size());
}

TEST(TopoMeshEntity, TypedViewsAndNames) {
    Row row;
    const TopoMeshEntity entities[] = {row.v[0],
                                       row.mesh.firstEdge(),
                                       row.mesh.firstFace(),
                                       {row.v[0].data(), TopoMeshTypedefs::EntityType{3}}};
    const char* names[] = {"Vertex", "Edge", "Face", "Unknown"};
    for (int i = 0; i < 4; ++i) {
        const TopoMeshEntity& e = entities[i];
        EXPECT_STREQ(e.getTypeName(), names[i]);
        EXPECT_EQ(e.asVertex().data() != nullptr, i == 0);
        EXPECT_EQ(e.asEdge().data() != nullptr, i == 1);
        EXPECT_EQ(e.asFace().data() != nullptr, i == 2);
    }
    // Compared and hashed by the pointer alone.
    EXPECT_EQ(entities[3], entities[0]);
    EXPECT_EQ(std::hash<TopoMeshEntity>()(entities[3]), std::hash<TopoMeshEntity>()(entities[0]));
}

} // namespace
} // namespace koGeom
