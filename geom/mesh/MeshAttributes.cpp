#include "geom/mesh/MeshAttributes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>

namespace koGeom {

namespace {

// What the mesh counts for the channel object itself in its memory figures.
constexpr std::int64_t channelObjectBytes = 88;

constexpr float largestFloat = std::numeric_limits<float>::max();

// The range scan follows each component of every eighth element in its own lane, so that the
// lanes of a block fill whole vector registers and one minimum and one maximum are kept per
// register slot.
constexpr int blockElements = 8;

// Four lanes, one SSE or NEON register. The scan is written with these vectors rather than
// left to the auto-vectoriser: at -O3 GCC unrolls a scalar form of the lanes before the
// vectoriser runs, which then no longer recognises it and leaves one lane at a time, spilled.
using Quad = float __attribute__((vector_size(4 * sizeof(float))));
constexpr int quadLanes = 4;

inline Quad loadQuad(const float* values) noexcept {
    Quad quad;
    std::memcpy(&quad, values, sizeof quad);
    return quad;
}

// The comparisons of the scan, for single floats and lane by lane for quads: a value replaces
// a bound only when strictly beyond it, so a NaN never enters and, among equal values, the
// first met stays.
template <class Value>
inline Value lower(Value value, Value bound) noexcept {
    return value < bound ? value : bound;
}
template <class Value>
inline Value higher(Value value, Value bound) noexcept {
    return value > bound ? value : bound;
}

// The bound of component `c` over the lanes that followed it. Lanes hold the same bound
// wherever it is not zero; for a zero bound the lanes may disagree on its sign, and the one
// scan would have kept the first zero it met, which is found again among the elements that
// went through the lanes.
template <int width, class Keep>
float foldLanes(const float* lanes, int c, const float* values, int numScanned,
                Keep keep) noexcept {
    float bound = lanes[c];
    for (int j = c + width; j < blockElements * width; j += width) {
        bound = keep(lanes[j], bound);
    }
    if (bound != 0.0f) {
        return bound;
    }
    for (int j = c; j < blockElements * width; j += width) {
        if (std::signbit(lanes[j]) != std::signbit(bound) && lanes[j] == 0.0f) {
            for (int i = 0; i < numScanned; ++i) {
                if (values[i * width + c] == 0.0f) {
                    return values[i * width + c];
                }
            }
        }
    }
    return bound;
}

// Extends rangeMin and rangeMax over `numElements` elements of `width` floats, with the result
// of one scan in element order: whole blocks go through the lanes, the last few elements
// follow one by one.
template <int width>
void extendRange(const float* values, int numElements, float* rangeMin, float* rangeMax) noexcept {
    constexpr int lanes = blockElements * width;
    const int numScanned = numElements / blockElements * blockElements;
    if (numScanned != 0) {
        static_assert(lanes % quadLanes == 0);
        constexpr int quads = lanes / quadLanes;
        float laneMin[lanes];
        float laneMax[lanes];
        for (int j = 0; j < lanes; ++j) {
            laneMin[j] = rangeMin[j % width];
            laneMax[j] = rangeMax[j % width];
        }
        Quad quadMin[quads];
        Quad quadMax[quads];
        for (int q = 0; q < quads; ++q) {
            quadMin[q] = loadQuad(laneMin + q * quadLanes);
            quadMax[q] = loadQuad(laneMax + q * quadLanes);
        }
        for (const float* block = values; block != values + std::ptrdiff_t{numScanned} * width;
             block += lanes) {
            // Unrolled at every optimisation level, so that each quad stays in a register.
#pragma GCC unroll 8
            for (int q = 0; q < quads; ++q) {
                const Quad value = loadQuad(block + q * quadLanes);
                quadMin[q] = lower(value, quadMin[q]);
                quadMax[q] = higher(value, quadMax[q]);
            }
        }
        std::memcpy(laneMin, quadMin, sizeof laneMin);
        std::memcpy(laneMax, quadMax, sizeof laneMax);
        for (int c = 0; c < width; ++c) {
            rangeMin[c] = foldLanes<width>(laneMin, c, values, numScanned, lower<float>);
            rangeMax[c] = foldLanes<width>(laneMax, c, values, numScanned, higher<float>);
        }
    }
    for (const float* element = values + std::ptrdiff_t{numScanned} * width;
         element != values + std::ptrdiff_t{numElements} * width; element += width) {
        for (int c = 0; c < width; ++c) {
            rangeMin[c] = lower(element[c], rangeMin[c]);
            rangeMax[c] = higher(element[c], rangeMax[c]);
        }
    }
}

} // namespace

MeshAttributes::MeshAttributes(const koString::CString& name, int dimension, int numElements,
                               ko::Reference<ArrayAllocator> allocator)
    : name_(name), dimension_(dimension) {
    values_.setAllocator(std::move(allocator));
    values_.setCount(numElements * dimension);
    invalidateRange();
}

MeshAttributes& MeshAttributes::operator=(const MeshAttributes& other) {
    if (this == &other) {
        return *this;
    }
    koString::CString name(other.name_);
    // Deliberate: the values keep this channel's own allocator, as array assignment does; the
    // mesh copies channels by copy construction when they are to share the source's.
    if (values_.allocator()) {
        // In an allocator the array copies in place and a failure leaves it empty, which the
        // range must not go on describing.
        invalidateRange();
    }
    values_ = other.values_;
    name_.swap(name);
    dimension_ = other.dimension_;
    storageRequired_ = other.storageRequired_;
    computed_ = other.computed_;
    std::copy_n(other.rangeMin_, maxDimension, rangeMin_);
    std::copy_n(other.rangeMax_, maxDimension, rangeMax_);
    rangeValid_ = other.rangeValid_;
    return *this;
}

void MeshAttributes::swap(MeshAttributes& other) noexcept {
    name_.swap(other.name_);
    std::swap(dimension_, other.dimension_);
    std::swap(storageRequired_, other.storageRequired_);
    std::swap(computed_, other.computed_);
    values_.swap(other.values_);
    std::swap(rangeMin_, other.rangeMin_);
    std::swap(rangeMax_, other.rangeMax_);
    std::swap(rangeValid_, other.rangeValid_);
}

int MeshAttributes::getSizeInBytes() const noexcept {
    return static_cast<int>(std::int64_t{values_.count()} * 4 + channelObjectBytes);
}

void MeshAttributes::resize(int numFloats) {
    // Deliberate: the cached range survives a resize; the mesh resizes every channel when its
    // vertex count changes and keeps the ranges until it is told the values changed.
    values_.setCount(numFloats);
}

void MeshAttributes::copyArray(const float* source) {
    if (values_.count() != 0) {
        std::memcpy(values_.elements(), source,
                    sizeof(float) * static_cast<std::size_t>(values_.count()));
    }
    invalidateRange();
}

template <int width>
void MeshAttributes::refreshRange() const noexcept {
    if (rangeValid_) {
        return;
    }
    const auto* first = records<MeshFloats<width>>(width);
    if (first != nullptr) {
        extendRange<width>(first->v, getNumElements(), rangeMin_, rangeMax_);
    }
    // Deliberate: an empty channel caches its inverted range as valid; the mesh invalidates the
    // channel when values arrive, and an empty mesh answers its bounds at no cost.
    rangeValid_ = true;
}

koLinear::Range1d MeshAttributes::getRange1() const {
    refreshRange<1>();
    return koLinear::Range1d(rangeMin_[0], rangeMax_[0]);
}

koLinear::Range2d MeshAttributes::getRange2() const {
    refreshRange<2>();
    return koLinear::Range2d(koLinear::Point2(rangeMin_[0], rangeMin_[1]),
                             koLinear::Point2(rangeMax_[0], rangeMax_[1]));
}

koLinear::Range3d MeshAttributes::getRange3() const {
    refreshRange<3>();
    return koLinear::Range3d(koLinear::Point(rangeMin_[0], rangeMin_[1], rangeMin_[2]),
                             koLinear::Point(rangeMax_[0], rangeMax_[1], rangeMax_[2]));
}

void MeshAttributes::setRange1(const koLinear::Range1d& range) const noexcept {
    rangeMin_[0] = detail::roundToFloat(range.min);
    rangeMax_[0] = detail::roundToFloat(range.max);
    rangeValid_ = true;
}

void MeshAttributes::setRange2(const koLinear::Range2d& range) const noexcept {
    for (int c = 0; c < 2; ++c) {
        rangeMin_[c] = detail::roundToFloat(range.min[c]);
        rangeMax_[c] = detail::roundToFloat(range.max[c]);
    }
    rangeValid_ = true;
}

void MeshAttributes::setRange3(const koLinear::Range3d& range) const noexcept {
    for (int c = 0; c < 3; ++c) {
        rangeMin_[c] = detail::roundToFloat(range.min[c]);
        rangeMax_[c] = detail::roundToFloat(range.max[c]);
    }
    rangeValid_ = true;
}

void MeshAttributes::invalidateRange() noexcept {
    rangeValid_ = false;
    const int used = std::min(dimension_, maxDimension);
    for (int c = 0; c < used; ++c) {
        rangeMin_[c] = largestFloat;
        rangeMax_[c] = -largestFloat;
    }
}

void MeshAttributes::setArrayAllocator(ko::Reference<ArrayAllocator> allocator) {
    values_.setAllocator(std::move(allocator));
}

} // namespace koGeom
