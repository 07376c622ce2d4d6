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

// Which record views a channel gives, one bit each in the order of the table below.
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

// The cached range of a channel of width 1 to 3 as floats, component by component.
void rangeOf(const MeshAttributes& channel, int width, double* lo, double* hi) {
    if (width == 1) {
        const koLinear::Range1d r = channel.getRange1();
        lo[0] = r.min;
        hi[0] = r.max;
    } else if (width == 2) {
        const koLinear::Range2d r = channel.getRange2();
        for (int c = 0; c < 2; ++c) {
            lo[c] = r.min[c];
            hi[c] = r.max[c];
        }
    } else {
        const koLinear::Range3d r = channel.getRange3();
        for (int c = 0; c < 3; ++c) {
            lo[c] = r.min[c];
            hi[c] = r.max[c];
        }
    }
}

TEST(MeshAttributes, SizesFlagsAndViewsFollowTheDimension) {
    auto uvs = Access::create("uvs", 2, 10);
    EXPECT_EQ(uvs->getName(), "uvs");
    EXPECT_EQ(uvs->getNumElements(), 10);
    EXPECT_EQ(uvs->getSizeInBytes(), 168); // 20 floats and the object
    EXPECT_FALSE(uvs->needsStorage());
    EXPECT_FALSE(uvs->isComputed());
    uvs->setComputed(true);
    EXPECT_FALSE(uvs->needsStorage());
    EXPECT_TRUE(uvs->isComputed());
    ASSERT_NE(uvs->asFloat(), nullptr);
    EXPECT_EQ(recordViews(*uvs), 0b00010010u); // asFloat2, asMeshUV

    const unsigned viewsByDimension[] = {0b00000001u, 0b00010010u, 0b01100100u, 0b10001000u};
    for (int dimension = 1; dimension <= 4; ++dimension) {
        SCOPED_TRACE(dimension);
        auto full = Access::create("c", dimension, 3);
        EXPECT_EQ(recordViews(*full), viewsByDimension[dimension - 1]);
        auto empty = Access::create("c", dimension, 0);
        EXPECT_EQ(empty->asFloat(), nullptr);
        EXPECT_EQ(recordViews(*empty), 0u);
        EXPECT_EQ(empty->getSizeInBytes(), 88);
    }

    // resize counts floats: 7 floats of width 3 are two whole elements, and the prefix stays.
    auto vertices = Access::create("vertices", 3, 3);
    for (int i = 0; i < 9; ++i) {
        vertices->asFloat()[i] = static_cast<float>(i);
    }
    vertices->resize(7);
    EXPECT_EQ(vertices->getNumElements(), 2);
    EXPECT_EQ(vertices->getSizeInBytes(), 7 * 4 + 88);
    EXPECT_EQ(vertices->asFloat()[6], 6.0f);
}

TEST(MeshAttributes, RangesByHand) {
    auto vertices = Access::create("vertices", 3, 2);
    const float points[] = {1, 5, 0, -2, 3, 4};
    vertices->copyArray(points);
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(-2, 3, 0));
    EXPECT_EQ(vertices->getRange3().max, koLinear::Point(1, 5, 4));

    // A set range is rounded to float and returned as it is, whatever the values, until the
    // range is reset; the reset starts the next scan afresh rather than from the set range.
    vertices->setRange3(koLinear::Range3d({-100, 0.1, -100}, {100, 100, 100}));
    vertices->asMeshVertex()[0].set(50, 50, 50);
    EXPECT_EQ(vertices->getRange3().min.y, static_cast<double>(0.1f));
    EXPECT_EQ(vertices->getRange3().max.x, 100.0);
    vertices->invalidateRange();
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(-2, 3, 4));
    EXPECT_EQ(vertices->getRange3().max, koLinear::Point(50, 50, 50));

    // Deliberate: resizing keeps the cached range, which the mesh relies on when its vertex
    // count changes; copying values resets it.
    vertices->resize(3); // only (50, 50, 50) is left
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(-2, 3, 4));
    vertices->copyArray(points);
    EXPECT_EQ(vertices->getRange3().min, koLinear::Point(1, 5, 0));

    auto weights = Access::create("weights", 1, 4);
    const float values[] = {3, nan, -1, 2};
    weights->copyArray(values);
    EXPECT_EQ(weights->getRange1().min, -1.0);
    EXPECT_EQ(weights->getRange1().max, 3.0);

    auto uvs = Access::create("uvs", 2, 3);
    const float pairs[] = {nan, 0.5f, 0.25f, nan, 0.75f, -0.5f};
    uvs->copyArray(pairs);
    EXPECT_EQ(uvs->getRange2().min, koLinear::Point2(0.25, -0.5));
    EXPECT_EQ(uvs->getRange2().max, koLinear::Point2(0.75, 0.5));
    uvs->setRange2(koLinear::Range2d({0, 0}, {1, 1}));
    EXPECT_EQ(uvs->getRange2().max, koLinear::Point2(1, 1));
}

