#include "geom/connectivity/Remap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <vector>

#include "geom/connectivity/BitVector.h"
#include "geom/connectivity/MeshRemap.h"
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

// Entries in -1 .. rangeSize - 1, about a quarter of them -1.
std::vector<int> randomEntries(std::mt19937& random, int domainSize, int rangeSize) {
    std::vector<int> values(domainSize);
    for (int& value : values) {
        value = random() % 4 == 0 ? -1 : static_cast<int>(random() % rangeSize);
    }
    return values;
}

TEST(Remap, DeleteMapAndItsInverse) {
    BitVector deleted(5);
    deleted.setBit(1);
    deleted.setBit(3);
    Remap map;
    map.setDeleteMap(deleted);
    EXPECT_EQ(entries(map), (std::vector<int>{0, -1, 1, -1, 2}));
    EXPECT_EQ(map.getRangeSize(), 3);

    const ko::Reference<Remap> inverse = map.inverse();
    EXPECT_EQ(inverse->getRangeSize(), 5);
    EXPECT_EQ(entries(*inverse), (std::vector<int>{0, 2, 4}));

    const MeshRemap meshRemap(&map, nullptr);
    EXPECT_EQ(meshRemap.getVertices(), &map);
    EXPECT_EQ(meshRemap.getTriangles(), nullptr);
}

