#include "tessar/os/FSAllocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace {

using koOS::FSAllocator;

std::uintptr_t addressOf(const void* p) { return reinterpret_cast<std::uintptr_t>(p); }

TEST(FSAllocator, SlotsAndBlocksFollowTheSizes) {
    // Worked by hand with a 16-byte max_align_t: 24 rounds to 32, so 4096 bytes hold 128.
    ASSERT_EQ(alignof(std::max_align_t), 16u);
    FSAllocator pool(24, 4096);
    EXPECT_EQ(pool.elementSize(), 24u);
    EXPECT_EQ(pool.slotSize(), 32u);
    EXPECT_EQ(pool.elementsPerBlock(), 128u);
    EXPECT_EQ(pool.bytesPerBlock(), 128u * 32u + 16u);

    // A tiny element still holds the free-list link: 1 byte takes a 16-byte slot.
    FSAllocator tiny(1, 100);
    EXPECT_EQ(tiny.slotSize(), 16u);
    EXPECT_EQ(tiny.elementsPerBlock(), 6u);

    // A block smaller than one slot still holds one element.
    FSAllocator big(1000, 10);
    EXPECT_EQ(big.slotSize(), 1008u);
    EXPECT_EQ(big.elementsPerBlock(), 1u);

    // Exactly on the alignment: no padding.
    FSAllocator exact(48, 0x100000);
    EXPECT_EQ(exact.slotSize(), 48u);
    EXPECT_EQ(exact.elementsPerBlock(), 0x100000u / 48u);
}

TEST(FSAllocator, FirstBlockIsTakenAtConstructionUnlessLazy) {
    heapProbe::Scope eagerHeap;
    FSAllocator eager(24, 4096);
    EXPECT_EQ(eagerHeap.calls(), 1u);
    EXPECT_EQ(heapProbe::lastSize(), eager.bytesPerBlock());
    EXPECT_FALSE(eager.isLazy());
    EXPECT_EQ(eager.numBlocks(), 1u);
    EXPECT_EQ(eager.bytesReserved(), eager.bytesPerBlock());

    heapProbe::Scope lazyHeap;
    FSAllocator lazy(24, 4096);
    lazy.setLazy();
    EXPECT_TRUE(lazy.isLazy());
    EXPECT_EQ(lazy.numBlocks(), 0u);
    EXPECT_EQ(lazy.bytesReserved(), 0u);
    ASSERT_NE(lazy.alloc(), nullptr);
    EXPECT_EQ(lazy.numBlocks(), 1u);
    // The eager first block was given back, and the lazy one taken on demand: two requests.
    EXPECT_EQ(lazyHeap.calls(), 2u);

    // Switching to lazy with an element out keeps the blocks.
    eager.alloc();
    eager.setLazy();
    EXPECT_EQ(eager.numBlocks(), 1u);
    EXPECT_EQ(eager.numAllocated(), 1u);
}

TEST(FSAllocator, OneHeapRequestPerBlockOverThousandsOfElements) {
    FSAllocator pool(40, 4096); // 48-byte slots, 85 per block, the first taken on demand
    pool.setLazy();
    ASSERT_EQ(pool.elementsPerBlock(), 85u);

    const std::size_t count = 10000;
    std::vector<void*> elements(count);
    heapProbe::Scope heap;
    for (std::size_t i = 0; i < count; ++i) {
        elements[i] = pool.alloc();
    }
    const std::size_t expectedBlocks = (count + 84) / 85; // 118
    EXPECT_EQ(heap.calls(), expectedBlocks);
    EXPECT_EQ(pool.numBlocks(), expectedBlocks);
    EXPECT_EQ(pool.numAllocated(), count);

    // Freeing and taking them all again reuses the slots: no request at all.
    heapProbe::Scope reuse;
    for (void* p : elements) {
        pool.free(p);
    }
    for (std::size_t i = 0; i < count; ++i) {
        elements[i] = pool.alloc();
    }
    EXPECT_EQ(reuse.calls(), 0u);
    EXPECT_EQ(pool.numBlocks(), expectedBlocks);
}

