#include "geom/storage/BitVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

// Sets about half the elements of `bits` at random and lists its members as bools.
std::vector<bool> fillRandomly(BitVector& bits, std::mt19937& random) {
    std::vector<bool> members(bits.size());
    for (int i = 0; i < bits.size(); ++i) {
        if (random() % 2 != 0) {
            bits.setBit(i);
            members[i] = true;
        }
    }
    return members;
}

void expectSameMembers(const BitVector& bits, const std::vector<bool>& members) {
    for (int i = 0; i < bits.size(); ++i) {
        ASSERT_EQ(bits.isBitSet(i) != 0, members[i]) << "element " << i;
    }
    EXPECT_EQ(bits.numSet(), std::count(members.begin(), members.end(), true));
}

TEST(BitVector, KeepsASpareWordTheirPaddingAndAnExactCount) {
    heapProbe::Scope none;
    BitVector empty(0);
    empty.setAllBits();
    EXPECT_EQ(none.calls(), 0u);
    EXPECT_EQ(empty.numSet(), 0);
    BitVector bits(32); // two words, the second all padding
    EXPECT_EQ(heapProbe::lastSize(), 8u);
    EXPECT_EQ(bits.getSizeInBytes(), 2 * 4 + 16);
    EXPECT_EQ(BitVector(31).numBytesUsed(), 4 + 16);
    EXPECT_THROW(BitVector(-64), std::bad_alloc); // a negative word count

    const int indices[] = {3, 3, 31, 3};
    bits.setBits(4, indices);
    bits.clearBit(4);
    EXPECT_EQ(bits.numSet(), 2);
    // Deliberate: a set element reports its own bit, not 1; and -1 is bit 31 of word 0.
    EXPECT_EQ(bits.isBitSet(31), 0x80000000u);
    bits.clearBit(-1);
    EXPECT_EQ(bits.isBitSet(31), 0u);
    EXPECT_EQ(bits.numSet(), 1);

    BitVector ten(10);
    ten.setAllBits();
    // Deliberate: the padding past the size is set in storage but never counted.
    EXPECT_EQ(ten.numSet(), 10);
    EXPECT_NE(ten.isBitSet(20), 0u);
    BitVector wide(40);
    wide |= ten;
    EXPECT_EQ(wide.numSet(), 10);

    // Deliberate: a resized vector starts all clear.
    ten.resize(12);
    expectSameMembers(ten, std::vector<bool>(12));
}

TEST(BitVector, OperatorsMatchBoolVectorsOnTheCommonPrefix) {
    std::mt19937 random(7);
    const int sizes[] = {1, 32, 33, 64, 100, 257};
    for (int leftSize : sizes) {
        for (int rightSize : sizes) {
            for (int op = 0; op < 3; ++op) {
                BitVector left(leftSize);
                BitVector right(rightSize);
                std::vector<bool> expected = fillRandomly(left, random);
                const std::vector<bool> rightMembers = fillRandomly(right, random);
                // Deliberate: elements past the shorter size keep their flags, even for &=.
                for (int i = 0; i < std::min(leftSize, rightSize); ++i) {
                    const bool a = expected[i];
                    const bool b = rightMembers[i];
                    expected[i] = op == 0 ? a && b : op == 1 ? a || b : a != b;
                }
                op == 0 ? left &= right : op == 1 ? left |= right : left ^= right;
                expectSameMembers(left, expected);
            }
        }
    }
}

TEST(BitVector, FailedCopyOrResizeLeavesTheVectorUnchanged) {
    std::mt19937 random(1);
    BitVector target(20);
    BitVector source(200);
    const std::vector<bool> members = fillRandomly(target, random);
    const std::vector<bool> sourceMembers = fillRandomly(source, random);
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = source, std::bad_alloc);
        EXPECT_THROW(target.resize(500), std::bad_alloc);
    }
    expectSameMembers(target, members);
    target = source;
    expectSameMembers(target, sourceMembers);
}

} // namespace
} // namespace koGeom