TEST(Remap, FillingOperationsKeepTheRangeSize) {
    Remap map = makeRemap({7, -1, 2}, 9);
    // Deliberate: renumbering leaves the range size for the caller to store.
    EXPECT_EQ(map.setValidSequential(), 2);
    EXPECT_EQ(entries(map), (std::vector<int>{0, -1, 1}));
    EXPECT_EQ(map.getRangeSize(), 9);
    map.setSequential();
    EXPECT_EQ(entries(map), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(map.getRangeSize(), 9);

    map.resize(5, 4); // keeps the first three
    map.set(3, 4, 8);
    map.set(2, 1, -5); // first > last: nothing
    EXPECT_EQ(entries(map), (std::vector<int>{0, 1, 2, 8, 8}));
    EXPECT_EQ(map.getRangeSize(), 4);
    EXPECT_EQ(Remap().get(), nullptr);
}

TEST(Remap, RenumberingsMatchABruteForceOnRandomMaps) {
    std::mt19937 random(5);
    for (int round = 0; round < 20; ++round) {
        const int domainSize = 1 + static_cast<int>(random() % 300);
        const int middleSize = 1 + static_cast<int>(random() % 300);
        const int rangeSize = 1 + static_cast<int>(random() % 300);
        const std::vector<int> firstValues = randomEntries(random, domainSize, middleSize);
        const std::vector<int> secondValues = randomEntries(random, middleSize, rangeSize);
        const Remap first = makeRemap(firstValues, middleSize);
        const Remap second = makeRemap(secondValues, rangeSize);

        Remap composed;
        composed.compose(first, second);
        EXPECT_EQ(composed.getRangeSize(), rangeSize);
        std::vector<int> expected(domainSize, -1);
        for (int i = 0; i < domainSize; ++i) {
            if (firstValues[i] >= 0) {
                expected[i] = secondValues[firstValues[i]];
            }
        }
        ASSERT_EQ(entries(composed), expected);

        // Deliberate: of several elements with one image, the largest index is kept.
        expected.assign(middleSize, -1);
        for (int i = domainSize - 1; i >= 0; --i) {
            if (firstValues[i] >= 0 && expected[firstValues[i]] == -1) {
                expected[firstValues[i]] = i;
            }
        }
        ASSERT_EQ(entries(*first.inverse()), expected);

        Remap renumbered = first;
        expected = firstValues;
        int next = 0;
        for (int& value : expected) {
            value = value < 0 ? value : next++;
        }
        ASSERT_EQ(renumbered.setValidSequential(), next);
        ASSERT_EQ(entries(renumbered), expected);

        BitVector deleted(domainSize);
        std::vector<int> survivors;
        for (int i = 0; i < domainSize; ++i) {
            if (firstValues[i] < 0) {
                deleted.setBit(i);
            } else {
                survivors.push_back(i);
            }
        }
        renumbered.setDeleteMap(deleted);
        ASSERT_EQ(renumbered.getRangeSize(), static_cast<int>(survivors.size()));
        for (int k = 0; k < static_cast<int>(survivors.size()); ++k) {
            ASSERT_EQ(renumbered(survivors[k]), k);
        }
        ASSERT_EQ(entries(renumbered), expected); // the same compaction, two ways
    }
}

TEST(Remap, ComposingIntoTheFirstOperandReadsTheFill) {
    Remap map = makeRemap({1, 0, 2}, 3);
    const Remap second = makeRemap({2, 1, 0}, 3);
    // Deliberate: the target is filled with -1 before the first operand is read.
    map.compose(map, second);
    EXPECT_EQ(entries(map), (std::vector<int>{-1, -1, -1}));
}

TEST(Remap, MapsIndexListsLeavingNegativeValues) {
    const Remap map = makeRemap({3, -1, 0, 2}, 4);
    std::vector<int> values = {0, -7, 1, 3, 2, -1};
    map(values.data(), 0);
    map(values.data(), -2);
    EXPECT_EQ(values, (std::vector<int>{0, -7, 1, 3, 2, -1}));
    map(values.data(), 5); // the last value is not in the list
    EXPECT_EQ(values, (std::vector<int>{3, -7, -1, 2, 0, -1}));

    Array<int> array;
    array.setCount(3);
    array.elements()[0] = 3;
    array.elements()[1] = 1;
    array.elements()[2] = -4;
    map(array);
    EXPECT_EQ(std::vector<int>(array.elements(), array.elements() + 3),
              (std::vector<int>{2, -1, -4}));
    Array<int> empty;
    map(empty);
    EXPECT_EQ(empty.count(), 0);
}

TEST(Remap, MapsSetsOfElements) {
    std::mt19937 random(3);
    const int domainSize = 500;
    const int rangeSize = 200;
    const std::vector<int> values = randomEntries(random, domainSize, rangeSize);
    const Remap map = makeRemap(values, rangeSize);
    BitVector in(domainSize + 40);
    in.setAllBits(); // members past the domain are not read
    BitVector out(rangeSize);
    out.setBit(rangeSize - 1); // the output is added to, not cleared
    std::vector<bool> expected(rangeSize);
    expected[rangeSize - 1] = true;
    for (int i = 0; i < domainSize; ++i) {
        if (values[i] >= 0 && i % 3 != 0) {
            expected[values[i]] = true;
        } else {
            in.clearBit(i);
        }
    }
    map(out, in);
    for (int j = 0; j < rangeSize; ++j) {
        ASSERT_EQ(out.isBitSet(j) != 0, expected[j]) << j;
    }
    EXPECT_EQ(out.numSet(), std::count(expected.begin(), expected.end(), true));

    // Deliberate: a member whose image is -1 marks element 31 of the output and counts it.
    const Remap deleting = makeRemap({-1, 0}, 40);
    BitVector both(2);
    both.setAllBits();
    BitVector marked(40);
    deleting(marked, both);
    EXPECT_EQ(marked.isBitSet(31), 0x80000000u);
    EXPECT_NE(marked.isBitSet(0), 0u);
    EXPECT_EQ(marked.numSet(), 2);
    BitVector none; // no word 0 to mark: nothing happens
    const Remap onlyDeleted = makeRemap({-1}, 0);
    onlyDeleted(none, both);
    EXPECT_EQ(none.numSet(), 0);
}

TEST(Remap, CopiesKeepTheirOwnCountAndFailedCopiesLeaveTheTarget) {
    ko::Reference<Remap> shared(new Remap(makeRemap({4, 5}, 6)));
    EXPECT_EQ(shared->refs(), 1);
    Remap copy(*shared);
    EXPECT_EQ(copy.refs(), 0);
    EXPECT_EQ(entries(copy), (std::vector<int>{4, 5}));

    Remap target = makeRemap({1}, 2);
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = copy, std::bad_alloc);
    }
    EXPECT_EQ(entries(target), (std::vector<int>{1}));
    EXPECT_EQ(target.getRangeSize(), 2);
    target = copy;
    EXPECT_EQ(entries(target), (std::vector<int>{4, 5}));
    EXPECT_EQ(target.getRangeSize(), 6);
}

} // namespace
} // namespace koGeom