TEST(MeshAttributes, EmptyChannelCachesItsInvertedRange) {
    auto uvs = Access::create("uvs", 2, 0);
    EXPECT_EQ(uvs->getRange2().min, koLinear::Point2(largestFloat, largestFloat));
    EXPECT_EQ(uvs->getRange2().max, koLinear::Point2(-largestFloat, -largestFloat));

    // Deliberate: the empty result is cached as valid, so values that arrive without a reset
    // are not seen.
    uvs->resize(2);
    uvs->asMeshUV()[0].set(1.0f, 2.0f);
    EXPECT_EQ(uvs->getRange2().min.x, largestFloat);
    uvs->invalidateRange();
    EXPECT_EQ(uvs->getRange2().min, koLinear::Point2(1, 2));

    // A channel of nothing but NaNs also keeps the reset range.
    auto weights = Access::create("weights", 1, 9);
    const std::vector<float> nans(9, nan);
    weights->copyArray(nans.data());
    EXPECT_EQ(weights->getRange1().min, largestFloat);
    EXPECT_EQ(weights->getRange1().max, -largestFloat);
}

// One scan in element order with strict comparisons, from the reset bounds.
void referenceRange(const std::vector<float>& values, int width, float* lo, float* hi) {
    for (int c = 0; c < width; ++c) {
        lo[c] = std::numeric_limits<float>::max();
        hi[c] = -std::numeric_limits<float>::max();
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int c = static_cast<int>(i % static_cast<std::size_t>(width));
        if (lo[c] > values[i]) {
            lo[c] = values[i];
        }
        if (values[i] > hi[c]) {
            hi[c] = values[i];
        }
    }
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
                SCOPED_TRACE(testing::Message() << "width " << width << ", elements " << numElements
                                                << ", pattern " << pattern);
                std::vector<float> values(static_cast<std::size_t>(numElements * width));
                for (float& v : values) {
                    if (pattern == 0) {
                        v = random() % 20 == 0 ? nan : wide(random);
                    } else {
                        v = choices[pattern][random() % choices[pattern].size()];
                    }
                }
                auto channel = Access::create("c", width, numElements);
                channel->copyArray(values.data());
                float lo[3], hi[3];
                referenceRange(values, width, lo, hi);
                double gotLo[3], gotHi[3];
                rangeOf(*channel, width, gotLo, gotHi);
                for (int c = 0; c < width; ++c) {
                    // Bit for bit, so that the sign of a zero bound counts.
                    EXPECT_EQ(std::bit_cast<std::uint64_t>(gotLo[c]),
                              std::bit_cast<std::uint64_t>(static_cast<double>(lo[c])))
                        << "min " << c << ": " << gotLo[c] << " vs " << lo[c];
                    EXPECT_EQ(std::bit_cast<std::uint64_t>(gotHi[c]),
                              std::bit_cast<std::uint64_t>(static_cast<double>(hi[c])))
                        << "max " << c << ": " << gotHi[c] << " vs " << hi[c];
                }
            }
        }
    }
}

