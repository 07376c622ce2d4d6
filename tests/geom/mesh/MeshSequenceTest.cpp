#include "geom/mesh/MeshSequence.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <numeric>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::RecordingAllocator;

// Sequences of the given lengths over the points 10, 11, 12, ...
void fill(MeshSequence& sequence, const std::vector<int>& lengths) {
    sequence.lengths().setCount(static_cast<int>(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), sequence.lengths().elements());
    sequence.points().setCount(std::accumulate(lengths.begin(), lengths.end(), 0));
    int* points = sequence.points().elements();
    std::iota(points, points + sequence.points().count(), 10);
    sequence.invalidate();
}

std::vector<int> values(const Array<int>& array) {
    return std::vector<int>(array.elements(), array.elements() + array.count());
}

TEST(MeshSequence, StartsFollowTheRunningSumOfLengths) {
    MeshSequence sequence;
    EXPECT_EQ(sequence.starts(), nullptr); // no lengths: nothing is cached
    fill(sequence, {3, 4, 5});
    sequence.starts();
    sequence.auxiliary().setCount(2);
    EXPECT_EQ(sequence.getSizeInBytes(), (12 + 3 + 2 * 3 + 2) * 4);
    sequence.invalidate();
    EXPECT_EQ(sequence.getSizeInBytes(), (12 + 3) * 4);

    std::mt19937 random(5);
    for (int round = 0; round < 3; ++round) {
        std::vector<int> lengths(1 + random() % 40);
        std::generate(lengths.begin(), lengths.end(), [&] { return random() % 6; });
        fill(sequence, lengths);
        const int* const* starts = sequence.starts();
        ASSERT_EQ(sequence.numStarts(), static_cast<int>(lengths.size()));
        for (std::size_t i = 0, sum = 0; i < lengths.size(); sum += lengths[i++]) {
            ASSERT_EQ(starts[i], sequence.points().elements() + sum);
        }
    }

    // Moving the points to another allocator drops the starts into the old block.
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    MeshSequence keyed(recorder);
    fill(keyed, {2, 2});
    EXPECT_EQ(keyed.starts()[1], static_cast<const int*>(recorder->get(&keyed.points())) + 3);
    keyed.setArrayAllocator(nullptr);
    EXPECT_EQ(values(keyed.points()), (std::vector<int>{10, 11, 12, 13}));
    EXPECT_EQ(keyed.starts()[1], keyed.points().elements() + 2);
}

TEST(MeshSequence, CopiesAndAssignmentsLiveOnTheHeap) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    MeshSequence keyed(recorder);
    fill(keyed, {3, 1});
    keyed.starts();
    keyed.auxiliary().setCount(1);
    keyed.auxiliary().elements()[0] = 77;

    const MeshSequence copy(keyed);
    EXPECT_TRUE(!copy.points().allocator() && copy.getSizeInBytes() == (4 + 2) * 4);

    MeshSequence source;
    fill(source, {2});
    for (std::size_t successes : {0u, 1u}) {
        heapProbe::FailureScope failing(successes);
        EXPECT_THROW(keyed = source, std::bad_alloc);
    }
    EXPECT_EQ(values(keyed.points()), (std::vector<int>{10, 11, 12, 13}));
    EXPECT_EQ(keyed.numStarts(), 2);

    // Deliberate: afterwards the points, lengths and starts have no allocator, and the old
    // blocks were released under the temporary copy's keys, so the allocator still holds them
    // under the sequence's own. The auxiliary cache is not exchanged.
    recorder->requests.clear();
    keyed = source;
    EXPECT_FALSE(keyed.points().allocator());
    EXPECT_EQ(values(keyed.points()), (std::vector<int>{10, 11}));
    EXPECT_EQ(values(keyed.auxiliary()), (std::vector<int>{77}));
    EXPECT_EQ(recorder->requests.size(), 3u); // the frees of the copy's points, lengths, starts
    EXPECT_EQ(recorder->blocks.size(), 4u);
    EXPECT_EQ(static_cast<const int*>(recorder->get(&keyed.points()))[4], 13);
}

} // namespace
} // namespace koGeom
