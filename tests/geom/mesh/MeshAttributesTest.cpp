#include "geom/mesh/MeshAttributes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <new>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"
#include "tests/support/MeshAttributesAccess.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::RecordingAllocator;
using Access = koGeomTest::MeshAttributesAccess;
using Request = RecordingAllocator::Request;
using Operation = RecordingAllocator::Operation;

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr double largestFloat = 3.4028234663852886e38;

// Which record views a channel gives, one bit each in the order of the list.
unsigned recordViews(const MeshAttributes& channel) {
    const void* views[] = {channel.asFloat1(),     channel.asFloat2(),    channel.asFloat3(),
                           channel.asFloat4(),     channel.asMeshUV(),    channel.asMeshVertex(),
                           channel.asMeshNormal(), channel.asMeshColour()};
    unsigned bits = 0;
    for (unsigned i = 0; i < 8; ++i) {
        if (views[i] != nullptr) {
            EXPECT_EQ(views[i], channel.asFloat());
            bits |= 1u << i;
        }
    }
    return bits;
}

TEST(MeshAttributes, SizesFlagsAndViewsFollowTheDimension) {
    auto uvs = Access::create("uvs", 2, 10);
    EXPECT_EQ(uvs->getSizeInBytes(), 168); // 20 floats and the object
    uvs->setComputed(true);
    EXPECT_FALSE(uvs->needsStorage());

    const unsigned viewsByDimension[] = {0b00000001u, 0b00010010u, 0b01100100u, 0b10001000u};
    for (int dimension = 1; dimension <= 4; ++dimension) {
        EXPECT_EQ(recordViews(*Access::create("c", dimension, 3)), viewsByDimension[dimension - 1]);
        EXPECT_EQ(recordViews(*Access::create("c", dimension, 0)), 0u);
    }

    // resize counts floats: 7 floats of width 3 are two whole elements.
    auto vertices = Access::create("vertices", 3, 3);
    vertices->resize(7);
    EXPECT_EQ(vertices->getNumElements(), 2);
    EXPECT_EQ(vertices->getSizeInBytes(), 7 * 4 + 88);
}

TEST(MeshAttributes, RangesByHand) {
    auto vertices = Access::create("vertices", 3, 2);
    const float points[] = {1, 5, 0, -2, 3, 4};
    vertices->copyArray(points);
    // A set range is rounded to float and returned whatever the values until it is reset; the
    // reset makes the next scan start afresh rather than from the set range.
    vertices->setRange3(koLinear::Range3d({-100, 0.1, -100}, {100, 100, 100}));
    vertices->asMeshVertex()[0].set(50, 50, 50);
    EXPECT_EQ(vertices->getRange3().min.y, static_cast<double>(0.1f));
    vertices->invalidateRange();
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(-2, 3, 4));
    EXPECT_EQ(vertices->getRange3().max, koLinear::Point(50, 50, 50));

    // Deliberate: resizing keeps the cached range (the mesh resizes every channel when its
    // vertex count changes); copying values resets it.
    vertices->resize(3); // only (50, 50, 50) is left
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(-2, 3, 4));
    vertices->copyArray(points);
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(1, 5, 0));
}

TEST(MeshAttributes, EmptyChannelCachesItsInvertedRange) {
    auto uvs = Access::create("uvs", 2, 0);
    EXPECT_EQ(uvs->getRange2().max, koLinear::Point2(-largestFloat, -largestFloat));

    // Deliberate: the empty result is cached as valid, so values that arrive without a reset
    // are not seen.
    uvs->resize(2);
    uvs->asMeshUV()[0].set(1.0f, 2.0f);
    EXPECT_EQ(uvs->getRange2().min.x, largestFloat);
    uvs->invalidateRange();
    EXPECT_EQ(uvs->getRange2().min, koLinear::Point2(1, 2));
}

// The cached range of a channel of width 1 to 3 (minima, then maxima), bit for bit.
std::vector<std::uint64_t> rangeBits(const MeshAttributes& channel) {
    std::vector<double> bounds;
    if (channel.getDimension() == 1) {
        bounds = {channel.getRange1().min, channel.getRange1().max};
    } else if (channel.getDimension() == 2) {
        const koLinear::Range2d r = channel.getRange2();
        bounds = {r.min.x, r.min.y, r.max.x, r.max.y};
    } else {
        const koLinear::Range3d r = channel.getRange3();
        bounds = {r.min.x, r.min.y, r.min.z, r.max.x, r.max.y, r.max.z};
    }
    std::vector<std::uint64_t> bits;
    for (double b : bounds) {
        bits.push_back(std::bit_cast<std::uint64_t>(b));
    }
    return bits;
}

