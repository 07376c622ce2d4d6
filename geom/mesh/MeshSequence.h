#pragma once

#include "tessar/core/Reference.h"

#include "geom/FormworkExport.h"
#include "geom/storage/Array.h"
#include "geom/storage/ArrayAllocator.h"

namespace koGeom {

/// The polymorphic root of index sequence storage, over the index type.
template <class Index>
class MeshSequenceBase {
public:
    virtual ~MeshSequenceBase() = default;

protected:
    MeshSequenceBase() = default;
    MeshSequenceBase(const MeshSequenceBase&) = default;
    MeshSequenceBase& operator=(const MeshSequenceBase&) = default;
};

/// Variable-length runs of vertex indices (triangle strips, triangle fans, line strips,
/// polygons or boundary loops) kept in one flat array.
///
/// `points()` holds the indices of all sequences one after another and `lengths()` the number
/// of indices of each, in order; the lengths are to be non-negative and to sum to the points
/// count (kept by whoever fills the arrays; not checked). Two caches sit beside them: the
/// start of each sequence, built on demand by `starts()`, and an auxiliary integer array that
/// nothing here fills but which is emptied with the starts and counted in the size. Whoever
/// changes the points or lengths calls `invalidate()` before the starts are used again.
class FORMWORK_EXPORT MeshSequence : public MeshSequenceBase<int> {
public:
    /// \name Construction
    /// @{
    /// Four empty arrays on the heap.
    MeshSequence();
    /// Four empty arrays, each in `allocator`.
    explicit MeshSequence(ko::Reference<ArrayAllocator> allocator);

    /// Copies the points and lengths onto the heap, whatever the source's allocator; both
    /// caches start empty. O(points + lengths).
    MeshSequence(const MeshSequence& other);

    /// Takes a heap copy of `other`'s points and lengths, with empty starts, in place of this
    /// sequence's own; the auxiliary array keeps what it had. Afterwards the points, lengths
    /// and starts have no allocator. Their old storage is released under the temporary copy's
    /// key, so an allocator that files blocks by key (`MoveableArrayAllocator`) keeps the old
    /// blocks until it is destroyed. O(points + lengths). Throws `std::bad_alloc` when the
    /// copy cannot be made, leaving this sequence unchanged.
    MeshSequence& operator=(const MeshSequence& other);

    /// Destroys the auxiliary array, the starts, the lengths and the points, in that order.
    ~MeshSequence() override;

    /// Exchanges the points, lengths and starts with `other`, not the auxiliary arrays, without
    /// telling any allocator (see `Array::swap`).
    void swap(MeshSequence& other) noexcept;

    /// Gives `allocator` (null for the heap) to all four arrays. When the points move, their
    /// cached starts are dropped first, since they would point into the released block. The
    /// arrays are to be empty (see `Array::setAllocator`).
    void setArrayAllocator(const ko::Reference<ArrayAllocator>& allocator);
    /// @}

    /// \name Contents
    /// @{
    Array<int>& points() noexcept { return points_; }
    const Array<int>& points() const noexcept { return points_; }
    Array<int>& lengths() noexcept { return lengths_; }
    const Array<int>& lengths() const noexcept { return lengths_; }
    Array<int>& auxiliary() noexcept { return auxiliary_; }
    const Array<int>& auxiliary() const noexcept { return auxiliary_; }
    /// @}

    /// \name Caches
    /// @{
    /// The address of each sequence's first index, one entry per length, or null when there
    /// are no starts. When there is at least one length and the cache is empty it is rebuilt
    /// first, in O(lengths), though the query is const: one thread at a time. The addresses
    /// are valid until the points are resized, or their moveable allocator unmapped.
    const int* const* starts() const;
    /// The number of cached starts: 0 until `starts()` builds them and after `invalidate()`.
    int numStarts() const noexcept { return starts_.count(); }
    /// Empties the starts and the auxiliary array.
    void invalidate();
    /// @}

    /// (points + lengths + 2 × starts + auxiliary) × 4, summed in 32 bits.
    int getSizeInBytes() const noexcept;

private:
    Array<int> points_;
    Array<int> lengths_;
    mutable Array<const int*> starts_;
    Array<int> auxiliary_;
};

} // namespace koGeom
