#pragma once

#include <cstdint>
#include <memory>

#include "geom/FormworkExport.h"

namespace koGeom {

/// A fixed-size set of small non-negative integers (element flags: deleted, visited, on the
/// boundary), one bit per element, that keeps a running count of its members so that
/// `numSet()` never scans.
///
/// Element i lives in word i / 32 at bit i mod 32. The vector always holds `size() / 32 + 1`
/// words, one more than needed when the size is a multiple of 32, and every whole-vector
/// operation touches all of them. No operation checks an index against the size: an index
/// outside 0 .. size() - 1 is the caller's fault, except that -1 .. -31 address bits 31 .. 1
/// of word 0 (the division truncates toward zero).
///
/// The words come from the general heap; a failed allocation throws `std::bad_alloc`.
class FORMWORK_EXPORT BitVector {
public:
    /// \name Construction
    /// @{
    BitVector() noexcept = default;
    /// An all-clear vector of `size` elements. A size whose word count `size / 32 + 1` is
    /// negative fails as an allocation failure.
    explicit BitVector(int size);
    BitVector(const BitVector& other);
    /// Copies into a temporary and swaps: if the copy fails, this vector is left unchanged.
    BitVector& operator=(const BitVector& other);
    ~BitVector();

    void swap(BitVector& other) noexcept;

    /// Replaces this vector by an all-clear vector of `size` elements: the old members are
    /// discarded, not carried over. If the allocation fails, this vector is left unchanged.
    void resize(int size);
    /// @}

    /// \name Queries
    /// @{
    int size() const noexcept { return size_; }
    /// The number of members, kept up to date by every change.
    int numSet() const noexcept { return numSet_; }

    /// 0 when element i is clear; when it is set, the element's own bit within its word
    /// (1 << (i mod 32)), not 1. After `setAllBits` the padding elements past `size()` in the
    /// last word report set too.
    // Deliberate: the masked word itself, not 1; callers test it against zero only.
    unsigned int isBitSet(int i) const noexcept { return words_[wordOf(i)] & bitOf(i); }

    /// The memory estimate 4 × (size / 32 + 1) + 16 bytes; the two report the same.
    int getSizeInBytes() const noexcept { return 4 * numInts() + 16; }
    int numBytesUsed() const noexcept { return getSizeInBytes(); }
    /// @}

    /// \name Changing members
    /// Each keeps `numSet()` exact by counting only bits that really change.
    /// @{
    void setBit(int i) noexcept {
        std::uint32_t& word = words_[wordOf(i)];
        const std::uint32_t bit = bitOf(i);
        numSet_ += (word & bit) == 0 ? 1 : 0;
        word |= bit;
    }
    void clearBit(int i) noexcept {
        std::uint32_t& word = words_[wordOf(i)];
        const std::uint32_t bit = bitOf(i);
        numSet_ -= (word & bit) != 0 ? 1 : 0;
        word &= ~bit;
    }
    /// `setBit` for each of the `count` indices in order; a repeated index counts once.
    /// O(count).
    void setBits(int count, const int* indices) noexcept;

    /// Clears every word; `numSet()` becomes 0. Nothing for size 0. O(size).
    void clearBits() noexcept;
    /// Sets every bit of every word, the padding past `size()` included; `numSet()` becomes
    /// `size()`. Nothing for size 0. O(size).
    void setAllBits() noexcept;
    /// @}

    /// \name Combining
    /// Each combines the elements below the smaller of the two sizes, in place; the elements
    /// of this vector from that size on are left as they are, also for `&=` with a shorter
    /// right-hand side. O(smaller size).
    /// @{
    BitVector& operator&=(const BitVector& other) noexcept;
    BitVector& operator|=(const BitVector& other) noexcept;
    BitVector& operator^=(const BitVector& other) noexcept;
    /// @}

private:
    // A remap marks the images of a set word by word, and must know whether word 0 exists.
    friend class Remap;

    // Signed, truncating division, so -1 .. -31 fall in word 0.
    static int wordOf(int i) noexcept { return i / 32; }
    // i mod 32 reduced to 0 .. 31 (the low five bits of the two's complement).
    static std::uint32_t bitOf(int i) noexcept {
        return std::uint32_t{1} << (static_cast<std::uint32_t>(i) & 31u);
    }

    // Deliberate: one word more than needed at a multiple of 32; the memory figures and the
    // whole-vector operations count that word.
    int numInts() const noexcept { return size_ / 32 + 1; }

    template <class Combine>
    void combine(const BitVector& other, Combine combineBits) noexcept;

    int size_ = 0;
    int numSet_ = 0;
    std::unique_ptr<std::uint32_t[]> words_;
};

} // namespace koGeom
