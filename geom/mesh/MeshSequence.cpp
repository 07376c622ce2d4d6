#include "geom/mesh/MeshSequence.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace koGeom {

MeshSequence::MeshSequence() = default;

MeshSequence::MeshSequence(ko::Reference<ArrayAllocator> allocator) {
    points_.setAllocator(allocator);
    lengths_.setAllocator(allocator);
    starts_.setAllocator(allocator);
    auxiliary_.setAllocator(std::move(allocator));
}

// Assignment keeps each array's own storage, and these start without an allocator: the copy
// lives on the heap whatever the source uses.
MeshSequence::MeshSequence(const MeshSequence& other) : MeshSequenceBase(other) {
    points_ = other.points_;
    lengths_ = other.lengths_;
}

MeshSequence& MeshSequence::operator=(const MeshSequence& other) {
    if (this == &other) {
        return *this;
    }
    // Deliberate: an assigned sequence ends on the heap like a copied one. The copy's arrays
    // are swapped in and the copy leaves with the old ones, releasing them under its own keys,
    // so a keyed allocator holds the old blocks until it is destroyed. The auxiliary cache is
    // not exchanged and keeps what it had.
    MeshSequence copy(other);
    swap(copy);
    return *this;
}

// The members go in reverse order of declaration: auxiliary, starts, lengths, points.
MeshSequence::~MeshSequence() = default;

void MeshSequence::swap(MeshSequence& other) noexcept {
    points_.swap(other.points_);
    lengths_.swap(other.lengths_);
    starts_.swap(other.starts_);
}

void MeshSequence::setArrayAllocator(const ko::Reference<ArrayAllocator>& allocator) {
    // Moving the points leaves their cached starts pointing into the released block, so they
    // are dropped (they rebuild on demand); a heap sequence given no allocator moves nothing.
    if (points_.allocator() || allocator) {
        starts_.setCount(0);
    }
    points_.setAllocator(allocator);
    lengths_.setAllocator(allocator);
    starts_.setAllocator(allocator);
    auxiliary_.setAllocator(allocator);
}

const int* const* MeshSequence::starts() const {
    const int numSequences = lengths_.count();
    if (numSequences > 0 && starts_.count() == 0) {
        starts_.setCount(numSequences);
        const int* first = points_.elements();
        const int* lengths = lengths_.elements();
        const int** starts = starts_.elements();
        std::ptrdiff_t offset = 0;
        for (int i = 0; i < numSequences; ++i) {
            starts[i] = first + offset;
            offset += lengths[i];
        }
    }
    return starts_.elements();
}

void MeshSequence::invalidate() {
    starts_.setCount(0);
    auxiliary_.setCount(0);
}

int MeshSequence::getSizeInBytes() const noexcept {
    // Each start is counted as two integers (it is an address); the sum wraps as 32-bit.
    const std::uint32_t integers = static_cast<std::uint32_t>(points_.count()) +
                                   static_cast<std::uint32_t>(lengths_.count()) +
                                   2u * static_cast<std::uint32_t>(starts_.count()) +
                                   static_cast<std::uint32_t>(auxiliary_.count());
    return static_cast<int>(integers * 4u);
}

} // namespace koGeom