TEST(MeshAttributes, CopiesShareTheAllocatorAssignmentKeepsItsOwn) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    auto source = Access::create("vertices", 3, 2, recorder);
    ASSERT_EQ(recorder->requests.size(), 1u);
    const void* sourceKey = recorder->requests[0].key;
    EXPECT_EQ(recorder->requests[0].bytes, 8u * 4); // six floats and two guards
    const float points[] = {1, 5, 0, -2, 3, 4};
    source->copyArray(points);
    source->setStorageRequired(true);
    source->setRange3(koLinear::Range3d({-9, -9, -9}, {9, 9, 9}));

    // A copy shares the allocator under its own key, with the values and the cached range.
    auto copy = Access::copy(*source);
    ASSERT_EQ(recorder->requests.size(), 2u);
    const void* copyKey = recorder->requests[1].key;
    EXPECT_NE(copyKey, sourceKey);
    EXPECT_EQ(copy->asFloat(), static_cast<float*>(recorder->get(copyKey)) + 1);
    EXPECT_EQ(copy->asMeshVertex()[1], source->asMeshVertex()[1]);
    EXPECT_TRUE(copy->needsStorage());
    EXPECT_EQ(copy->getRange3().max.x, 9.0);

    // Deliberate: an assigned channel keeps its own allocator; a heap channel stays on the heap.
    auto onHeap = Access::create("weights", 1, 5);
    recorder->requests.clear();
    *onHeap = *source;
    EXPECT_TRUE(recorder->requests.empty());
    EXPECT_EQ(onHeap->getName(), "vertices");
    EXPECT_EQ(onHeap->getDimension(), 3);
    EXPECT_EQ(onHeap->asMeshVertex()[1], source->asMeshVertex()[1]);
    EXPECT_EQ(onHeap->getRange3().min.x, -9.0);

    // A keyed channel assigned from the heap empties and refills its own block.
    auto keyed = Access::create("keyed", 2, 1, recorder);
    const void* keyedKey = recorder->requests.back().key;
    recorder->requests.clear();
    *keyed = *onHeap;
    const std::vector<Request> refill = {{Operation::Resize, keyedKey, 0},
                                         {Operation::Resize, keyedKey, 8u * 4}};
    EXPECT_EQ(recorder->requests, refill);
    EXPECT_EQ(keyed->asFloat(), static_cast<float*>(recorder->get(keyedKey)) + 1);
    EXPECT_EQ(keyed->asMeshVertex()[0], source->asMeshVertex()[0]);

    recorder->requests.clear();
    copy.reset();
    EXPECT_EQ(recorder->requests, (std::vector<Request>{{Operation::Free, copyKey, 0}}));

    // An empty heap channel moved to an allocator asks it for storage from then on.
    auto later = Access::create("later", 4, 0);
    Access::setArrayAllocator(*later, recorder);
    later->resize(4);
    EXPECT_EQ(recorder->requests.back().bytes, 6u * 4);
    EXPECT_EQ(later->asFloat(),
              static_cast<float*>(recorder->get(recorder->requests.back().key)) + 1);
}

TEST(MeshAttributes, SwapAndFailedAssignmentOnTheHeap) {
    auto a = Access::create("a channel name too long to be kept inline", 3, 2);
    auto b = Access::create("b", 1, 5);
    const float points[] = {1, 5, 0, -2, 3, 4};
    a->copyArray(points);
    a->setComputed(true);
    a->getRange3();
    const float* aValues = a->asFloat();

    a->swap(*b);
    EXPECT_EQ(b->asFloat(), aValues);
    EXPECT_EQ(b->getDimension(), 3);
    EXPECT_TRUE(b->isComputed());
    EXPECT_FALSE(a->isComputed());
    EXPECT_EQ(a->getName(), "b");
    EXPECT_EQ(a->getNumElements(), 5);
    EXPECT_EQ(b->getRange3().min, koLinear::Point(-2, 3, 0));

    // The copy of the long name fails first, then the copy of the values: either way the
    // target is as it was.
    auto target = Access::create("target", 2, 1);
    target->asMeshUV()[0].set(7.0f, 8.0f);
    target->setRange2(koLinear::Range2d({0, 0}, {1, 1}));
    for (std::size_t successes = 0; successes < 2; ++successes) {
        SCOPED_TRACE(successes);
        {
            heapProbe::FailureScope failing(successes);
            EXPECT_THROW(*target = *b, std::bad_alloc);
        }
        EXPECT_EQ(target->getName(), "target");
        EXPECT_EQ(target->getDimension(), 2);
        EXPECT_FALSE(target->isComputed());
        EXPECT_EQ(target->asMeshUV()[0], (MeshUV{7, 8}));
        EXPECT_EQ(target->getRange2().max, koLinear::Point2(1, 1));
    }
}

} // namespace
} // namespace koGeom
