#include "geom/connectivity/ArrayOfSets.h"

#include <gtest/gtest.h>

#include <new>
#include <random>
#include <utility>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

using Sets = std::vector<std::vector<int>>;

Sets contents(const ArrayOfSets& table) {
    Sets sets(table.getNumSets());
    for (int i = 0; i < table.getNumSets(); ++i) {
        sets[i].assign(table.getSet(i), table.getSet(i) + table.getSetSize(i));
    }
    return sets;
}

std::vector<int> offsets(const ArrayOfSets& table) {
    const Array<int>& array = table.getOffsets();
    return std::vector<int>(array.elements(), array.elements() + array.count());
}

TEST(ArrayOfSets, BuildsFromPairsInInputOrderAndTransposes) {
    ArrayOfSets table;
    EXPECT_EQ(table.computeMaxSetSize(), 0);

    const int pairs[] = {1, 7, 0, 5, 1, 2, 1, 7};
    table.assignFromPairs(3, 4, pairs);
    EXPECT_EQ(contents(table), (Sets{{5}, {7, 2, 7}, {}}));
    EXPECT_EQ(offsets(table), (std::vector<int>{0, 1, 4}));
    EXPECT_EQ(table.computeMaxSetSize(), 3);

    const int nested[] = {0, 1, 0, 2, 1, 2, 2, 0, 2, 2}; // {{1,2},{2},{0,2}}
    ArrayOfSets other;
    other.assignFromPairs(3, 5, nested);
    ASSERT_EQ(contents(other), (Sets{{1, 2}, {2}, {0, 2}}));
    table.assignInverse(3, other);
    EXPECT_EQ(contents(table), (Sets{{2}, {0}, {0, 1, 2}}));

    // Transposing a table into itself reads the table as it was.
    other.assignInverse(3, other);
    EXPECT_EQ(contents(other), (Sets{{2}, {0}, {0, 1, 2}}));
}

TEST(ArrayOfSets, BuildersMatchABruteForceOnRandomPairs) {
    std::mt19937 random(11);
    for (int round = 0; round < 4; ++round) {
        const int numSets = 1 + static_cast<int>(random() % 600);
        const int numMembers = 1 + static_cast<int>(random() % 900);
        const int numPairs = 2000 + static_cast<int>(random() % 3000);
        std::vector<int> pairs;
        Sets expected(numSets);
        for (int k = 0; k < numPairs; ++k) {
            const int set = static_cast<int>(random() % numSets);
            const int member = static_cast<int>(random() % numMembers);
            pairs.push_back(set);
            pairs.push_back(member);
            expected[set].push_back(member);
        }
        ArrayOfSets table;
        table.assignFromPairs(numSets, numPairs, pairs.data());
        ASSERT_EQ(contents(table), expected);

        Sets transposed(numMembers);
        for (int j = 0; j < numSets; ++j) {
            for (int member : expected[j]) {
                transposed[member].push_back(j);
            }
        }
        ArrayOfSets inverse;
        inverse.assignInverse(numMembers, table);
        ASSERT_EQ(contents(inverse), transposed);
        ASSERT_EQ(inverse.getSets().count(), numPairs);
    }
}

TEST(ArrayOfSets, MovesCopyAndFailedCopiesLeaveTheTargetUnchanged) {
    const int pairs[] = {0, 4, 1, 5, 1, 6};
    ArrayOfSets source;
    source.assignFromPairs(2, 3, pairs);

    // Deliberate: moving copies, so the source keeps its sets.
    ArrayOfSets moved(std::move(source));
    EXPECT_EQ(contents(moved), (Sets{{4}, {5, 6}}));
    EXPECT_EQ(contents(source), (Sets{{4}, {5, 6}}));
    ArrayOfSets assigned;
    assigned = std::move(source);
    EXPECT_EQ(contents(source), contents(assigned));

    ArrayOfSets target;
    const int single[] = {0, 9};
    target.assignFromPairs(1, 1, single);
    for (std::size_t successes : {0u, 1u}) {
        heapProbe::FailureScope failing(successes);
        EXPECT_THROW(target = moved, std::bad_alloc);
    }
    EXPECT_EQ(contents(target), (Sets{{9}}));
}

} // namespace
} // namespace koGeom
