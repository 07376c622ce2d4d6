#include "tessar/os/FSAllocator.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace koOS {

namespace {

constexpr std::size_t slotAlignment = alignof(std::max_align_t);
constexpr std::size_t maxSize = std::numeric_limits<std::size_t>::max();

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= slotAlignment,
              "blocks from operator new must be aligned for any element");

// Rounds up to the slot alignment, saturating: a size too large to round up stays huge, so
// that the block request fails in operator new instead of wrapping round to a small one.
constexpr std::size_t roundUpToSlot(std::size_t n) {
    if (n > maxSize - (slotAlignment - 1)) {
        return maxSize;
    }
    return (n + slotAlignment - 1) / slotAlignment * slotAlignment;
}

} // namespace

FSAllocator::FSAllocator(std::size_t elementSize, std::size_t blockSize)
    : elementSize_(std::max<std::size_t>(elementSize, 1)),
      slotSize_(roundUpToSlot(std::max(elementSize_, sizeof(FreeSlot)))),
      elementsPerBlock_(std::max<std::size_t>(blockSize / slotSize_, 1)) {
    const std::size_t headerSize = roundUpToSlot(sizeof(BlockHeader));
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
