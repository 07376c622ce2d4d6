#include "geom/connectivity/MeshArrangement.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "geom/entity/ActiveEntities.h"
#include "geom/mesh/CompactMesh.h"

namespace koGeom {
namespace {

TEST(MeshArrangement, PlacesMeshesAndDeletesEachOnce) {
    const int before = numberOfActiveEntities();
    ko::list<MeshPlacement> arrangement;
    auto* first = new CompactMesh;
    auto* second = new CompactMesh;
    koLinear::AffineMatrixFlt shift(1.0f);
    shift(3, 0) = 5.0f;
    addMeshToArrangement(arrangement, *first);
    addMeshToArrangement(arrangement, *second, shift);
    shift(3, 0) = 7.0f; // the placement holds a copy
    arrangement.push_back(MeshPlacement{koLinear::AffineMatrixFlt(1.0f), nullptr});

    ASSERT_EQ(arrangement.size(), 3u);
    EXPECT_TRUE(arrangement.front().mesh == first &&
                arrangement.front().transform == koLinear::AffineMatrixFlt(1.0f));
    EXPECT_EQ(std::next(arrangement.begin())->mesh, second);
    EXPECT_EQ(std::next(arrangement.begin())->transform(3, 0), 5.0f);

    // The meshes go, the placements stay with null meshes; a second call deletes nothing.
    deleteMeshesInArrangement(arrangement);
    EXPECT_EQ(numberOfActiveEntities(), before);
    EXPECT_TRUE(arrangement.size() == 3u &&
                std::all_of(arrangement.begin(), arrangement.end(),
                            [](const MeshPlacement& placement) { return !placement.mesh; }));
    deleteMeshesInArrangement(arrangement);
    EXPECT_EQ(numberOfActiveEntities(), before);
}

} // namespace
} // namespace koGeom
