#pragma once

#include <cstddef>
#include <new>

#include "tessar/TessarExport.h"

#if defined(__SANITIZE_ADDRESS__)
#define TESSAR_FSALLOCATOR_POISON 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TESSAR_FSALLOCATOR_POISON 1
#endif
#endif

#if defined(TESSAR_FSALLOCATOR_POISON)
#include <sanitizer/asan_interface.h>
#endif

namespace koOS {

/// A pool of fixed-size elements, taken from the heap a block at a time.
///
/// Every element starts at a multiple of the pool's alignment, by default
/// `alignof(std::max_align_t)`: its slot is the element size (at least the size of a pointer)
/// rounded up to that alignment. A pool of records that need less (8-byte links, say) asks
/// for their own alignment and packs them without padding. A block holds
/// `max(1, blockSize / slotSize())` slots and is one heap request of that many slots plus a
/// small header (`bytesPerBlock()` bytes in all). `alloc()` and `free()` are O(1) and make no
/// heap call except when `alloc()` finds every slot in use and takes a new block. Freed
/// elements are reused last in, first out. Blocks are kept until the pool is destroyed (or
/// `setLazy()` finds no element out); destruction releases them all at once, whether or not
/// elements are still out: a client that drops a whole structure built in the pool need not
/// free its elements one by one.
///
/// The pool is not thread-safe: use it from one thread at a time. A heap failure while taking
/// a block throws `std::bad_alloc` and leaves the pool as it was. In a build with
/// AddressSanitizer, free and untaken slots are poisoned, so reading a freed element is
/// reported.
class TESSAR_EXPORT FSAllocator {
public:
    /// Makes a pool of `elementSize`-byte elements (0 counts as 1) and takes its first block
    /// at once, unless `setLazy()` follows. `alignment` is rounded up to a power of two
    /// between `alignof(void*)` and `alignof(std::max_align_t)`.
    FSAllocator(std::size_t elementSize, std::size_t blockSize,
                std::size_t alignment = alignof(std::max_align_t));
    ~FSAllocator();

    FSAllocator(const FSAllocator&) = delete;
    FSAllocator& operator=(const FSAllocator&) = delete;

    /// \name Elements
    /// @{

    /// Makes the pool take blocks only when an element needs one. Called right after
    /// construction, it gives back the first block; more generally, when no element is out,
    /// every block is given back.
    void setLazy() noexcept;

    /// An uninitialised element of `elementSize()` bytes, aligned to the pool's alignment. Throws
    /// `std::bad_alloc` if a new block is needed and the heap has none; the pool is then unchanged.
    void* alloc() {
        FreeSlot* slot = freeList_;
        if (slot != nullptr) {
            unpoison(slot, slotSize_);
            freeList_ = slot->next;
            poison(slot, slotSize_);
            unpoison(slot, elementSize_);
            ++numAllocated_;
            return slot;
        }
        if (untakenBegin_ != untakenEnd_) {
            std::byte* element = untakenBegin_;
            untakenBegin_ += slotSize_;
            unpoison(element, elementSize_);
            ++numAllocated_;
            return element;
        }
        return allocFromNewBlock();
    }

    /// Gives an element back for reuse by a later `alloc()`. `p` must come from this pool's
    /// `alloc()` and not be freed already; null is ignored.
    void free(void* p) noexcept {
        if (p == nullptr) {
            return;
        }
        unpoison(p, slotSize_);
        freeList_ = ::new (p) FreeSlot{freeList_};
        poison(p, slotSize_);
        --numAllocated_;
    }

    /// @}

    /// \name Queries
    /// @{

    std::size_t elementSize() const noexcept { return elementSize_; }
    /// The bytes between the starts of neighbouring elements of a block.
    std::size_t slotSize() const noexcept { return slotSize_; }
    std::size_t elementsPerBlock() const noexcept { return elementsPerBlock_; }
    /// The bytes of one heap request for a block, header included.
    std::size_t bytesPerBlock() const noexcept { return bytesPerBlock_; }
    /// The elements out now (allocated and not freed).
    std::size_t numAllocated() const noexcept { return numAllocated_; }
    std::size_t numBlocks() const noexcept { return numBlocks_; }
    /// The heap bytes held by the blocks: `numBlocks() * bytesPerBlock()`.
    std::size_t bytesReserved() const noexcept { return numBlocks_ * bytesPerBlock_; }
    bool isLazy() const noexcept { return lazy_; }

    /// @}

private:
    struct FreeSlot {
        FreeSlot* next;
    };
    struct BlockHeader {
        BlockHeader* next;
    };

    static void poison([[maybe_unused]] const void* p, [[maybe_unused]] std::size_t n) noexcept {
#if defined(TESSAR_FSALLOCATOR_POISON)
        ASAN_POISON_MEMORY_REGION(p, n);
#endif
    }
    static void unpoison([[maybe_unused]] const void* p, [[maybe_unused]] std::size_t n) noexcept {
#if defined(TESSAR_FSALLOCATOR_POISON)
        ASAN_UNPOISON_MEMORY_REGION(p, n);
#endif
    }

    void addBlock();
    void* allocFromNewBlock();
    void releaseBlocks() noexcept;

    std::size_t elementSize_;
    std::size_t slotSize_;
    std::size_t elementsPerBlock_;
    std::size_t bytesPerBlock_;
    FreeSlot* freeList_ = nullptr;
    // The slots of the newest block that no alloc() has handed out yet.
    std::byte* untakenBegin_ = nullptr;
    std::byte* untakenEnd_ = nullptr;
    BlockHeader* blocks_ = nullptr;
    std::size_t numAllocated_ = 0;
    std::size_t numBlocks_ = 0;
    bool lazy_ = false;
};

} // namespace koOS

#undef TESSAR_FSALLOCATOR_POISON
