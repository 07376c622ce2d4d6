#include "tessar/os/FSAllocator.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace koOS {

namespace {

constexpr std::size_t maxSize = std::numeric_limits<std::size_t>::max();

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= alignof(std::max_align_t),
              "blocks from operator new must be aligned for any element");

// The slot alignment asked for, made a power of two no smaller than the free-list link's and
// no larger than the heap's own.
std::size_t slotAlignmentFor(std::size_t alignment) {
    std::size_t a = alignof(void*);
    while (a < alignment && a < alignof(std::max_align_t)) {
        a *= 2;
    }
    return a;
}

// Rounds up to the slot alignment, saturating: a size too large to round up stays huge, so
// that the block request fails in operator new instead of wrapping round to a small one.
std::size_t roundUp(std::size_t n, std::size_t alignment) {
    if (n > maxSize - (alignment - 1)) {
        return maxSize;
    }
    return (n + alignment - 1) / alignment * alignment;
}

} // namespace

FSAllocator::FSAllocator(std::size_t elementSize, std::size_t blockSize, std::size_t alignment)
    : elementSize_(std::max<std::size_t>(elementSize, 1)),
      slotSize_(roundUp(std::max(elementSize_, sizeof(FreeSlot)), slotAlignmentFor(alignment))),
      elementsPerBlock_(std::max<std::size_t>(blockSize / slotSize_, 1)) {
    // The header keeps the heap's full alignment, so the slots after it start aligned too.
    const std::size_t headerSize = roundUp(sizeof(BlockHeader), alignof(std::max_align_t));
    // elementsPerBlock_ * slotSize_ is at most max(blockSize, slotSize_), so only the header
    // can overflow the total.
    const std::size_t slotBytes = elementsPerBlock_ * slotSize_;
    bytesPerBlock_ = slotBytes > maxSize - headerSize ? maxSize : slotBytes + headerSize;
    addBlock();
}

FSAllocator::~FSAllocator() { releaseBlocks(); }

void FSAllocator::setLazy() noexcept {
    lazy_ = true;
    if (numAllocated_ == 0) {
        releaseBlocks();
    }
}

// Takes one block from the heap and makes all its slots the untaken run. Slots still untaken
// in the previous block are dropped from the run; this only happens when the free list and the
// run are both empty, so nothing is lost.
void FSAllocator::addBlock() {
    void* memory = ::operator new(bytesPerBlock_);
    auto* block = ::new (memory) BlockHeader{blocks_};
    blocks_ = block;
    ++numBlocks_;
    std::byte* slots =
        static_cast<std::byte*>(memory) + (bytesPerBlock_ - elementsPerBlock_ * slotSize_);
    untakenBegin_ = slots;
    untakenEnd_ = slots + elementsPerBlock_ * slotSize_;
    poison(untakenBegin_, elementsPerBlock_ * slotSize_);
}

void* FSAllocator::allocFromNewBlock() {
    addBlock();
    std::byte* element = untakenBegin_;
    untakenBegin_ += slotSize_;
    unpoison(element, elementSize_);
    ++numAllocated_;
    return element;
}

void FSAllocator::releaseBlocks() noexcept {
    BlockHeader* block = blocks_;
    while (block != nullptr) {
        BlockHeader* next = block->next;
        unpoison(block, bytesPerBlock_);
        ::operator delete(block);
        block = next;
    }
    blocks_ = nullptr;
    numBlocks_ = 0;
    numAllocated_ = 0;
    freeList_ = nullptr;
    untakenBegin_ = nullptr;
    untakenEnd_ = nullptr;
}

} // namespace koOS
