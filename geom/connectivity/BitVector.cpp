#include "geom/connectivity/BitVector.h"

#include <algorithm>
#include <new>

namespace koGeom {

namespace {

// The number of set bits of a word, in plain shifts and adds so that a loop over words
// vectorises without a population-count instruction.
inline int countBits(std::uint32_t word) noexcept {
    word = word - ((word >> 1) & 0x55555555u);
    word = (word & 0x33333333u) + ((word >> 2) & 0x33333333u);
    word = (word + (word >> 4)) & 0x0F0F0F0Fu;
    word += word >> 8;
    word += word >> 16;
    return static_cast<int>(word & 0x3Fu);
}

std::unique_ptr<std::uint32_t[]> allocateWords(int count) {
    if (count < 0) {
        throw std::bad_alloc();
    }
    return std::make_unique<std::uint32_t[]>(static_cast<std::size_t>(count));
}

} // namespace

BitVector::BitVector(int size) : size_(size) {
    if (size_ != 0) {
        words_ = allocateWords(numInts());
    }
}

BitVector::BitVector(const BitVector& other) : size_(other.size_), numSet_(other.numSet_) {
    if (size_ != 0) {
        words_ = allocateWords(numInts());
        std::copy_n(other.words_.get(), numInts(), words_.get());
    }
}

BitVector& BitVector::operator=(const BitVector& other) {
    BitVector copy(other);
    swap(copy);
    return *this;
}

BitVector::~BitVector() = default;

void BitVector::swap(BitVector& other) noexcept {
    std::swap(size_, other.size_);
    std::swap(numSet_, other.numSet_);
    words_.swap(other.words_);
}

void BitVector::resize(int size) {
    // Deliberate: a resized vector starts empty; callers refill it rather than keep flags
    // whose element numbering has changed.
    BitVector fresh(size);
    swap(fresh);
}

void BitVector::setBits(int count, const int* indices) noexcept {
    for (int k = 0; k < count; ++k) {
        setBit(indices[k]);
    }
}

void BitVector::clearBits() noexcept {
    if (size_ != 0) {
        std::fill_n(words_.get(), numInts(), 0u);
        numSet_ = 0;
    }
}

void BitVector::setAllBits() noexcept {
    if (size_ != 0) {
        // Deliberate: whole words, the padding past the size included; the count stays the
        // size because nothing counts the padding.
        std::fill_n(words_.get(), numInts(), ~std::uint32_t{0});
        numSet_ = size_;
    }
}

// Combines the elements below the smaller size a word at a time; the count moves by the
// bits that changed. Bits of the last, partial word from the smaller size on keep their
// value.
template <class Combine>
void BitVector::combine(const BitVector& other, Combine combineWord) noexcept {
    const int common = std::min(size_, other.size_);
    if (common <= 0) {
        return;
    }
    std::uint32_t* words = words_.get();
    const std::uint32_t* otherWords = other.words_.get();
    const int wholeWords = common / 32;
    int change = 0;
    for (int w = 0; w < wholeWords; ++w) {
        const std::uint32_t old = words[w];
        const std::uint32_t combined = combineWord(old, otherWords[w]);
        change += countBits(combined) - countBits(old);
        words[w] = combined;
    }
    const int tailBits = common % 32;
    if (tailBits != 0) {
        const std::uint32_t inCommon = (std::uint32_t{1} << tailBits) - 1u;
        const std::uint32_t old = words[wholeWords];
        const std::uint32_t combined =
            (old & ~inCommon) | (combineWord(old, otherWords[wholeWords]) & inCommon);
        change += countBits(combined) - countBits(old);
        words[wholeWords] = combined;
    }
    numSet_ += change;
}

// Deliberate: the three operators act on the common prefix only; elements of the longer
// left-hand side past it keep their flags, so a short mask can be applied to a long vector.
BitVector& BitVector::operator&=(const BitVector& other) noexcept {
    combine(other, [](std::uint32_t a, std::uint32_t b) { return a & b; });
    return *this;
}

BitVector& BitVector::operator|=(const BitVector& other) noexcept {
    combine(other, [](std::uint32_t a, std::uint32_t b) { return a | b; });
    return *this;
}

BitVector& BitVector::operator^=(const BitVector& other) noexcept {
    combine(other, [](std::uint32_t a, std::uint32_t b) { return a ^ b; });
    return *this;
}

} // namespace koGeom
