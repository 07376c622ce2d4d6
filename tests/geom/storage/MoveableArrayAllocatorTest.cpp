#include "geom/storage/MoveableArrayAllocator.h"

#include <gtest/gtest.h>

#include "geom/mesh/MeshIndexRecords.h"
#include "geom/storage/Array.h"
#include "tessar/os/MoveableAllocator.h"

namespace koGeom {
namespace {

TEST(MoveableArrayAllocator, EntriesFollowResizesAndFrees) {
    koOS::MoveableAllocator chunks;
    ko::Reference<MoveableArrayAllocator> allocator(new MoveableArrayAllocator(chunks));
    const int a = 0, b = 0, c = 0; // three distinct keys

    // New chunks are mapped at once, even though the allocator itself is not mapped yet.
    ASSERT_FALSE(allocator->isMapped());
    allocator->resize(&a, 64);
    allocator->resize(&b, 16);
    ASSERT_NE(allocator->get(&a), nullptr);
    std::memset(allocator->get(&a), 0x3C, 64);

    // The same size keeps the chunk.
    const koOS::MoveableChunk* chunkOfA = allocator->entryChunk(0);
    allocator->resize(&a, 64);
    EXPECT_EQ(allocator->entryChunk(0), chunkOfA);
    // Growing copies the old bytes into a new chunk of exactly the new size.
    allocator->resize(&a, 5000);
    EXPECT_EQ(allocator->entryChunk(0)->size(), 5000u);
    EXPECT_EQ(static_cast<const unsigned char*>(allocator->get(&a))[63], 0x3C);

    // Size 0 keeps the entry, without a chunk; a later resize starts afresh.
    allocator->resize(&b, 0);
    ASSERT_EQ(allocator->numEntries(), 2);
    EXPECT_EQ(allocator->entryChunk(1), nullptr);
    allocator->resize(&b, 8);
    // An unknown key is ignored by free and by a resize to 0; a known one goes, alone.
    allocator->free(&c);
    allocator->resize(&c, 0);
    EXPECT_EQ(allocator->numEntries(), 2);
    allocator->free(&a);
    ASSERT_EQ(allocator->numEntries(), 1);
    EXPECT_EQ(allocator->entryKey(0), &b);
    EXPECT_EQ(chunks.numChunks(), 1u);

    allocator.reset(); // destroys the remaining chunk
    EXPECT_EQ(chunks.numChunks(), 0u);
}

TEST(MoveableArrayAllocator, ArraysSurviveUnmapAndMapCycles) {
    koOS::MoveableAllocator chunks;
    ko::Reference<MoveableArrayAllocator> allocator(new MoveableArrayAllocator(chunks));
    Array<float> floats;
    Array<MeshTriangle> triangles;
    floats.setAllocator(allocator);
    triangles.setAllocator(allocator);
    floats.setCount(10000);
    triangles.setCount(3000);
    for (int i = 0; i < floats.count(); ++i) {
        floats.elements()[i] = static_cast<float>(i) * 0.5f;
    }
    triangles.elements()[2999].set(2999, 3000, 3001);
    allocator->map();
    for (int cycle = 0; cycle < 2; ++cycle) {
        allocator->unmap();
        EXPECT_EQ(floats.elements(), nullptr);
        EXPECT_EQ(triangles.base(), nullptr);
        allocator->map();
        EXPECT_EQ(floats.elements()[9999], 4999.5f);
        EXPECT_EQ(triangles.elements()[2999], (MeshTriangle{{2999, 3000, 3001}}));
    }

    // Resizing while mapped keeps the prefix; copies share the allocator under their own key.
    floats.setCount(20);
    Array<float> copy(floats);
    EXPECT_EQ(allocator->numEntries(), 3);
    allocator->unmap();
    allocator->map();
    EXPECT_EQ(copy.elements()[19], 9.5f);
}

} // namespace
} // namespace koGeom
