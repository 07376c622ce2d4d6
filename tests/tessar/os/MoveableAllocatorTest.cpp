#include "tessar/os/MoveableAllocator.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
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

unsigned char patternByte(std::size_t seed, std::size_t i) {
    return static_cast<unsigned char>((i * 31 + seed * 7 + 11) & 0xff);
}

void fill(void* address, std::size_t bytes, std::size_t seed) {
    auto* p = static_cast<unsigned char*>(address);
    for (std::size_t i = 0; i < bytes; ++i) {
        p[i] = patternByte(seed, i);
    }
}

// The index of the first byte that differs from the pattern, or -1 if all match.
long long firstMismatch(const void* address, std::size_t bytes, std::size_t seed) {
    const auto* p = static_cast<const unsigned char*>(address);
    for (std::size_t i = 0; i < bytes; ++i) {
        if (p[i] != patternByte(seed, i)) {
            return static_cast<long long>(i);
        }
    }
    return -1;
}

// Whether the kernel has any mapping over [address, address + bytes): mincore fails with
// ENOMEM for a range that is not mapped.
bool rangeIsMapped(void* address, std::size_t bytes) {
    const std::size_t page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    std::vector<unsigned char> residency((bytes + page - 1) / page);
    errno = 0;
    const int result = ::mincore(address, bytes, residency.data());
    EXPECT_TRUE(result == 0 || errno == ENOMEM) << "mincore failed with errno " << errno;
    return result == 0;
}

// A fresh directory under the test temporary directory, removed with this object.
class TemporaryDirectory {
public:
    TemporaryDirectory() {
        std::string pattern = testing::TempDir() + "moveable-XXXXXX";
        const char* made = ::mkdtemp(pattern.data());
        EXPECT_NE(made, nullptr);
        path_ = pattern;
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

TEST(MoveableAllocator, ContentsSurviveUnmapThenMap) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    const std::size_t bytes = 3 * page + 100;
    ChunkPtr chunk(allocator.allocate(bytes));
    ASSERT_NE(chunk, nullptr);
    EXPECT_FALSE(chunk->isMapped());
    EXPECT_EQ(chunk->address(), nullptr);
    EXPECT_EQ(chunk->size(), bytes);
    EXPECT_EQ(chunk->reservedBytes(), 4 * page);

    void* first = chunk->map();
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(chunk->isMapped());
    EXPECT_EQ(chunk->address(), first);
    EXPECT_EQ(chunk->map(), first); // mapping twice keeps the address
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first) % page, 0u);
    fill(first, bytes, 1);
    chunk->unmap();
    EXPECT_FALSE(chunk->isMapped());
    EXPECT_EQ(chunk->address(), nullptr);

    // Occupy the old address range so the next map has to choose another one.
    void* blocker = ::mmap(first, chunk->reservedBytes(), PROT_READ,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_EQ(blocker, first);
    void* second = chunk->map();
    ASSERT_NE(second, nullptr);
    EXPECT_NE(second, first);
    EXPECT_EQ(firstMismatch(second, bytes, 1), -1);
    ::munmap(blocker, chunk->reservedBytes());

    // A second round trip through another mapping of the same file.
    chunk->unmap();
    void* third = chunk->map();
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(firstMismatch(third, bytes, 1), -1);
}

TEST(MoveableAllocator, UnmapRemovesTheMapping) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    ChunkPtr chunk(allocator.allocate(5 * allocator.pageSize()));
    ASSERT_NE(chunk, nullptr);
    void* address = chunk->map();
    ASSERT_NE(address, nullptr);
    const std::size_t length = chunk->reservedBytes();
    EXPECT_TRUE(rangeIsMapped(address, length));
    chunk->unmap();
    EXPECT_FALSE(rangeIsMapped(address, length));

    // Deleting a mapped chunk unmaps it too.
    address = chunk->map();
    ASSERT_NE(address, nullptr);
    ASSERT_TRUE(rangeIsMapped(address, length));
    chunk.reset();
    EXPECT_FALSE(rangeIsMapped(address, length));
}

