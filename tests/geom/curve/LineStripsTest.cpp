#include "geom/curve/LineStrips.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace koGeom {
namespace {

using Ints = std::vector<int>;

template <class T>
std::vector<T> contents(const Array<T>& a) {
    return {a.elements(), a.elements() + a.count()};
}

// Strips with the given lengths and offsets whose vertex i sits at (first + i, 0, 0).
LineStrips strips(float first, const Ints& lengths, const Ints& offsets) {
    LineStrips s;
    s.vertices().setCount(std::reduce(lengths.begin(), lengths.end()));
    for (int i = 0; i < s.vertices().count(); ++i)
        s.vertices().elements()[i].set(first + float(i), 0, 0);
    s.lengths().setCount(int(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), s.lengths().elements());
    s.offsets().setCount(int(offsets.size()));
    std::copy(offsets.begin(), offsets.end(), s.offsets().elements());
    return s;
}

TEST(LineStrips, DeliberateAddKeepsTheAppendedOffsetsUntilRecomputed) {
    LineStrips s = strips(0, {5}, {0});
    s.add(strips(100, {2, 3}, {0, 2}));
    const std::vector<MeshVertex> vertices = contents(s.vertices());
    EXPECT_EQ(vertices[4].x + vertices[5].x + vertices[9].x, 4.0f + 100.0f + 104.0f);
    EXPECT_EQ(contents(s.lengths()), (Ints{5, 2, 3}));
    EXPECT_EQ(contents(s.offsets()), (Ints{0, 0, 2}));
    s.computeOffsets();
    EXPECT_EQ(contents(s.offsets()), (Ints{0, 5, 7}));
    EXPECT_EQ(s.getSizeInBytes(), 4 * (3 * (10 + 6) + 3 + 3));
    s.add(s); // onto itself: every array doubles, the offsets again as they were
    EXPECT_EQ(contents(s.vertices())[10].x, 0.0f);
    EXPECT_EQ(contents(s.offsets()), (Ints{0, 5, 7, 0, 5, 7}));
    EXPECT_EQ(LineStrips().getSizeInBytes(), 72);

    LineStrips moved(std::move(s)); // moves copy and leave the source whole
    LineStrips assigned = strips(9, {1}, {});
    assigned = std::move(s);
    for (const LineStrips* t : {&s, &moved, &assigned}) {
        EXPECT_EQ(contents(t->vertices())[19].x, 104.0f);
        EXPECT_EQ(contents(t->offsets()), (Ints{0, 5, 7, 0, 5, 7}));
    }
}

} // namespace
} // namespace koGeom
