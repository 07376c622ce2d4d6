#include "geom/mesh/MoveableMesh.h"

#include <gtest/gtest.h>

#include "geom/storage/MoveableArrayAllocator.h"
#include "tessar/core/Reference.h"
#include "tessar/os/MoveableAllocator.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

TEST(MoveableMesh, HandlesMapTheArraysAndTheFirstToGoUnmapsThem) {
    koOS::MoveableAllocator chunks;
    ko::Reference<MoveableArrayAllocator> allocator(new MoveableArrayAllocator(chunks));
    CompactMesh mesh(allocator);
    const int indices[] = {0, 1, 2, 2, 1, 3};
    mesh.copyTriangles(2, indices);
    allocator->unmap();
    ASSERT_EQ(mesh.getTriangles(), nullptr);

    ko::Reference<MoveableMesh> first(new MoveableMesh(mesh));
    EXPECT_EQ(mesh.getTriangles()[1], (MeshTriangle{{2, 1, 3}}));
    ko::Reference<MoveableMesh> second(new MoveableMesh(mesh));

    // Deliberate: handles keep no count, so the first one destroyed unmaps for both.
    first.reset();
    EXPECT_FALSE(allocator->isMapped());
    EXPECT_EQ(second->get().getTriangles(), nullptr);
    second.reset();
    EXPECT_FALSE(allocator->isMapped());
}

TEST(MoveableMesh, OtherAllocatorsAreLeftAlone) {
    ko::Reference<koGeomTest::RecordingAllocator> recorder(new koGeomTest::RecordingAllocator);
    CompactMesh keyed(recorder);
    keyed.resizeTriangleArray(1);
    const MeshTriangle* triangles = keyed.getTriangles();
    const std::size_t requests = recorder->requests.size();
    ko::Reference<MoveableMesh>(new MoveableMesh(keyed)).reset();
    EXPECT_EQ(keyed.getTriangles(), triangles);
    EXPECT_EQ(recorder->requests.size(), requests);
}

} // namespace
} // namespace koGeom