TEST(FSAllocator, EveryElementIsAligned) {
    for (std::size_t size : {1u, 7u, 8u, 15u, 16u, 17u, 33u, 100u, 4097u}) {
        SCOPED_TRACE(size);
        FSAllocator pool(size, 1000);
        for (int i = 0; i < 300; ++i) {
            void* p = pool.alloc();
            EXPECT_EQ(addressOf(p) % alignof(std::max_align_t), 0u);
            if (i % 3 == 0) {
                pool.free(p);
            }
        }
    }
}

TEST(FSAllocator, ElementsAcrossBlocksAreDistinctAndWritable) {
    const std::size_t size = 40;
    FSAllocator pool(size, 1024);
    std::vector<unsigned char*> elements;
    for (int i = 0; i < 5000; ++i) {
        elements.push_back(static_cast<unsigned char*>(pool.alloc()));
        std::memset(elements.back(), i & 0xff, size);
    }
    EXPECT_GE(pool.numBlocks(), 5000u / pool.elementsPerBlock());

    // No two elements overlap: sorted, each starts at least one element past the last.
    std::vector<unsigned char*> sorted = elements;
    std::sort(sorted.begin(), sorted.end());
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        EXPECT_GE(addressOf(sorted[i]) - addressOf(sorted[i - 1]), size);
    }
    // Every byte still holds what was written to it.
    for (std::size_t i = 0; i < elements.size(); ++i) {
        for (std::size_t b = 0; b < size; ++b) {
            ASSERT_EQ(elements[i][b], i & 0xff) << "element " << i << " byte " << b;
        }
    }
}

TEST(FSAllocator, FreedElementsAreReusedLastInFirstOut) {
    FSAllocator pool(64, 4096);
    void* a = pool.alloc();
    void* b = pool.alloc();
    void* c = pool.alloc();
    ASSERT_EQ(pool.numAllocated(), 3u);
    pool.free(a);
    pool.free(c);
    EXPECT_EQ(pool.numAllocated(), 1u);
    EXPECT_EQ(pool.alloc(), c);
    EXPECT_EQ(pool.alloc(), a);
    EXPECT_EQ(pool.numAllocated(), 3u);
    // With the free list empty the next element is a fresh one.
    void* d = pool.alloc();
    EXPECT_NE(d, a);
    EXPECT_NE(d, b);
    EXPECT_NE(d, c);

    pool.free(nullptr);
    EXPECT_EQ(pool.numAllocated(), 4u);
}

TEST(FSAllocator, DestructionReleasesElementsStillOut) {
    // The leak checker of the sanitizer build fails this test if a block is kept.
    FSAllocator pool(24, 512);
    for (int i = 0; i < 1000; ++i) {
        pool.alloc();
    }
    EXPECT_EQ(pool.numAllocated(), 1000u);
    EXPECT_EQ(pool.bytesReserved(), pool.numBlocks() * pool.bytesPerBlock());
}

TEST(FSAllocator, HeapFailureLeavesThePoolAsItWas) {
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(FSAllocator(24, 4096), std::bad_alloc);
    }

    FSAllocator pool(24, 64); // two elements per block
    ASSERT_EQ(pool.elementsPerBlock(), 2u);
    void* a = pool.alloc();
    void* b = pool.alloc();
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(pool.alloc(), std::bad_alloc);
    }
    EXPECT_EQ(pool.numAllocated(), 2u);
    EXPECT_EQ(pool.numBlocks(), 1u);
    void* c = pool.alloc();
    EXPECT_EQ(pool.numBlocks(), 2u);
    EXPECT_NE(c, a);
    EXPECT_NE(c, b);
    pool.free(b);
    EXPECT_EQ(pool.alloc(), b);
}

#if defined(__SANITIZE_ADDRESS__)
TEST(FSAllocatorDeathTest, ReadingAFreedElementIsReported) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            FSAllocator pool(32, 4096);
            auto* p = static_cast<volatile int*>(pool.alloc());
            *p = 1;
            pool.free(const_cast<int*>(p));
            [[maybe_unused]] int read = p[2];
        },
        "use-after-poison");
}
#endif

} // namespace
