#include "geom/storage/BitVector.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace koGeom {

namespace {

// The number of set bits of 64 bits, in plain shifts, adds and one multiply, which needs no
// population-count instruction.
inline int countBits(std::uint64_t bits) noexcept {
    bits = bits - ((bits >> 1) & 0x5555555555555555u);
    bits = (bits & 0x3333333333333333u) + ((bits >> 2) & 0x3333333333333333u);
    bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
    return static_cast<int>((bits * 0x0101010101010101u) >> 56);
}

// Two consecutive words as one 64-bit value; the order of the halves does not matter to
// bitwise combinations and counts.
inline std::uint64_t loadPair(const std::uint32_t* words) noexcept {
    std::uint64_t pair;
    std::memcpy(&pair, words, sizeof pair);
    return pair;
}

inline void storePair(std::uint32_t* words, std::uint64_t pair) noexcept {
    std::memcpy(words, &pair, sizeof pair);
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

// Combines the elements below the smaller size; the count moves by the bits that changed.
template <class Combine>
void BitVector::combine(const BitVector& other, Combine combineBits) noexcept {
    const int common = std::min(size_, other.size_);
    if (common <= 0) {
        return;
    }
    std::uint32_t* words = words_.get();
    const std::uint32_t* otherWords = other.words_.get();
    const int wholeWords = common / 32;
    int change = 0;
    int w = 0;
    for (; w + 2 <= wholeWords; w += 2) {
        const std::uint64_t old = loadPair(words + w);
        const std::uint64_t combined = combineBits(old, loadPair(otherWords + w));
        change += countBits(combined) - countBits(old);
        storePair(words + w, combined);
    }
    // The rest a word at a time; in the last, partial word the bits from the common size on
    // keep their value.
    for (; w * 32 < common; ++w) {
        const std::uint64_t inCommon = (std::uint64_t{1} << std::min(common - w * 32, 32)) - 1u;
        const std::uint64_t old = words[w];
        const std::uint64_t combined =
            (old & ~inCommon) | (combineBits(old, std::uint64_t{otherWords[w]}) & inCommon);
        change += countBits(combined) - countBits(old);
        words[w] = static_cast<std::uint32_t>(combined);
    }
    numSet_ += change;
}

// Deliberate: the three operators act on the common prefix only; elements of the longer
// left-hand side past it keep their flags, so a short mask can be applied to a long vector.
BitVector& BitVector::operator&=(const BitVector& other) noexcept {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a & b; });
    return *this;
}

BitVector& BitVector::operator|=(const BitVector& other) noexcept {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a | b; });
    return *this;
}

BitVector& BitVector::operator^=(const BitVector& other) noexcept {
    combine(other, [](std::uint64_t a, std::uint64_t b) { return a ^ b; });
    return *this;
}

} // namespace koGeom
