#include "geom/curve/LineStrips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace koGeom {
namespace {

// Strips whose vertex i sits at x = first + i, with the given lengths and offsets.
LineStrips strips(float first, const std::vector<int>& lengths, const std::vector<int>& offsets) {
    LineStrips s;
    int count = 0;
    for (int length : lengths) {
        count += length;
    }
    s.vertices().setCount(count);
    for (int i = 0; i < count; ++i) {
        s.vertices().elements()[i].set(first + float(i), 0.0f, 0.0f);
    }
    s.lengths().setCount(int(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), s.lengths().elements());
    s.offsets().setCount(int(offsets.size()));
    std::copy(offsets.begin(), offsets.end(), s.offsets().elements());
    return s;
}

template <class T>
std::vector<T> contents(const Array<T>& a) {
    return {a.elements(), a.elements() + a.count()};
}

std::vector<float> xs(const LineStrips& s) {
    std::vector<float> result;
    for (const MeshVertex& v : contents(s.vertices())) {
        result.push_back(v.x);
    }
    return result;
}

TEST(LineStrips, DeliberateAddKeepsTheAppendedOffsetsUntilRecomputed) {
    LineStrips s = strips(0, {5}, {0});
    s.add(strips(100, {2, 3}, {0, 2}));
    EXPECT_EQ(xs(s), (std::vector<float>{0, 1, 2, 3, 4, 100, 101, 102, 103, 104}));
    EXPECT_EQ(contents(s.lengths()), (std::vector<int>{5, 2, 3}));
    EXPECT_EQ(contents(s.offsets()), (std::vector<int>{0, 0, 2}));
    s.computeOffsets();
    EXPECT_EQ(contents(s.offsets()), (std::vector<int>{0, 5, 7}));
    EXPECT_EQ(s.getSizeInBytes(), 4 * (3 * (10 + 6) + 3 + 3));

    s.add(s); // onto itself: every array doubles, offsets again as they were
    EXPECT_EQ(s.getNumVertices(), 20);
    EXPECT_EQ(xs(s)[10], 0.0f);
    EXPECT_EQ(contents(s.offsets()), (std::vector<int>{0, 5, 7, 0, 5, 7}));
    EXPECT_EQ(LineStrips().getSizeInBytes(), 72);
}

TEST(LineStrips, CopiesAndMovesLeaveTheSourceWhole) {
    const LineStrips source = strips(1, {2, 2}, {0, 2});
    LineStrips movedFrom = source;
    const LineStrips moved(std::move(movedFrom));
    for (const LineStrips* s : {&std::as_const(movedFrom), &moved}) {
        EXPECT_EQ(xs(*s), xs(source));
        EXPECT_EQ(contents(s->lengths()), contents(source.lengths()));
        EXPECT_EQ(contents(s->offsets()), contents(source.offsets()));
    }
    LineStrips assigned = strips(9, {1}, {});
    assigned = std::move(movedFrom);
    EXPECT_EQ(xs(assigned), xs(source));
    EXPECT_EQ(movedFrom.getNumStrips(), 2);
    LineStrips empty;
    assigned.swap(empty);
    EXPECT_EQ(assigned.getNumVertices(), 0);
    EXPECT_EQ(empty.getNumVertices(), 4);
}

} // namespace
} // namespace koGeom
