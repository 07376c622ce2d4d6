#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "tessar/TessarExport.h"

namespace koOS {

class MoveableAllocator;

namespace detail {
struct ChunkNodes;
} // namespace detail

/// A run of bytes kept in the backing file of a `MoveableAllocator`, reachable in memory only
/// while mapped.
///
/// A chunk comes from `MoveableAllocator::allocate()`, unmapped, and belongs to the caller,
/// who destroys it with `delete`: that unmaps it and gives its space in the file back to the
/// allocator for reuse. `map()` may place it at a different address each time; its contents
/// survive `unmap()` then `map()`. While unmapped it takes no address space and no memory
/// beyond its share of the file.
///
/// Delete every chunk before its allocator (see `MoveableAllocator`). A chunk and its
/// allocator are used from one thread at a time, together: deleting a chunk changes the
/// allocator.
class TESSAR_EXPORT MoveableChunk {
public:
    /// Unmaps the chunk and frees its space in the file.
    ~MoveableChunk();

    MoveableChunk(const MoveableChunk&) = delete;
    MoveableChunk& operator=(const MoveableChunk&) = delete;

    /// \name Mapping
    /// @{

    /// Maps the chunk read-write and returns its address, the current one if it is mapped
    /// already. The address is aligned to the page size; the `reservedBytes()` from it are
    /// addressable. Null if the system refuses the mapping (address space or mapping count
    /// exhausted) or the allocator is gone; the chunk then stays unmapped.
    void* map();
    /// Removes the chunk from the address space: the old address range becomes invalid. Does
    /// nothing when not mapped.
    void unmap() noexcept;
    bool isMapped() const noexcept { return address_ != nullptr; }
    /// The address while mapped, null while unmapped.
    void* address() const noexcept { return address_; }

    /// @}

    /// \name Queries
    /// @{

    /// The bytes asked for at allocation.
    std::size_t size() const noexcept { return size_; }
    /// The bytes the chunk holds in the file: `size()` rounded up to whole pages.
    std::size_t reservedBytes() const noexcept { return reservedBytes_; }
    /// Where the chunk starts in the backing file; a multiple of the page size.
    std::uint64_t offset() const noexcept { return offset_; }
    /// False once the allocator has been destroyed with this chunk alive.
    bool isAttached() const noexcept { return allocator_ != nullptr; }

    /// @}

private:
    friend class MoveableAllocator;

    // Made detached; the allocator attaches it once its place in the file is settled.
    MoveableChunk(std::size_t size, std::size_t reservedBytes,
                  std::unique_ptr<detail::ChunkNodes> nodes) noexcept;

    MoveableAllocator* allocator_ = nullptr;
    // Neighbours in the allocator's list of live chunks.
    MoveableChunk* previous_ = nullptr;
    MoveableChunk* next_ = nullptr;
    std::unique_ptr<detail::ChunkNodes> nodes_;
    void* address_ = nullptr;
    std::uint64_t offset_ = 0;
    std::size_t size_;
    std::size_t reservedBytes_;
};

} // namespace koOS
