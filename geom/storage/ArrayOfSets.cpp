#include "geom/storage/ArrayOfSets.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace koGeom {

ArrayOfSets::ArrayOfSets(int numSets, int numMembers) {
    offsets_.setCount(numSets);
    sets_.setCount(numMembers);
}

// Deliberate: the moving forms copy, so a moved-from table keeps its sets; an array kept in
// an allocator is known there by its own address and cannot simply change hands.
ArrayOfSets::ArrayOfSets(ArrayOfSets&& other) : ArrayOfSets(std::as_const(other)) {}

ArrayOfSets& ArrayOfSets::operator=(ArrayOfSets&& other) { return *this = std::as_const(other); }

ArrayOfSets& ArrayOfSets::operator=(const ArrayOfSets& other) {
    if (this == &other) {
        return *this;
    }
    if (!offsets_.allocator() && !sets_.allocator()) {
        // Heap temporaries (assignment keeps their heap storage), swapped in once both exist.
        Array<int> offsets;
        offsets = other.offsets_;
        Array<int> sets;
        sets = other.sets_;
        offsets_.swap(offsets);
        sets_.swap(sets);
    } else {
        offsets_ = other.offsets_;
        sets_ = other.sets_;
    }
    return *this;
}

ArrayOfSets::~ArrayOfSets() = default;

void ArrayOfSets::swap(ArrayOfSets& other) noexcept {
    offsets_.swap(other.offsets_);
    sets_.swap(other.sets_);
}

int ArrayOfSets::computeMaxSetSize() const noexcept {
    int largest = 0;
    for (int i = 0; i < getNumSets(); ++i) {
        largest = std::max(largest, getSetSize(i));
    }
    return largest;
}

template <class ForEachPair>
void ArrayOfSets::build(int numSets, int numMembers, ForEachPair forEachPair) {
    offsets_.setCount(numSets);
    sets_.setCount(numMembers);
    int* offsets = offsets_.elements();
    std::fill_n(offsets, std::max(numSets, 0), 0);
    forEachPair([offsets](int set, int) { ++offsets[set]; });
    int total = 0;
    for (int i = 0; i < numSets; ++i) {
        const int setSize = offsets[i];
        offsets[i] = total;
        total += setSize;
    }
    // The next free place of each set: its offset plus the members placed so far. Members
    // are placed in the order the walk yields them, which is what keeps the input order.
    const auto cursors = std::make_unique_for_overwrite<int[]>(std::max(numSets, 0));
    std::copy_n(offsets, std::max(numSets, 0), cursors.get());
    int* members = sets_.elements();
    forEachPair([&cursors, members](int set, int member) { members[cursors[set]++] = member; });
}

void ArrayOfSets::assignFromPairs(int numSets, int numPairs, const int* pairs) {
    build(numSets, numPairs, [numPairs, pairs](auto&& visit) {
        for (int k = 0; k < numPairs; ++k) {
            visit(pairs[2 * k], pairs[2 * k + 1]);
        }
    });
}

void ArrayOfSets::assignInverse(int numSets, const ArrayOfSets& other) {
    if (&other == this) {
        const ArrayOfSets source(other);
        assignInverse(numSets, source);
        return;
    }
    const int numOtherSets = other.getNumSets();
    const int numMembers = other.sets_.count();
    const int* otherOffsets = other.offsets_.elements();
    const int* otherMembers = other.sets_.elements();
    build(numSets, numMembers, [=](auto&& visit) {
        for (int j = 0; j < numOtherSets; ++j) {
            const int end = j + 1 < numOtherSets ? otherOffsets[j + 1] : numMembers;
            for (int k = otherOffsets[j]; k < end; ++k) {
                visit(otherMembers[k], j);
            }
        }
    });
}

} // namespace koGeom
