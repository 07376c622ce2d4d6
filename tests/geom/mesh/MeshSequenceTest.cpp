#include "geom/mesh/MeshSequence.h"

#include <gtest/gtest.h>

#include <new>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::RecordingAllocator;
using Operation = RecordingAllocator::Operation;

void fill(MeshSequence& sequence, const std::vector<int>& lengths, int firstPoint) {
    int numPoints = 0;
    for (int length : lengths) {
        numPoints += length;
    }
    sequence.lengths().setCount(static_cast<int>(lengths.size()));
    sequence.points().setCount(numPoints);
    for (int i = 0; i < sequence.lengths().count(); ++i) {
        sequence.lengths().elements()[i] = lengths[i];
    }
    for (int i = 0; i < numPoints; ++i) {
        sequence.points().elements()[i] = firstPoint + i;
    }
    sequence.invalidate();
}

std::vector<int> values(const Array<int>& array) {
    return std::vector<int>(array.elements(), array.elements() + array.count());
}

TEST(MeshSequence, StartsFollowTheRunningSumOfLengths) {
    MeshSequence sequence;
    EXPECT_EQ(sequence.starts(), nullptr); // no lengths: no starts, and nothing cached
    EXPECT_EQ(sequence.numStarts(), 0);

    fill(sequence, {3, 4, 5}, 0);
    const int* points = sequence.points().elements();
    const int* const* starts = sequence.starts();
    ASSERT_EQ(sequence.numStarts(), 3);
    EXPECT_EQ(starts[0], points);
    EXPECT_EQ(starts[1], points + 3);
    EXPECT_EQ(starts[2], points + 7);
    sequence.auxiliary().setCount(2);
    EXPECT_EQ(sequence.getSizeInBytes(), (12 + 3 + 2 * 3 + 2) * 4);
    sequence.invalidate();
    EXPECT_EQ(sequence.numStarts(), 0);
    EXPECT_EQ(sequence.auxiliary().count(), 0);

    std::mt19937 random(5);
    for (int round = 0; round < 3; ++round) {
        std::vector<int> lengths(1 + random() % 40);
        for (int& length : lengths) {
            length = static_cast<int>(random() % 6); // empty sequences too
        }
        fill(sequence, lengths, 100);
        starts = sequence.starts();
        ASSERT_EQ(sequence.numStarts(), static_cast<int>(lengths.size()));
        int sum = 0;
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            ASSERT_EQ(starts[i] - sequence.points().elements(), sum);
            sum += lengths[i];
        }
    }
}

TEST(MeshSequence, StartsInAnAllocatorAndAllocatorChanges) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    MeshSequence sequence(recorder);
    fill(sequence, {2, 2}, 0);
    EXPECT_EQ(sequence.starts()[1], static_cast<const int*>(recorder->get(&sequence.points())) + 3);
    // Two starts of 8 bytes each, with their guards, under the starts array's own key.
    EXPECT_EQ(recorder->requests.back().bytes, 4u * sizeof(const int*));
    EXPECT_NE(recorder->requests.back().key, &sequence.points());

    // The points move to the heap: the cached starts are dropped and rebuilt there.
    sequence.setArrayAllocator(nullptr);
    EXPECT_FALSE(sequence.points().allocator());
    EXPECT_EQ(sequence.numStarts(), 0);
    EXPECT_EQ(values(sequence.points()), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(sequence.starts()[1], sequence.points().elements() + 2);
}

TEST(MeshSequence, CopiesLiveOnTheHeapAndAssignmentLeavesOldBlocksWithTheAllocator) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    MeshSequence keyed(recorder);
    fill(keyed, {3, 1}, 10);
    keyed.starts();
    keyed.auxiliary().setCount(2);
    keyed.auxiliary().elements()[0] = 77;

    const MeshSequence copy(keyed);
    EXPECT_FALSE(copy.points().allocator());
    EXPECT_FALSE(copy.lengths().allocator());
    EXPECT_EQ(values(copy.points()), values(keyed.points()));
    EXPECT_EQ(values(copy.lengths()), (std::vector<int>{3, 1}));
    EXPECT_EQ(copy.numStarts(), 0);
    EXPECT_EQ(copy.auxiliary().count(), 0);

    MeshSequence source;
    fill(source, {2}, 50);
    source.auxiliary().setCount(5);
    keyed = keyed; // self-assignment changes nothing
    ASSERT_TRUE(keyed.points().allocator());
    for (std::size_t successes : {0u, 1u}) {
        heapProbe::FailureScope failing(successes);
        EXPECT_THROW(keyed = source, std::bad_alloc);
    }
    EXPECT_EQ(values(keyed.points()), (std::vector<int>{10, 11, 12, 13}));
    EXPECT_EQ(keyed.numStarts(), 2);

    // Deliberate: the assigned points, lengths and starts are on the heap; the old blocks are
    // released under the temporary copy's keys, which the allocator does not know, so it still
    // holds them under the sequence's own keys. The auxiliary cache keeps its allocator and
    // values.
    recorder->requests.clear();
    keyed = source;
    EXPECT_FALSE(keyed.points().allocator());
    EXPECT_FALSE(keyed.lengths().allocator());
    EXPECT_EQ(values(keyed.points()), (std::vector<int>{50, 51}));
    EXPECT_EQ(keyed.numStarts(), 0);
    ASSERT_EQ(keyed.auxiliary().count(), 2);
    EXPECT_EQ(keyed.auxiliary().elements()[0], 77);
    EXPECT_TRUE(keyed.auxiliary().allocator());
    ASSERT_EQ(recorder->requests.size(), 3u);
    for (const RecordingAllocator::Request& request : recorder->requests) {
        EXPECT_EQ(request.operation, Operation::Free);
        EXPECT_NE(request.key, &keyed.points());
        EXPECT_NE(request.key, &keyed.lengths());
    }
    EXPECT_EQ(recorder->blocks.size(), 4u); // points, lengths, starts and auxiliary
    EXPECT_EQ(static_cast<const int*>(recorder->get(&keyed.points()))[1], 10);
}

TEST(MeshSequence, DestroysAuxiliaryStartsLengthsThenPoints) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    std::vector<const void*> keys;
    {
        MeshSequence sequence(recorder);
        fill(sequence, {1}, 0);
        sequence.starts();
        sequence.auxiliary().setCount(1);
        for (const RecordingAllocator::Request& request : recorder->requests) {
            keys.push_back(request.key); // lengths, points, starts, auxiliary
        }
        recorder->requests.clear();
    }
    ASSERT_EQ(keys.size(), 4u);
    const std::vector<RecordingAllocator::Request> expected = {
        {Operation::Free, keys[3], 0},
        {Operation::Free, keys[2], 0},
        {Operation::Free, keys[0], 0},
        {Operation::Free, keys[1], 0},
    };
    EXPECT_EQ(recorder->requests, expected);
}

} // namespace
} // namespace koGeom
