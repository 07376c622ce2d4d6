#include "geom/curve/LineStrips.h"

#include <algorithm>

namespace koGeom {

namespace {

// Appends the elements of `from` to `to`. When both are the same array, its first half after
// the resize is the old contents, which are then copied after themselves.
template <class T>
void append(Array<T>& to, const Array<T>& from) {
    const int added = from.count();
    if (added == 0) {
        return;
    }
    const int kept = to.count();
    to.setCount(kept + added);
    std::copy_n(from.elements(), added, to.elements() + kept);
}

} // namespace

LineStrips::LineStrips() noexcept = default;

LineStrips::LineStrips(const LineStrips& other) {
    vertices_ = other.vertices_;
    lengths_ = other.lengths_;
    offsets_ = other.offsets_;
}

LineStrips::LineStrips(LineStrips&& other) : LineStrips(std::as_const(other)) {}

LineStrips& LineStrips::operator=(const LineStrips& other) {
    if (this != &other) {
        LineStrips copy(other);
        swap(copy);
    }
    return *this;
}

LineStrips& LineStrips::operator=(LineStrips&& other) { return *this = std::as_const(other); }

LineStrips::~LineStrips() = default;

void LineStrips::swap(LineStrips& other) noexcept {
    vertices_.swap(other.vertices_);
    lengths_.swap(other.lengths_);
    offsets_.swap(other.offsets_);
}

void LineStrips::add(const LineStrips& other) {
    append(vertices_, other.vertices_);
    append(lengths_, other.lengths_);
    // Deliberate: the appended offsets stay relative to `other`'s own vertices; callers that
    // merge several strip sets recompute all offsets once at the end with computeOffsets().
    append(offsets_, other.offsets_);
}

void LineStrips::computeOffsets() {
    const int numStrips = lengths_.count();
    offsets_.setCount(numStrips);
    const int* lengths = lengths_.elements();
    int* offsets = offsets_.elements();
    int start = 0;
    for (int i = 0; i < numStrips; ++i) {
        offsets[i] = start;
        start += lengths[i];
    }
}

int LineStrips::getSizeInBytes() const noexcept {
    return 4 * (3 * (vertices_.count() + 6) + lengths_.count() + offsets_.count());
}

} // namespace koGeom