TEST(MoveableAllocator, DestroyedChunkSpaceIsReused) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    EXPECT_EQ(allocator.allocate(0), nullptr);
    EXPECT_EQ(allocator.numChunks(), 0u);

    // Worked by hand: the file grows in allocation order, each chunk taking whole pages.
    ChunkPtr a(allocator.allocate(1));
    ChunkPtr b(allocator.allocate(page + 1));
    ChunkPtr c(allocator.allocate(page));
    ASSERT_TRUE(a && b && c);
    EXPECT_EQ(a->offset(), 0u);
    EXPECT_EQ(b->offset(), page);
    EXPECT_EQ(c->offset(), 3 * page);
    EXPECT_EQ(a->reservedBytes(), page);
    EXPECT_EQ(b->reservedBytes(), 2 * page);
    EXPECT_EQ(allocator.fileSize(), 4 * page);

    b.reset();
    EXPECT_EQ(allocator.numChunks(), 2u);
    EXPECT_EQ(allocator.numFreeRanges(), 1u);
    EXPECT_EQ(allocator.freeBytes(), 2 * page);
    EXPECT_EQ(allocator.fileSize(), 4 * page); // the hole stays inside the file

    ChunkPtr d(allocator.allocate(page / 2));
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(d->offset(), page);
    // The rest of the hole is still free and is the next chunk's place.
    EXPECT_EQ(allocator.freeBytes(), page);
    ChunkPtr e(allocator.allocate(page));
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->offset(), 2 * page);
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
    EXPECT_EQ(allocator.fileSize(), 4 * page);
}

TEST(MoveableAllocator, FreedNeighboursCoalesce) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    std::vector<ChunkPtr> chunks;
    for (int i = 0; i < 6; ++i) {
        chunks.emplace_back(allocator.allocate(page));
        ASSERT_NE(chunks.back(), nullptr);
        ASSERT_EQ(chunks.back()->offset(), i * page);
    }

    // Freed with the next one after: the two pages [1, 3) make one range.
    chunks[1].reset();
    chunks[2].reset();
    EXPECT_EQ(allocator.numFreeRanges(), 1u);
    // Freed with the previous one before: [4, 5) stays apart from [1, 3).
    chunks[4].reset();
    EXPECT_EQ(allocator.numFreeRanges(), 2u);
    // Freed between two free ranges: [1, 5) is one range of four pages.
    chunks[3].reset();
    EXPECT_EQ(allocator.numFreeRanges(), 1u);
    EXPECT_EQ(allocator.freeBytes(), 4 * page);

    // Four pages fit in the merged hole; without merging they would go at the end.
    ChunkPtr four(allocator.allocate(4 * page));
    ASSERT_NE(four, nullptr);
    EXPECT_EQ(four->offset(), page);
    EXPECT_EQ(allocator.fileSize(), 6 * page);
    EXPECT_EQ(allocator.numFreeRanges(), 0u);

    // Free space reaching the end of the file is cut off, merged ranges included.
    four.reset();
    chunks[5].reset();
    EXPECT_EQ(allocator.fileSize(), page);
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
    EXPECT_EQ(allocator.freeBytes(), 0u);
    chunks[0].reset();
    EXPECT_EQ(allocator.fileSize(), 0u);
}

TEST(MoveableAllocator, NewChunkTakesTheSmallestHoleThatFits) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    // Pages [0, 3) then one page each up to 8; holes are left at [0, 3), 4 and 6.
    std::vector<ChunkPtr> chunks;
    for (std::size_t pages : {3u, 1u, 1u, 1u, 1u, 1u}) {
        chunks.emplace_back(allocator.allocate(pages * page));
        ASSERT_NE(chunks.back(), nullptr);
    }
    chunks[0].reset();
    chunks[4].reset();
    chunks[2].reset();

    // Each request takes the smallest hole that fits, the lowest among equals; the two-page
    // request leaves page 2 as the lowest one-page hole.
    for (auto [pages, expectedPage] : {std::pair{1u, 4u}, {2u, 0u}, {1u, 2u}, {1u, 6u}}) {
        SCOPED_TRACE(expectedPage);
        chunks.emplace_back(allocator.allocate(pages * page));
        ASSERT_NE(chunks.back(), nullptr);
        EXPECT_EQ(chunks.back()->offset(), expectedPage * page);
    }
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
    EXPECT_EQ(allocator.fileSize(), 8 * page);
}

