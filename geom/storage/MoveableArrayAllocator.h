#pragma once

#include <cstddef>
#include <cstdint>

#include "geom/FormworkExport.h"
#include "geom/storage/ArrayAllocator.h"
#include "tessar/core/Containers.h"
#include "tessar/os/MoveableAllocator.h"
#include "tessar/os/MoveableChunk.h"

namespace koGeom {

/// An `ArrayAllocator` that keeps each array in a chunk of a `koOS::MoveableAllocator`, so
/// that a host can unmap an idle mesh's arrays and map them again, possibly at other
/// addresses, before use.
///
/// Entries are kept in order of first allocation and found by a linear search of their keys:
/// O(entries) per access. The allocator starts unmapped; chunks made by `resize` are mapped at
/// once all the same, and `unmap()` is what takes them out of memory. `map()` and `unmap()`
/// must not overlap any access to the arrays, and resizing a non-empty array requires the
/// allocator to be mapped (its old contents are read through their address).
class FORMWORK_EXPORT MoveableArrayAllocator : public ArrayAllocator {
public:
    /// Takes chunks from `allocator`, which must outlive this object.
    explicit MoveableArrayAllocator(koOS::MoveableAllocator& allocator);
    MoveableArrayAllocator(const MoveableArrayAllocator&) = delete;
    MoveableArrayAllocator& operator=(const MoveableArrayAllocator&) = delete;

    /// The address of `key`'s chunk; null for an unknown key, an entry of size 0, or while
    /// unmapped.
    const void* get(const void* key) const override;
    void* get(const void* key) override;

    /// Moves `key` to a new chunk of exactly `bytes` bytes (mapped at once), copying the
    /// smaller of the old and new sizes; the same size changes nothing, and 0 leaves the entry
    /// in the list without a chunk. Throws `std::bad_alloc` when the moveable allocator cannot
    /// provide or map the chunk, leaving the entry as it was.
    void resize(const void* key, std::size_t bytes) override;

    /// Destroys `key`'s chunk and removes its entry; an unknown key is ignored.
    void free(const void* key) override;

    /// Maps every chunk and notes their addresses. Throws `std::bad_alloc` if the system
    /// refuses a mapping; chunks mapped before it stay mapped.
    void map();
    /// Unmaps every chunk: their addresses become null until `map()`.
    void unmap() noexcept;
    bool isMapped() const noexcept { return mapped_; }

    /// \name Entries, in order of first allocation
    /// @{
    int numEntries() const noexcept { return static_cast<int>(entries_.size()); }
    const void* entryKey(int i) const noexcept { return entries_[i].key; }
    std::uint64_t entrySize(int i) const noexcept { return entries_[i].size; }
    const koOS::MoveableChunk* entryChunk(int i) const noexcept { return entries_[i].chunk; }
    /// @}

protected:
    /// Destroys every chunk.
    ~MoveableArrayAllocator() override;

private:
    struct Entry {
        const void* key;
        koOS::MoveableChunk* chunk; // owned; null while the entry's size is 0
        std::uint64_t size;
        void* address; // null while unmapped
    };

    const Entry* find(const void* key) const noexcept;
    Entry* find(const void* key) noexcept;

    koOS::MoveableAllocator& allocator_;
    ko::vector<Entry> entries_;
    bool mapped_ = false;
};

} // namespace koGeom
