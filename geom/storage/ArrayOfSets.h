#pragma once

#include "geom/FormworkExport.h"
#include "geom/storage/Array.h"

namespace koGeom {

/// A list of integer sets kept in two flat arrays: the offset of each set's first member, and
/// the members of all sets one after the other, set 0 first. It is the storage of adjacency
/// tables (the triangles around a vertex, the neighbours of a vertex or a triangle), so a
/// table of any number of sets takes two allocations.
///
/// Set i holds `getSets()` elements `getOffsets()[i]` up to, not including, `getOffsets()[i+1]`
/// (the count of `getSets()` for the last set). Offsets are non-decreasing from 0; a set may
/// be empty. Set indices are not checked.
class FORMWORK_EXPORT ArrayOfSets {
public:
    /// \name Construction
    /// @{
    ArrayOfSets() noexcept = default;
    /// Room for `numSets` sets and `numMembers` members, not initialised: the caller fills
    /// both arrays.
    ArrayOfSets(int numSets, int numMembers);
    /// Copy construction copies both arrays (each adopting its source's allocator).
    ArrayOfSets(const ArrayOfSets& other) = default;
    /// Copies `other`, which keeps its sets: there is no stealing of storage.
    ArrayOfSets(ArrayOfSets&& other);
    /// Copies both arrays, each keeping this table's own allocator. On the heap the copy is
    /// made into temporaries and swapped in, so a failed copy leaves this table unchanged; in
    /// an allocator the arrays are assigned in place (an array there is known by its address).
    ArrayOfSets& operator=(const ArrayOfSets& other);
    /// As the copy assignment: `other` keeps its sets.
    ArrayOfSets& operator=(ArrayOfSets&& other);
    ~ArrayOfSets();

    /// Exchanges both arrays (see `Array::swap`: allocator keys are not moved).
    void swap(ArrayOfSets& other) noexcept;
    /// @}

    /// \name Access
    /// @{
    int getNumSets() const noexcept { return offsets_.count(); }
    int getSetSize(int i) const noexcept { return setEnd(i) - getIndex(i); }
    /// The first member of set i, inside the members array.
    int* getSet(int i) noexcept { return sets_.elements() + getIndex(i); }
    const int* getSet(int i) const noexcept { return sets_.elements() + getIndex(i); }

    Array<int>& getOffsets() noexcept { return offsets_; }
    const Array<int>& getOffsets() const noexcept { return offsets_; }
    Array<int>& getSets() noexcept { return sets_; }
    const Array<int>& getSets() const noexcept { return sets_; }

    /// The size of the largest set, 0 when there are none. O(number of sets).
    int computeMaxSetSize() const noexcept;
    /// @}

    /// \name Building
    /// Both build by counting, in time linear in the members, with one temporary integer per
    /// set. If an allocation fails after the arrays are sized, they are left sized but only
    /// partly filled.
    /// @{
    /// Builds `numSets` sets from `numPairs` (set, member) pairs, `pairs` holding the set
    /// index and then the member of each. Within a set the members keep the order of their
    /// pairs; duplicates are kept. Set indices must lie in 0 .. numSets - 1.
    void assignFromPairs(int numSets, int numPairs, const int* pairs);

    /// Builds the transpose of `other`: set m lists, in increasing order, the indices of the
    /// sets of `other` that hold m, once per occurrence. Members of `other` must lie in
    /// 0 .. numSets - 1.
    void assignInverse(int numSets, const ArrayOfSets& other);
    /// @}

private:
    int getIndex(int i) const noexcept { return offsets_.elements()[i]; }
    int setEnd(int i) const noexcept {
        return i + 1 < offsets_.count() ? offsets_.elements()[i + 1] : sets_.count();
    }

    // Sizes both arrays, then fills `sets_` from the set sizes counted in `offsets_`: turns
    // them into running offsets and places each member the walk yields at its set's cursor.
    template <class ForEachPair>
    void build(int numSets, int numMembers, ForEachPair forEachPair);

    Array<int> offsets_;
    Array<int> sets_;
};

} // namespace koGeom