TEST(MoveableAllocator, ManyChunksKeepTheirContents) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    std::mt19937 random(7);
    std::vector<ChunkPtr> chunks;
    std::vector<std::size_t> seeds;
    std::size_t nextSeed = 0;

    auto addChunk = [&](std::size_t i) {
        const std::size_t bytes = 1 + random() % (3 * page);
        chunks[i].reset(allocator.allocate(bytes));
        ASSERT_NE(chunks[i], nullptr);
        void* address = chunks[i]->map();
        ASSERT_NE(address, nullptr);
        seeds[i] = nextSeed++;
        fill(address, bytes, seeds[i]);
        chunks[i]->unmap();
    };

    const std::size_t count = 400;
    chunks.resize(count);
    seeds.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        addChunk(i);
    }
    for (std::size_t i = 0; i < count; i += 2) {
        chunks[i].reset();
    }
    EXPECT_EQ(allocator.numChunks(), count / 2);
    for (std::size_t i = 0; i < count; i += 2) {
        addChunk(i);
    }
    EXPECT_EQ(allocator.numChunks(), count);

    // Every chunk reads back its own pattern, and no two share file space.
    std::vector<const MoveableChunk*> byOffset;
    for (std::size_t i = 0; i < count; ++i) {
        void* address = chunks[i]->map();
        ASSERT_NE(address, nullptr);
        EXPECT_EQ(firstMismatch(address, chunks[i]->size(), seeds[i]), -1) << "chunk " << i;
        EXPECT_EQ(chunks[i]->offset() % page, 0u);
        byOffset.push_back(chunks[i].get());
    }
    std::sort(byOffset.begin(), byOffset.end(), [](const MoveableChunk* l, const MoveableChunk* r) {
        return l->offset() < r->offset();
    });
    for (std::size_t i = 1; i < byOffset.size(); ++i) {
        EXPECT_LE(byOffset[i - 1]->offset() + byOffset[i - 1]->reservedBytes(),
                  byOffset[i]->offset());
    }
    EXPECT_GE(allocator.fileSize(), byOffset.back()->offset() + byOffset.back()->reservedBytes());

    // File space is either some chunk's or free: nothing is lost.
    std::uint64_t used = 0;
    for (const MoveableChunk* chunk : byOffset) {
        used += chunk->reservedBytes();
    }
    EXPECT_EQ(used + allocator.freeBytes(), allocator.fileSize());

    chunks.clear();
    EXPECT_EQ(allocator.numChunks(), 0u);
    EXPECT_EQ(allocator.fileSize(), 0u);
    EXPECT_EQ(allocator.numFreeRanges(), 0u);
}

