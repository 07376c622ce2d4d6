#pragma once

#include <cstdint>
#include <utility>

#include "tessar/core/ReferenceCount.h"

#include "geom/storage/ArrayOfSets.h"

namespace koGeom {

/// The shared body of the read-only triangle adjacency tables `MeshAdjTris` (the triangles
/// around each vertex) and `MeshTriAdjTris` (the triangles next to each triangle): one set of
/// triangle indices per element, and the size of the largest set, recorded when the table is
/// made.
///
/// A table does not find adjacency itself: the caller builds the sets (with the builders of
/// `ArrayOfSets`, in the order and with the meaning of adjacency it wants) and hands them over.
/// `Table` is the derived table, so that only tables of one kind swap. Indices are not checked.
template <class Table>
class TriangleSetTable : public ko::ReferenceCount {
public:
    TriangleSetTable(const TriangleSetTable&) = delete;
    TriangleSetTable& operator=(const TriangleSetTable&) = delete;

    /// The number of triangles in set i.
    int numTris(int i) const noexcept { return sets_.getSetSize(i); }
    /// The first triangle index of set i.
    const int* triIndices(int i) const noexcept { return sets_.getSet(i); }
    /// The size of the largest set when the table was made; 0 for an empty table.
    int maxTris() const noexcept { return maxTris_; }

    /// Exchanges the sets and the recorded largest sizes.
    void swap(Table& other) noexcept {
        TriangleSetTable& table = other;
        sets_.swap(table.sets_);
        std::swap(maxTris_, table.maxTris_);
    }

    /// 4 × (sets + members) + 72, a fixed estimate summed in 32 bits.
    int numBytesUsed() const noexcept {
        const std::uint32_t integers = static_cast<std::uint32_t>(sets_.getNumSets()) +
                                       static_cast<std::uint32_t>(sets_.getSets().count());
        return static_cast<int>(4u * integers + 72u);
    }

protected:
    TriangleSetTable() noexcept = default;
    // Takes the sets by swap, leaving the argument empty; O(sets) to find the largest.
    explicit TriangleSetTable(ArrayOfSets& sets) noexcept {
        sets_.swap(sets);
        maxTris_ = sets_.computeMaxSetSize();
    }
    ~TriangleSetTable() override = default;

private:
    ArrayOfSets sets_;
    int maxTris_ = 0;
};

} // namespace koGeom
