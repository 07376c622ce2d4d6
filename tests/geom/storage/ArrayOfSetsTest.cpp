#include "geom/storage/ArrayOfSets.h"

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

TEST(ArrayOfSets, BuildersMatchABruteForceOnRandomPairs) {
    std::mt19937 random(11);
    for (int round = 0; round < 4; ++round) {
        const int numSets = 1 + static_cast<int>(random() % 600);
        const int numMembers = 1 + static_cast<int>(random() % 900);
        const int numPairs = 2000 + static_cast<int>(random() % 3000);
        std::vector<int> pairs;
        Sets expected(numSets);
        Sets transposed(numMembers);
        for (int k = 0; k < numPairs; ++k) {
            pairs.push_back(static_cast<int>(random() % numSets));
            pairs.push_back(static_cast<int>(random() % numMembers));
            expected[pairs[2 * k]].push_back(pairs[2 * k + 1]);
        }
        for (int set = 0; set < numSets; ++set) {
            for (int member : expected[set]) {
                transposed[member].push_back(set);
            }
        }
        ArrayOfSets table;
        table.assignFromPairs(numSets, numPairs, pairs.data());
        ASSERT_EQ(contents(table), expected);
        EXPECT_EQ(table.computeMaxSetSize(),
                  std::max_element(expected.begin(), expected.end(), [](auto& a, auto& b) {
                      return a.size() < b.size();
                  })->size());
        table.assignInverse(numMembers, table); // reads the table as it was
        ASSERT_EQ(contents(table), transposed);
    }
}

TEST(ArrayOfSets, MovesCopyAndFailedCopiesLeaveTheTargetUnchanged) {
    const int pairs[] = {0, 4, 1, 5, 1, 6};
    ArrayOfSets source;
    source.assignFromPairs(2, 3, pairs);
    // Deliberate: moving copies, so the source keeps its sets.
    const ArrayOfSets moved(std::move(source));
    EXPECT_EQ(contents(source), (Sets{{4}, {5, 6}}));
    EXPECT_EQ(contents(moved), contents(source));

    ArrayOfSets target;
    target.assignFromPairs(1, 1, pairs);
    for (std::size_t successes : {0u, 1u}) {
        heapProbe::FailureScope failing(successes);
        EXPECT_THROW(target = moved, std::bad_alloc);
    }
    EXPECT_EQ(contents(target), (Sets{{4}}));
}

} // namespace
} // namespace koGeom