TEST(MoveableAllocator, NamedBackingFile) {
    TemporaryDirectory directory;
    const std::filesystem::path file = directory.path() / "chunks.bin";
    std::ofstream(file, std::ios::binary) << std::string(10000, 'x');
    ASSERT_EQ(std::filesystem::file_size(file), 10000u);
    {
        MoveableAllocator allocator(file.c_str());
        ASSERT_TRUE(allocator.isValid());
        const std::size_t page = allocator.pageSize();
        EXPECT_EQ(std::filesystem::file_size(file), 0u); // emptied when opened

        ChunkPtr a(allocator.allocate(2 * page));
        ChunkPtr b(allocator.allocate(page + 5));
        ASSERT_TRUE(a && b);
        EXPECT_EQ(std::filesystem::file_size(file), 4 * page);

        fill(b->map(), page + 5, 4);
        b->unmap();

        // The data lives in the named file, at the chunk's offset.
        std::ifstream stream(file, std::ios::binary);
        stream.seekg(static_cast<std::streamoff>(b->offset()));
        std::vector<char> onDisk(page + 5);
        stream.read(onDisk.data(), static_cast<std::streamsize>(onDisk.size()));
        ASSERT_TRUE(stream);
        EXPECT_EQ(firstMismatch(onDisk.data(), onDisk.size(), 4), -1);

        b.reset();
        EXPECT_EQ(std::filesystem::file_size(file), 2 * page);
        a.reset();
        EXPECT_EQ(std::filesystem::file_size(file), 0u);
    }
    // The client's file stays after the allocator.
    EXPECT_TRUE(std::filesystem::exists(file));

    // A path that cannot be opened gives an invalid allocator that makes no chunks.
    MoveableAllocator missing((directory.path() / "no" / "such" / "dir").c_str());
    EXPECT_FALSE(missing.isValid());
    EXPECT_EQ(missing.allocate(100), nullptr);
    MoveableAllocator unnamed(nullptr);
    EXPECT_FALSE(unnamed.isValid());
    EXPECT_EQ(unnamed.allocate(100), nullptr);
}

TEST(MoveableAllocator, HeapFailureLeavesTheAllocatorAsItWas) {
    MoveableAllocator allocator;
    ASSERT_TRUE(allocator.isValid());
    const std::size_t page = allocator.pageSize();
    ChunkPtr a(allocator.allocate(page));
    ChunkPtr b(allocator.allocate(page));
    ASSERT_TRUE(a && b);
    a.reset(); // a one-page hole at 0

    // Fail the first request of allocate, then the second, and so on until it needs no more.
    bool succeeded = false;
    for (std::size_t successes = 0; successes < 20 && !succeeded; ++successes) {
        SCOPED_TRACE(successes);
        bool threw = false;
        MoveableChunk* chunk = nullptr;
        {
            heapProbe::FailureScope failing(successes);
            try {
                chunk = allocator.allocate(page);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
        }
        succeeded = !threw;
        if (succeeded) {
            ASSERT_NE(chunk, nullptr);
            EXPECT_EQ(chunk->offset(), 0u);
            delete chunk;
        } else {
            EXPECT_EQ(chunk, nullptr);
        }
        EXPECT_EQ(allocator.numChunks(), 1u);
        EXPECT_EQ(allocator.numFreeRanges(), 1u);
        EXPECT_EQ(allocator.freeBytes(), page);
        EXPECT_EQ(allocator.fileSize(), 2 * page);
    }
    ASSERT_TRUE(succeeded);

    // After the failures the hole is still there to be taken.
    ChunkPtr c(allocator.allocate(page));
    ASSERT_NE(c, nullptr);
    EXPECT_EQ(c->offset(), 0u);
}

TEST(MoveableAllocator, DestroyedAllocatorDetachesLiveChunks) {
    auto allocator = std::make_unique<MoveableAllocator>();
    ASSERT_TRUE(allocator->isValid());
    const std::size_t page = allocator->pageSize();
    ChunkPtr mapped(allocator->allocate(page));
    ChunkPtr unmapped(allocator->allocate(page));
    ASSERT_TRUE(mapped && unmapped);
    void* address = mapped->map();
    ASSERT_NE(address, nullptr);
    fill(address, page, 5);

    allocator.reset();
    EXPECT_FALSE(mapped->isAttached());
    EXPECT_FALSE(unmapped->isAttached());
    // The mapping made before stays usable.
    EXPECT_EQ(mapped->address(), address);
    EXPECT_EQ(mapped->map(), address);
    EXPECT_EQ(firstMismatch(address, page, 5), -1);
    // Without the file nothing can be mapped again.
    EXPECT_EQ(unmapped->map(), nullptr);
    mapped->unmap();
    EXPECT_EQ(mapped->map(), nullptr);
    EXPECT_FALSE(rangeIsMapped(address, page));
}

} // namespace