// One scan in element order with strict comparisons from the reset bounds, as bits.
std::vector<std::uint64_t> referenceBits(const std::vector<float>& values, int width) {
    std::vector<float> bounds(2 * width, std::numeric_limits<float>::max());
    for (int c = 0; c < width; ++c) {
        bounds[width + c] = -bounds[width + c];
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        float& lo = bounds[i % width];
        float& hi = bounds[width + i % width];
        lo = lo > values[i] ? values[i] : lo;
        hi = values[i] > hi ? values[i] : hi;
    }
    std::vector<std::uint64_t> bits;
    for (float b : bounds) {
        bits.push_back(std::bit_cast<std::uint64_t>(static_cast<double>(b)));
    }
    return bits;
}

TEST(MeshAttributes, RangeMatchesOneScanOnRandomValues) {
    std::mt19937 random(11);
    std::uniform_real_distribution<float> wide(-1000.0f, 1000.0f);
    // Zeros of both signs beside ones of one sign make the minimum (pattern 1) or the maximum
    // (pattern 2) a zero whose sign is that of the first zero met.
    const std::vector<float> choices[] = {
        {}, {0.0f, -0.0f, 1.0f, nan}, {0.0f, -0.0f, -1.0f, nan}, {0.0f, -0.0f, 1.0f, -1.0f, nan}};
    for (int width = 1; width <= 3; ++width) {
        for (int numElements : {1, 7, 8, 9, 16, 23, 40, 1003}) {
            for (int pattern = 0; pattern < 4; ++pattern) {
                std::vector<float> values(static_cast<std::size_t>(numElements * width));
                for (float& v : values) {
                    v = pattern != 0         ? choices[pattern][random() % choices[pattern].size()]
                        : random() % 20 == 0 ? nan
                                             : wide(random);
                }
                auto channel = Access::create("c", width, numElements);
                channel->copyArray(values.data());
                EXPECT_EQ(rangeBits(*channel), referenceBits(values, width));
            }
        }
    }
}

TEST(MeshAttributes, CopiesShareTheAllocatorAssignmentKeepsItsOwn) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    auto source = Access::create("vertices", 3, 2, recorder);
    ASSERT_EQ(recorder->requests.size(), 1u);
    EXPECT_EQ(recorder->requests[0].bytes, 8u * 4); // six floats and two guards
    const float points[] = {1, 5, 0, -2, 3, 4};
    source->copyArray(points);
    source->setComputed(true);
    source->setRange3(koLinear::Range3d({-9, -9, -9}, {9, 9, 9}));

    // A copy shares the allocator under its own key, with the values and the cached range.
    auto copy = Access::copy(*source);
    ASSERT_EQ(recorder->requests.size(), 2u);
    EXPECT_EQ(copy->asFloat(), static_cast<float*>(recorder->get(recorder->requests[1].key)) + 1);
    EXPECT_EQ(copy->asMeshVertex()[1], source->asMeshVertex()[1]);
    EXPECT_EQ(copy->getRange3().max.x, 9.0);

    // Deliberate: an assigned channel keeps its own allocator; a heap channel stays on the heap,
    // and a keyed one empties and refills its own block.
    auto onHeap = Access::create("weights", 1, 5);
    recorder->requests.clear();
    *onHeap = *source;
    EXPECT_TRUE(recorder->requests.empty());
    EXPECT_EQ(onHeap->getRange3().min.x, -9.0);
    EXPECT_TRUE(onHeap->isComputed());
    auto keyed = Access::create("keyed", 2, 1, recorder);
    const void* keyedKey = recorder->requests.back().key;
    recorder->requests.clear();
    *keyed = *onHeap;
    const std::vector<Request> refill = {{Operation::Resize, keyedKey, 0},
                                         {Operation::Resize, keyedKey, 8u * 4}};
    EXPECT_EQ(recorder->requests, refill);
    EXPECT_EQ(keyed->asMeshVertex()[0], source->asMeshVertex()[0]);
}

TEST(MeshAttributes, SwapAndFailedAssignmentOnTheHeap) {
    auto a = Access::create("a channel name too long to be kept inline", 3, 2);
    auto b = Access::create("b", 2, 1);
    a->setComputed(true);
    const float* aValues = a->asFloat();
    a->swap(*b);
    EXPECT_EQ(b->asFloat(), aValues);
    EXPECT_EQ(b->getDimension(), 3);
    EXPECT_TRUE(b->isComputed());
    EXPECT_EQ(a->getName(), "b");

    // The long name's copy fails first, then the values' copy: either way the target is as
    // it was.
    a->asMeshUV()[0].set(7.0f, 8.0f);
    a->setRange2(koLinear::Range2d({0, 0}, {1, 1}));
    for (std::size_t successes = 0; successes < 2; ++successes) {
        {
            heapProbe::FailureScope failing(successes);
            EXPECT_THROW(*a = *b, std::bad_alloc);
        }
        EXPECT_EQ(a->getName(), "b");
        EXPECT_FALSE(a->isComputed());
        EXPECT_EQ(a->asFloat()[1], 8.0f);
        EXPECT_EQ(a->getRange2().max, koLinear::Point2(1, 1));
    }
}

} // namespace
} // namespace koGeom
