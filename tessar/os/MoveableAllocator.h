#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tessar/TessarExport.h"

namespace koOS {

class MoveableChunk;

namespace detail {
class FileSpace;
} // namespace detail

/// A source of `MoveableChunk`s: runs of bytes kept in one backing file and mapped into
/// memory only while in use, so that a host can keep idle data out of memory.
///
/// The backing file is anonymous by default (a memory file, or an unlinked temporary file
/// where the system has none) or a path the client names. Chunks take whole pages of the
/// file, at page-aligned offsets. A new chunk goes in the smallest free range of the file
/// that holds it (the lowest one among equals), else at the end of the file, which grows.
/// A deleted chunk's range is merged with the free ranges beside it; free space at the end
/// of the file is cut off, and free space inside it is given back to the file system where
/// the file system allows (the anonymous file does), so freed chunks cost no memory or disk.
/// The contents of a new chunk are unspecified.
///
/// Not thread-safe: the allocator and all its chunks are used from one thread at a time.
///
/// Every chunk should be deleted before its allocator. An allocator destroyed with chunks
/// alive detaches them instead of leaving them dangling: a detached chunk keeps its current
/// mapping, if any, until it is unmapped or deleted, cannot be mapped again (`map()` returns
/// null when it is unmapped), and must still be deleted.
class TESSAR_EXPORT MoveableAllocator {
public:
    /// Keeps chunks in a new anonymous file, which vanishes with the allocator. Check
    /// `isValid()`: the system may refuse the file.
    MoveableAllocator();
    /// Keeps chunks in the file at `path`, created if missing and emptied if not. The file
    /// stays when the allocator is destroyed; once every chunk is deleted it is empty. Check
    /// `isValid()`: false if the file cannot be opened read-write (or `path` is null).
    explicit MoveableAllocator(const char* path);
    /// Closes the file, detaching any chunk still alive.
    ~MoveableAllocator();

    MoveableAllocator(const MoveableAllocator&) = delete;
    MoveableAllocator& operator=(const MoveableAllocator&) = delete;

    /// Whether a backing file is open; an invalid allocator makes no chunks.
    bool isValid() const noexcept { return fd_ >= 0; }

    /// A new unmapped chunk of `bytes` bytes, which the caller deletes. Null, with the
    /// allocator unchanged, if `bytes` is 0 (a chunk of no bytes has nothing to map: keep no
    /// chunk instead), the allocator is invalid, or the file cannot grow to hold it. Throws
    /// `std::bad_alloc` when the heap fails, leaving the allocator unchanged. Cost: O(log n)
    /// in the number of free ranges, plus a system call when the file grows.
    MoveableChunk* allocate(std::size_t bytes);

    /// \name Queries
    /// @{

    /// The system page size: the unit of chunk offsets and reserved sizes.
    std::size_t pageSize() const noexcept { return pageSize_; }
    /// The length of the backing file in bytes.
    std::uint64_t fileSize() const noexcept { return fileSize_; }
    /// The chunks alive now.
    std::size_t numChunks() const noexcept { return numChunks_; }
    /// The free ranges inside the file (neighbouring free ranges are always merged).
    std::size_t numFreeRanges() const noexcept;
    /// The bytes of the free ranges inside the file.
    std::uint64_t freeBytes() const noexcept;

    /// @}

private:
    friend class MoveableChunk;

    void release(MoveableChunk& chunk) noexcept;

    int fd_ = -1;
    std::size_t pageSize_;
    std::uint64_t fileSize_ = 0;
    std::unique_ptr<detail::FileSpace> space_;
    // The live chunks, so that the destructor can detach them.
    MoveableChunk* chunks_ = nullptr;
    std::size_t numChunks_ = 0;
};

} // namespace koOS
