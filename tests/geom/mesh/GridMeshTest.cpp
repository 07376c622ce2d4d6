#include "geom/mesh/GridMesh.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/MeshBuilders.h"

namespace koGeom {
namespace {

TEST(GridMesh, VertexNumbersAndGridPositions) {
    const GridMesh grid(4, 3, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(grid.vertexNum(1, 2), 9);

    // Deliberate: both the row and the column divide by nv, so vertex 9 of a 4 × 3 grid
    // comes back as (0, 3), not as the (1, 2) it was numbered from.
    int u = -7;
    int v = -7;
    grid.uvIndexes(9, u, v);
    EXPECT_TRUE(u == 0 && v == 3);

    // On a square grid the two are inverses.
    const GridMesh square(5, 5, nullptr, nullptr, nullptr, nullptr);
    for (int n = 0; n < 25; ++n) {
        square.uvIndexes(n, u, v);
        EXPECT_EQ(square.vertexNum(u, v), n);
    }

    const GridMesh flat(4, 0, nullptr, nullptr, nullptr, nullptr);
    flat.uvIndexes(3, u, v);
    EXPECT_TRUE(u == -1 && v == -1);
}

TEST(GridMesh, AssignmentCopiesTheSizeThatResizingKeeps) {
    const MeshVertex vertices[] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}};
    const MeshUV uvs[] = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    const GridMesh source(2, 2, vertices, nullptr, uvs, nullptr);
    GridMesh target(4, 3, nullptr, nullptr, nullptr, nullptr);
    target = source;
    EXPECT_EQ(koGeomTest::channelNames(target), "vertices,uvs");
    EXPECT_EQ(target.getUVs()[2], uvs[2]);
    target.resizeVertexArray(7);
    EXPECT_TRUE(target.nu() == 2 && target.nv() == 2 && GridMesh(source).nu() == 2);
}

} // namespace
} // namespace koGeom
