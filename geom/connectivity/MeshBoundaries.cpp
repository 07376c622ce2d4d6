#include "geom/connectivity/MeshBoundaries.h"

#include <algorithm>

namespace koGeom {

MeshBoundaries::MeshBoundaries() = default;

MeshBoundaries::MeshBoundaries(const MeshBoundaries& other)
    : ReferenceCount(other), boundaries_(other.boundaries_) {}

MeshBoundaries& MeshBoundaries::operator=(const MeshBoundaries& other) {
    if (this == &other) {
        return *this;
    }
    MeshBoundaries copy(other);
    swap(copy);
    return *this;
}

MeshBoundaries::~MeshBoundaries() = default;

void MeshBoundaries::swap(MeshBoundaries& other) noexcept { boundaries_.swap(other.boundaries_); }

void MeshBoundaries::extract(int i, MeshSequence& out) const {
    if (&out == &boundaries_) {
        // Resizing the target would move the boundary being read: take it out first.
        MeshSequence alone;
        extract(i, alone);
        out.lengths() = alone.lengths();
        out.points() = alone.points();
        out.invalidate();
        return;
    }
    const int length = getLength(i);
    out.lengths().setCount(1);
    out.lengths().elements()[0] = length;
    out.points().setCount(length);
    std::copy_n(getStart(i), std::max(length, 0), out.points().elements());
    out.invalidate();
}

} // namespace koGeom
