#include "geom/topomesh/TopoMeshHandles.h"

#include <gtest/gtest.h>

#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshEntity.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

// A quad, a triangle and a pentagon in a row, sharing the edges 1-2 and 4-2.
struct Row {
    TopoMesh mesh;
    std::vector<TopoMeshVertex> v = koGeomTest::buildTopoMesh(
        mesh,
        {"row",
         {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 0}, {3, 1, 0}, {3, 2, 0}, {2, 3, 0}},
         {{0, 1, 2, 3}, {1, 4, 2}, {2, 4, 5, 6, 7}}});
};

TEST(TopoMeshHandles, ExactlyOneOfATwinPairIsPrimaryByAddressDeliberate) {
    Row row;
    int primary = 0;
    for (TopoMeshEdge e = row.mesh.firstEdge(); e; e = e.nextInMesh()) {
        const bool lower = !e.twin() || e.data() < e.twin().data();
        EXPECT_EQ(e.isPrimary(), lower);
        primary += e.isPrimary() ? 1 : 0;
    }
    EXPECT_EQ(primary, 10); // 8 boundary half-edges and one of each of the 2 pairs
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
