#include "geom/connectivity/BitVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

// Every element of `bits` against a reference, and the running count against its members.
void expectSameMembers(const BitVector& bits, const std::vector<bool>& reference) {
    ASSERT_EQ(bits.size(), static_cast<int>(reference.size()));
    for (int i = 0; i < bits.size(); ++i) {
        ASSERT_EQ(bits.isBitSet(i) != 0, reference[i]) << "element " << i;
    }
    EXPECT_EQ(bits.numSet(), std::count(reference.begin(), reference.end(), true));
}

TEST(BitVector, HoldsOneWordMoreThanASizeOfWholeWordsNeeds) {
    heapProbe::Scope none;
    BitVector empty(0);
    empty.clearBits();
    empty.setAllBits();
    EXPECT_EQ(none.calls(), 0u);
    EXPECT_EQ(empty.numSet(), 0);
    EXPECT_EQ(empty.getSizeInBytes(), 4 + 16);

    BitVector whole(32); // two words, the second all padding
    EXPECT_EQ(heapProbe::lastSize(), 8u);
    EXPECT_EQ(whole.getSizeInBytes(), 2 * 4 + 16);
    EXPECT_EQ(whole.numBytesUsed(), whole.getSizeInBytes());
    BitVector partial(33);
    EXPECT_EQ(heapProbe::lastSize(), 8u);
    EXPECT_EQ(BitVector(31).getSizeInBytes(), 4 + 16);

    // A size whose word count is negative fails as an allocation would.
    EXPECT_THROW(BitVector(-64), std::bad_alloc);
}

TEST(BitVector, CountsOnlyRealChangesAndReportsTheBitItself) {
    BitVector bits(70);
    bits.setBit(3);
    bits.setBit(3);
    bits.clearBit(4); // already clear
    EXPECT_EQ(bits.numSet(), 1);
    const int indices[] = {69, 3, 40, 69, 0};
    bits.setBits(5, indices);
    EXPECT_EQ(bits.numSet(), 4);
    bits.clearBit(40);
    bits.clearBit(40);
    EXPECT_EQ(bits.numSet(), 3);

    // Deliberate: a set element reports its own bit within its word, not 1.
    bits.setBit(31);
    EXPECT_EQ(bits.isBitSet(31), 0x80000000u);
    EXPECT_EQ(bits.isBitSet(69), 1u << 5);
    EXPECT_EQ(bits.isBitSet(68), 0u);

    // Deliberate: the truncating division puts -1 at bit 31 of word 0.
    BitVector low(64);
    low.setBit(-1);
    EXPECT_EQ(low.isBitSet(31), 0x80000000u);
    EXPECT_EQ(low.numSet(), 1);
}

TEST(BitVector, SetAllBitsWritesThePaddingWithoutCountingIt) {
    BitVector ten(10);
    ten.setAllBits();
    EXPECT_EQ(ten.numSet(), 10);
    // Deliberate: the padding past the size is set in storage.
    EXPECT_NE(ten.isBitSet(20), 0u);
    EXPECT_NE(ten.isBitSet(31), 0u);

    // The operators stop at the common size, so the padding never reaches a count.
    BitVector wide(40);
    wide |= ten;
    EXPECT_EQ(wide.numSet(), 10);
    EXPECT_EQ(wide.isBitSet(10), 0u);

    ten.clearBits();
    EXPECT_EQ(ten.numSet(), 0);
    EXPECT_EQ(ten.isBitSet(20), 0u);
}

TEST(BitVector, OperatorsMatchBoolVectorsOnTheCommonPrefix) {
    std::mt19937 random(7);
    const int sizes[] = {1, 31, 32, 33, 64, 100, 257};
    for (int leftSize : sizes) {
        for (int rightSize : sizes) {
            for (int op = 0; op < 3; ++op) {
                SCOPED_TRACE(testing::Message() << leftSize << " op" << op << " " << rightSize);
                BitVector left(leftSize);
                BitVector right(rightSize);
                std::vector<bool> expected(leftSize);
                std::vector<bool> rightBits(rightSize);
                for (int i = 0; i < leftSize; ++i) {
                    if (random() % 2 != 0) {
                        left.setBit(i);
                        expected[i] = true;
                    }
                }
                for (int i = 0; i < rightSize; ++i) {
                    if (random() % 2 != 0) {
                        right.setBit(i);
                        rightBits[i] = true;
                    }
                }
                // Deliberate: elements past the shorter size keep their flags, even for &=.
                for (int i = 0; i < std::min(leftSize, rightSize); ++i) {
                    const bool a = expected[i];
                    const bool b = rightBits[i];
                    expected[i] = op == 0 ? (a && b) : op == 1 ? (a || b) : (a != b);
                }
                if (op == 0) {
                    left &= right;
                } else if (op == 1) {
                    left |= right;
                } else {
                    left ^= right;
                }
                expectSameMembers(left, expected);
                expectSameMembers(right, rightBits);
            }
        }
    }
}

TEST(BitVector, ResizeDiscardsAndFailedCopiesLeaveTheTargetUnchanged) {
    BitVector bits(50);
    bits.setBit(7);
    bits.setBit(49);
    // Deliberate: a resized vector starts all clear, whatever it held.
    bits.resize(60);
    expectSameMembers(bits, std::vector<bool>(60));

    BitVector source(200);
    source.setAllBits();
    BitVector copy(source);
    EXPECT_EQ(copy.numSet(), 200);
    EXPECT_NE(copy.isBitSet(199), 0u);

    BitVector target(20);
    target.setBit(5);
    {
        heapProbe::FailureScope failing(0);
        EXPECT_THROW(target = source, std::bad_alloc);
        EXPECT_THROW(target.resize(500), std::bad_alloc);
    }
    std::vector<bool> expected(20);
    expected[5] = true;
    expectSameMembers(target, expected);
    target = source;
    EXPECT_EQ(target.size(), 200);
    EXPECT_EQ(target.numSet(), 200);
}

} // namespace
} // namespace koGeom
