#include "geom/storage/Remap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <vector>

#include "geom/storage/BitVector.h"
#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

std::vector<int> entries(const Remap& map) {
    return std::vector<int>(map.get(), map.get() + map.getDomainSize());
}

Remap makeRemap(const std::vector<int>& values, int rangeSize) {
    Remap map(static_cast<int>(values.size()), rangeSize);
    for (int i = 0; i < map.getDomainSize(); ++i) {
        map.set(i, values[i]);
    }
    return map;
}

TEST(Remap, HandWorkedMaps) {
    Remap map = makeRemap({7, -1, 2}, 9);
    // Deliberate: renumbering leaves the range size for the caller to store.
    EXPECT_EQ(map.setValidSequential(), 2);
    EXPECT_EQ(map.getRangeSize(), 9);
    map.resize(5, 4); // keeps the first three
    map.set(3, 4, 3);
    map.set(2, 1, -5); // first > last: nothing
    EXPECT_EQ(entries(map), (std::vector<int>{0, -1, 1, 3, 3}));
    // Deliberate: the target is filled with -1 before the first operand is read.
    map.compose(map, *map.inverse());
    EXPECT_EQ(entries(map), (std::vector<int>(5, -1)));
}

TEST(Remap, RenumberingsMatchABruteForceOnRandomMaps) {
    std::mt19937 random(5);
    auto randomEntries = [&random](int domainSize, int rangeSize) {
        std::vector<int> values(domainSize);
        for (int& value : values) {
            value = random() % 4 == 0 ? -1 : static_cast<int>(random() % rangeSize);
        }
        return values;
    };
    for (int round = 0; round < 20; ++round) {
        int sizes[3];
        std::generate_n(sizes, 3, [&random] { return 1 + static_cast<int>(random() % 300); });
        const std::vector<int> firstValues = randomEntries(sizes[0], sizes[1]);
        const std::vector<int> secondValues = randomEntries(sizes[1], sizes[2]);
        Remap map;
        map.compose(makeRemap(firstValues, sizes[1]), makeRemap(secondValues, sizes[2]));
        std::vector<int> expected(sizes[0], -1);
        for (int i = 0; i < sizes[0]; ++i) {
            expected[i] = firstValues[i] < 0 ? -1 : secondValues[firstValues[i]];
        }
        ASSERT_EQ(entries(map), expected);
        ASSERT_EQ(map.getRangeSize(), sizes[2]);

        // Deliberate: of several elements with one image, the largest index is kept.
        expected.assign(sizes[1], -1);
        for (int i = sizes[0] - 1; i >= 0; --i) {
            if (firstValues[i] >= 0 && expected[firstValues[i]] == -1) {
                expected[firstValues[i]] = i;
            }
        }
        ASSERT_EQ(entries(*makeRemap(firstValues, sizes[1]).inverse()), expected);

        // Compacting the survivors, once by renumbering and once from the deleted set.
        BitVector deleted(sizes[0]);
        expected = firstValues;
        int next = 0;
        for (int i = 0; i < sizes[0]; ++i) {
            if (expected[i] < 0) {
                deleted.setBit(i);
            } else {
                expected[i] = next++;
            }
        }
        map = makeRemap(firstValues, 0);
        ASSERT_EQ(map.setValidSequential(), next);
        map.setDeleteMap(deleted);
        ASSERT_EQ(entries(map), expected);
        ASSERT_EQ(map.getRangeSize(), next);
    }
}

TEST(Remap, MapsIndexListsAndSets) {
    const Remap map = makeRemap({3, -1, 0, 2}, 40);
    std::vector<int> values = {0, -7, 1, 3, 2, -1};
    map(values.data(), 0);
    map(values.data(), 5); // the last value is not in the list
    EXPECT_EQ(values, (std::vector<int>{3, -7, -1, 2, 0, -1}));

    BitVector in(4);
    const int members[] = {0, 1, 3};
    in.setBits(3, members);
    BitVector out(40);
    out.setBit(5); // the output is added to, not cleared
    map(out, in);
    // Deliberate: a member whose image is -1 marks element 31 and counts it.
    EXPECT_EQ(out.isBitSet(31), 0x80000000u);
    EXPECT_TRUE(out.isBitSet(2) && out.isBitSet(3) && out.isBitSet(5));
    EXPECT_EQ(out.numSet(), 4);
    BitVector none; // no word 0 to mark: nothing happens
    makeRemap({-1}, 0)(none, in);
    EXPECT_EQ(none.numSet(), 0);
}

TEST(Remap, FailedCopyLeavesTheTargetUnchanged) {
    const Remap source = makeRemap({4, 5}, 6);
    Remap target = makeRemap({1}, 2);
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = source, std::bad_alloc);
    }
    EXPECT_TRUE(entries(target) == std::vector<int>{1} && target.getRangeSize() == 2);
}

} // namespace
} // namespace koGeom
