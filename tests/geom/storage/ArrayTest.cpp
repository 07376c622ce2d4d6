#include "geom/storage/Array.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "geom/mesh/MeshIndexRecords.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::RecordingAllocator;
using Request = RecordingAllocator::Request;
using Operation = RecordingAllocator::Operation;

void fillSequence(Array<int>& array, int first) {
    for (int i = 0; i < array.count(); ++i) {
        array.elements()[i] = first + i;
    }
}

TEST(Array, AllocatorReceivesEveryRequestKeyedByTheArray) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    {
        Array<MeshTriangle> triangles;
        triangles.setAllocator(recorder);
        ASSERT_TRUE(recorder->requests.empty()); // an empty array has nothing to move
        triangles.setCount(4);
        triangles.elements()[3].set(7, 8, 9);
        triangles.setCount(6);
        triangles.setCount(6);  // same count: no request
        triangles.setCount(-3); // negative is the same as 0
        triangles.setCount(2);
        // A block of n + 2 elements each time; the elements start one element (12 bytes for a
        // triangle) past the block's start.
        EXPECT_EQ(reinterpret_cast<const std::byte*>(triangles.elements()),
                  static_cast<const std::byte*>(recorder->get(&triangles)) + 12);
        const std::vector<Request> expected = {
            {Operation::Resize, &triangles, 6 * 12},
            {Operation::Resize, &triangles, 8 * 12},
            {Operation::Resize, &triangles, 0},
            {Operation::Resize, &triangles, 4 * 12},
        };
        EXPECT_EQ(recorder->requests, expected);
        recorder->requests.clear();
    }
    // Destruction frees the key.
    ASSERT_EQ(recorder->requests.size(), 1u);
    EXPECT_EQ(recorder->requests[0].operation, Operation::Free);
}

TEST(Array, DeliberatelyCopyAdoptsTheAllocatorAndAssignmentKeepsItsOwn) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    Array<int> source;
    source.setAllocator(recorder);
    source.setCount(3);
    fillSequence(source, 1);
    source.base()[0] = -100; // the guards too
    source.base()[4] = -200;
    // A copy shares the allocator, under its own key, and copies the whole block.
    Array<int> copy(source);
    ASSERT_EQ(copy.base(), recorder->get(&copy));
    EXPECT_EQ(std::memcmp(copy.base(), source.base(), 5 * sizeof(int)), 0);
    // Deliberate: assignment keeps the target's own allocator (here: the heap), and copies the
    // elements but not the guards.
    Array<int> onHeap;
    onHeap.setCount(1);
    onHeap.base()[0] = 55;
    recorder->requests.clear();
    onHeap = source;
    EXPECT_FALSE(onHeap.allocator());
    EXPECT_TRUE(recorder->requests.empty());
    EXPECT_EQ(onHeap.elements()[2], 3);
    const auto& same = onHeap;
    onHeap = same; // self-assignment changes nothing
    EXPECT_EQ(onHeap.elements()[0], 1);
}

TEST(Array, DeliberatelyLosesTheElementsWhenTheAllocatorChangesWhileFilled) {
    ko::Reference<RecordingAllocator> recorder(new RecordingAllocator);
    Array<int> array;
    Array<int> heap; // declared first, so that it cannot sit where the temporary was
    array.setCount(4);
    fillSequence(array, 0);
    // Deliberate: the elements are copied under the key of a temporary array, and the swap
    // does not re-key them, so this array's own key finds nothing.
    array.setAllocator(recorder);
    EXPECT_EQ(array.count(), 4);
    EXPECT_EQ(array.elements(), nullptr);
    ASSERT_EQ(recorder->requests.size(), 1u);
    EXPECT_NE(recorder->requests[0].key, &array);
    // Swap exchanges storage without telling the allocator: the keyed storage still sits under
    // the old key, which `heap` does not have.
    heap.setCount(5);
    fillSequence(heap, 40);
    array.swap(heap);
    EXPECT_EQ(recorder->requests.size(), 1u);
    EXPECT_EQ(array.elements()[4], 44);
    EXPECT_EQ(heap.elements(), nullptr);
}

TEST(Array, FailedAllocationLeavesTheArrayAsItWas) {
    Array<int> array;
    array.setCount(3);
    fillSequence(array, 5);
    const int* before = array.elements();
    Array<int> larger;
    larger.setCount(50);
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(array.setCount(1000), std::bad_alloc);
        // Assignment on the heap copies aside first, so a failure leaves the target as it was.
        EXPECT_THROW(array = larger, std::bad_alloc);
    }
    EXPECT_EQ(array.count(), 3);
    EXPECT_EQ(array.elements(), before);
    array.setCount(8); // grows: the three survive
    EXPECT_EQ(array.elements()[2], 7);
}

} // namespace
} // namespace koGeom
