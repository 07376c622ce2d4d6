#include "tessar/os/MoveableAllocator.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "tessar/os/MoveableChunk.h"
#include "tests/support/HeapProbe.h"

namespace {

using koOS::MoveableAllocator;
using koOS::MoveableChunk;

using ChunkPtr = std::unique_ptr<MoveableChunk>;

// Bytes that differ with the position and the seed, so that a shifted or swapped mapping shows.
std::vector<unsigned char> pattern(std::size_t bytes, std::size_t seed) {
    std::vector<unsigned char> result(bytes);
    for (std::size_t i = 0; i < bytes; ++i) {
        result[i] = static_cast<unsigned char>(i * 31 + seed * 7 + 11);
    }
    return result;
}

void fill(void* address, std::size_t bytes, std::size_t seed) {
    std::memcpy(address, pattern(bytes, seed).data(), bytes);
}

bool holdsPattern(const void* address, std::size_t bytes, std::size_t seed) {
    return std::memcmp(address, pattern(bytes, seed).data(), bytes) == 0;
}

// Whether the kernel has any mapping over [address, address + bytes): mincore fails with
// ENOMEM for a range that is not mapped.
bool rangeIsMapped(void* address, std::size_t bytes) {
    std::vector<unsigned char> residency(bytes / static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) +
                                         1);
    const int result = ::mincore(address, bytes, residency.data());
    EXPECT_TRUE(result == 0 || errno == ENOMEM) << "mincore failed with errno " << errno;
    return result == 0;
}

TEST(MoveableAllocator, ContentsSurviveUnmapThenMap) {
    MoveableAllocator allocator;
    const std::size_t page = allocator.pageSize();
    const std::size_t bytes = 3 * page + 100;
    ChunkPtr chunk(allocator.allocate(bytes));
    void* first = chunk->map();
    EXPECT_EQ(chunk->map(), first); // mapping twice keeps the address
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % page, 0u);
    const std::size_t length = chunk->reservedBytes();
    EXPECT_TRUE(rangeIsMapped(first, length));
    fill(first, bytes, 1);
    chunk->unmap();
    EXPECT_FALSE(rangeIsMapped(first, length));

    // Occupy the old address range so the next map has to choose another one.
    void* blocker =
        ::mmap(first, length, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_EQ(blocker, first);
    void* second = chunk->map();
    EXPECT_NE(second, first);
    EXPECT_TRUE(holdsPattern(second, bytes, 1));
    ::munmap(blocker, length);

    // Deleting a mapped chunk unmaps it too.
    chunk.reset();
    EXPECT_FALSE(rangeIsMapped(second, length));
}

TEST(MoveableAllocator, NewChunkTakesTheSmallestHoleThatFits) {
    MoveableAllocator allocator;
    const std::size_t page = allocator.pageSize();
    EXPECT_EQ(allocator.allocate(0), nullptr);
    // Worked by hand: the file grows in allocation order, each chunk taking whole pages.
    std::vector<ChunkPtr> chunks;
    for (std::size_t bytes : {3 * page - 1, std::size_t{1}, page, page + 1, page, page, page}) {
        chunks.emplace_back(allocator.allocate(bytes));
    }
    EXPECT_EQ(chunks[3]->offset(), 5 * page);
    EXPECT_EQ(chunks[3]->reservedBytes(), 2 * page);
    // Holes at [0, 3), 4 and [7, 9): pages 7 and 8 merge; freeing page 9 cuts them all off.
    for (int i : {0, 2, 5, 4}) {
        chunks[i].reset();
    }
    EXPECT_EQ(allocator.numFreeRanges(), 3u);
    chunks[6].reset();
    EXPECT_EQ(allocator.numFreeRanges(), 2u);
    EXPECT_EQ(allocator.fileSize(), 7 * page);
    // Each request takes the smallest hole that fits, the lowest among equals; the two-page
    // request leaves page 2 as the lowest one-page hole.
    for (auto [pages, expectedPage] : {std::pair{1u, 4u}, {2u, 0u}, {1u, 2u}, {1u, 7u}}) {
        chunks.emplace_back(allocator.allocate(pages * page));
        EXPECT_EQ(chunks.back()->offset(), expectedPage * page);
    }
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
}

