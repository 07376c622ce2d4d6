#pragma once

#include "geom/FormworkExport.h"
#include "geom/storage/Array.h"
#include "tessar/core/Reference.h"
#include "tessar/core/ReferenceCount.h"

namespace koGeom {

class BitVector;

/// A map from an old numbering of elements (the domain) to a new one (the range): entry i is
/// the new index of old element i, or -1 when old element i no longer exists.
///
/// The domain size is the number of entries; the range size is stored beside them and is not
/// checked against the entries, which the caller keeps below it. No index argument is
/// checked. A map is shared through `ko::Reference<Remap>`; a new one has reference count 0.
/// Allocation failures throw `std::bad_alloc`.
class FORMWORK_EXPORT Remap : public ko::ReferenceCount {
public:
    /// \name Construction
    /// @{
    Remap() noexcept = default;
    /// `domainSize` entries, not initialised (fill them with one of the `set` operations).
    Remap(int domainSize, int rangeSize);
    /// Copies the entries and the range size; the reference count is the new object's own.
    Remap(const Remap& other);
    /// Copies the entries and the range size. With the entries on the heap a failed copy
    /// leaves this map unchanged (see `Array` assignment).
    Remap& operator=(const Remap& other);
    ~Remap() override;

    /// Exchanges the entries and the range sizes (see `Array::swap`).
    void swap(Remap& other) noexcept;
    /// Sets the number of entries, keeping the first ones (new ones are not initialised), and
    /// the range size.
    void resize(int domainSize, int rangeSize);
    /// @}

    /// \name Access
    /// @{
    int getDomainSize() const noexcept { return map_.count(); }
    int getRangeSize() const noexcept { return rangeSize_; }
    void setRangeSize(int rangeSize) noexcept { rangeSize_ = rangeSize; }
    Array<int>& getArray() noexcept { return map_; }
    const Array<int>& getArray() const noexcept { return map_; }
    /// Entry 0, or null when the domain is empty.
    int* get() noexcept { return map_.elements(); }
    const int* get() const noexcept { return map_.elements(); }
    /// @}

    /// \name Filling
    /// None of these changes the range size. O(domain size) unless noted.
    /// @{
    /// Every entry := `value`.
    void set(int value) noexcept;
    /// Entry `index` := `value`. O(1).
    void set(int index, int value) noexcept { map_.elements()[index] = value; }
    /// Entries `first` .. `last` inclusive := `value`; nothing when first > last.
    /// O(last - first).
    void set(int first, int last, int value) noexcept;
    /// The identity: entry i := i.
    void setSequential() noexcept;
    /// Renumbers the entries that are not negative 0, 1, 2, ... in index order and leaves the
    /// negative ones; returns how many were renumbered, which the caller may store as the
    /// range size.
    int setValidSequential() noexcept;
    /// The compacting map of a deletion: `deleted.size()` entries, deleted elements -1 and
    /// the others numbered in order; the range size becomes the number of survivors.
    void setDeleteMap(const BitVector& deleted);
    /// @}

    /// \name Mapping
    /// @{
    /// Entry `index`.
    int operator()(int index) const noexcept { return map_.elements()[index]; }
    /// Replaces each of the `count` values that is not negative by its entry, in place;
    /// negative values are left. Nothing when count < 1. O(count).
    void operator()(int* values, int count) const noexcept;
    /// As above, over the whole array.
    void operator()(Array<int>& values) const noexcept;
    /// Adds the images of the members of `in` to `out` (which is not cleared first), counting
    /// each newly set bit. `in` must be at least as large as the domain and `out` as the range.
    /// Pass only sets of surviving elements: a member whose image is -1 marks bit 31 of word 0
    /// of `out` (element 31), and one whose image is below -31 is skipped. O(domain size).
    void operator()(BitVector& out, const BitVector& in) const noexcept;

    /// This map := `second` after `first`: domain size of `first`, range size of `second`.
    /// Entries are -1 where `first` has no image or `second` maps that image to -1. The
    /// entries are filled with -1 before either operand is read, so composing into an
    /// operand reads those -1s. O(domain size of first).
    void compose(const Remap& first, const Remap& second);

    /// A new map from the range back to the domain, -1 where nothing maps; when several
    /// entries share an image, the largest index wins. O(domain size + range size).
    ko::Reference<Remap> inverse() const;
    /// @}

private:
    Array<int> map_;
    int rangeSize_ = 0;
};

} // namespace koGeom
