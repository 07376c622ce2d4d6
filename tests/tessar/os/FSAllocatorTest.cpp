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
    // Worked by hand with a 16-byte max_align_t and a 16-byte block header.
    ASSERT_EQ(alignof(std::max_align_t), 16u);
    struct Case {
        std::size_t elementSize, blockSize, alignment, slotSize, elementsPerBlock;
    };
    for (const Case& c : {Case{24, 4096, 16, 32, 128},    // rounded up to the alignment
                          Case{48, 4800, 16, 48, 100},    // exactly on it: no padding
                          Case{1, 100, 16, 16, 6},        // a slot still holds the free-list link
                          Case{0, 100, 16, 16, 6},        // 0 counts as 1
                          Case{1000, 10, 16, 1008, 1},    // a block smaller than a slot holds one
                          Case{56, 4096, 8, 56, 73},      // 8-byte records pack without padding
                          Case{20, 4096, 4, 24, 170},     // but never below the link's alignment
                          Case{20, 4096, 64, 32, 128}}) { // nor above the heap's
        SCOPED_TRACE(c.elementSize);
        FSAllocator pool(c.elementSize, c.blockSize, c.alignment);
        EXPECT_EQ(pool.elementSize(), std::max<std::size_t>(c.elementSize, 1));
        EXPECT_EQ(pool.slotSize(), c.slotSize);
        EXPECT_EQ(pool.elementsPerBlock(), c.elementsPerBlock);
        EXPECT_EQ(pool.bytesPerBlock(), c.elementsPerBlock * c.slotSize + 16);
    }
}

TEST(FSAllocator, OneHeapRequestPerBlock) {
    const std::size_t count = 10000;
    std::vector<void*> elements(count);
    heapProbe::Scope heap;
    FSAllocator pool(40, 4096); // 48-byte slots, 85 per block
    pool.setLazy();             // gives the first block back
    for (void*& p : elements) {
        p = pool.alloc();
    }
    const std::size_t expectedBlocks = (count + 84) / 85; // 118
    EXPECT_EQ(heap.calls(), 1 + expectedBlocks);

    // Freeing and taking them again reuses the slots: no request at all.
    heapProbe::Scope reuse;
    for (std::size_t i = 0; i < count; i += 2) {
        pool.free(elements[i]);
    }
    for (std::size_t i = 0; i < count; i += 2) {
        elements[i] = pool.alloc();
    }
    EXPECT_EQ(reuse.calls(), 0u);

    // Lazy keeps the blocks while an element is out and gives them all back once none is.
    pool.setLazy();
    EXPECT_EQ(pool.numBlocks(), expectedBlocks);
    for (void* p : elements) {
        pool.free(p);
    }
    pool.setLazy();
    EXPECT_EQ(pool.numBlocks(), 0u);
}

TEST(FSAllocator, ElementsAreAlignedDistinctAndWritable) {
    // Each element is written whole: the sanitizer build reports a write outside it. The pools
    // are destroyed with every element out: its leak checker fails the test if a block is kept.
    for (std::size_t size : {1u, 17u, 40u, 4097u}) {
        FSAllocator pool(size, 1024);
        std::vector<unsigned char*> elements;
        for (std::size_t i = 0; i < 300; ++i) {
            elements.push_back(static_cast<unsigned char*>(pool.alloc()));
            EXPECT_EQ(addressOf(elements.back()) % alignof(std::max_align_t), 0u);
            std::memset(elements.back(), static_cast<int>(i), size);
        }
        // No two elements overlap: sorted, each starts at least one element past the last.
        std::sort(elements.begin(), elements.end());
        for (std::size_t i = 1; i < elements.size(); ++i) {
            EXPECT_GE(addressOf(elements[i]) - addressOf(elements[i - 1]), size);
        }
    }
}

TEST(FSAllocator, HeapFailureLeavesThePoolAsItWas) {
    FSAllocator pool(24, 64); // two elements per block
    void* a = pool.alloc();
    void* b = pool.alloc();
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(pool.alloc(), std::bad_alloc);
    }
    EXPECT_EQ(pool.numAllocated() + pool.numBlocks(), 3u);
    void* c = pool.alloc();
    EXPECT_TRUE(c != a && c != b);

    // Freed elements are reused last in, first out; null is ignored.
    pool.free(a);
    pool.free(c);
    pool.free(nullptr);
    EXPECT_EQ(pool.alloc(), c);
    EXPECT_EQ(pool.alloc(), a);
}

// g++ announces AddressSanitizer with a macro, clang as a feature.
#if defined(__SANITIZE_ADDRESS__)
#define FSALLOCATOR_TEST_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define FSALLOCATOR_TEST_ASAN 1
#endif
#endif

#if defined(FSALLOCATOR_TEST_ASAN)
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