TEST(MoveableAllocator, ManyChunksKeepTheirContents) {
    MoveableAllocator allocator;
    const std::size_t page = allocator.pageSize();
    std::mt19937 random(7);
    std::vector<ChunkPtr> chunks(400);
    auto addChunk = [&](std::size_t i) {
        chunks[i].reset(allocator.allocate(1 + random() % (3 * page)));
        chunks[i]->map();
        fill(chunks[i]->address(), chunks[i]->size(), i);
        chunks[i]->unmap();
    };
    // The even chunks are replaced once all are made, each freed after its successor is made.
    for (std::size_t i = 0; i < 600; ++i) {
        addChunk(i < 400 ? i : 2 * (i - 400));
    }

    // Every chunk reads back its own pattern, no page of the file is two chunks', and the
    // pages of no chunk are exactly the free bytes.
    std::vector<int> owners(allocator.fileSize() / page);
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const MoveableChunk& chunk = *chunks[i];
        EXPECT_TRUE(holdsPattern(chunks[i]->map(), chunk.size(), i)) << "chunk " << i;
        ASSERT_LE(chunk.offset() + chunk.reservedBytes(), allocator.fileSize());
        for (std::size_t p = chunk.offset() / page;
             p < (chunk.offset() + chunk.reservedBytes()) / page; ++p) {
            EXPECT_EQ(owners[p]++, 0) << "page " << p;
        }
    }
    EXPECT_EQ(std::count(owners.begin(), owners.end(), 0) * page, allocator.freeBytes());

    // Freed in another order than taken, all the space still merges and is cut off.
    chunks.clear();
    EXPECT_EQ(allocator.fileSize(), 0u);
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
}

TEST(MoveableAllocator, NamedBackingFile) {
    std::string directory = testing::TempDir() + "moveable-XXXXXX";
    ASSERT_NE(::mkdtemp(directory.data()), nullptr);
    const std::string file = directory + "/chunks.bin";
    std::ofstream(file, std::ios::binary) << std::string(10000, 'x');
    {
        MoveableAllocator allocator(file.c_str());
        ASSERT_TRUE(allocator.isValid());
        EXPECT_EQ(std::filesystem::file_size(file), 0u); // emptied when opened
        ChunkPtr a(allocator.allocate(2 * allocator.pageSize()));
        EXPECT_EQ(std::filesystem::file_size(file), 2 * allocator.pageSize());
    }
    // The client's file stays after the allocator, empty once every chunk is deleted.
    EXPECT_EQ(std::filesystem::file_size(file), 0u);
    // A path that cannot be opened gives an invalid allocator that makes no chunks.
    MoveableAllocator missing((directory + "/no/such/dir").c_str());
    EXPECT_FALSE(missing.isValid());
    EXPECT_EQ(missing.allocate(100), nullptr);
    std::filesystem::remove_all(directory);
}

TEST(MoveableAllocator, HeapFailureLeavesTheAllocatorAsItWas) {
    MoveableAllocator allocator;
    const std::size_t page = allocator.pageSize();
    ChunkPtr a(allocator.allocate(page));
    ChunkPtr b(allocator.allocate(page));
    a.reset(); // a one-page hole at 0

    // Fail the first request of allocate, then the second, and so on until it needs no more.
    ChunkPtr chunk;
    for (std::size_t successes = 0; chunk == nullptr && successes < 20; ++successes) {
        {
            heapProbe::FailureScope failing(successes);
            try {
                chunk.reset(allocator.allocate(page));
            } catch (const std::bad_alloc&) {
            }
        }
        if (chunk == nullptr) {
            EXPECT_EQ(allocator.numChunks() + allocator.numFreeRanges(), 2u);
            EXPECT_EQ(allocator.freeBytes() + allocator.fileSize(), 3 * page);
        }
    }
    ASSERT_NE(chunk, nullptr);
    EXPECT_EQ(chunk->offset(), 0u);
}

TEST(MoveableAllocator, DestroyedAllocatorDetachesLiveChunks) {
    auto allocator = std::make_unique<MoveableAllocator>();
    ASSERT_TRUE(allocator->isValid());
    const std::size_t page = allocator->pageSize();
    ChunkPtr mapped(allocator->allocate(page));
    ChunkPtr unmapped(allocator->allocate(page));
    void* address = mapped->map();
    fill(address, page, 5);

    allocator.reset();
    EXPECT_FALSE(mapped->isAttached());
    EXPECT_FALSE(unmapped->isAttached());
    // The mapping made before stays usable; without the file nothing can be mapped again.
    EXPECT_EQ(mapped->map(), address);
    EXPECT_TRUE(holdsPattern(address, page, 5));
    EXPECT_EQ(unmapped->map(), nullptr);
    mapped->unmap();
    EXPECT_EQ(mapped->map(), nullptr);
    EXPECT_FALSE(rangeIsMapped(address, page));
}

} // namespace
