#include "geom/spatial/BoundingBox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>

namespace koGeom {
namespace {

using Values = std::array<float, 6>;

constexpr float floatMax = std::numeric_limits<float>::max();
constexpr float inf = std::numeric_limits<float>::infinity();

BoundingBox makeBox(const Values& v) { return BoundingBox(v.data(), v.data() + 3); }

Values values(const BoundingBox& box) {
    Values v;
    box.minPt(v.data());
    box.maxPt(v.data() + 3);
    return v;
}

// The six values of the box `v` after `change`.
template <class Change>
Values after(const Values& v, Change change) {
    BoundingBox box = makeBox(v);
    change(box);
    return values(box);
}

TEST(BoundingBox, DefaultBoxIsValidAndOnlySetInvalidEmptiesIt) {
    // Deliberate: a fresh box is the valid zero box, not an empty one.
    BoundingBox box;
    EXPECT_TRUE(box.isValid());
    EXPECT_EQ(values(box), Values{});
    box.setInvalid();
    EXPECT_EQ(values(box), (Values{floatMax, floatMax, floatMax, -floatMax, -floatMax, -floatMax}));
    BoundingBox accumulated = box;
    accumulated.extend(makeBox({0, 1, 2, 3, 4, 5}));
    accumulated.extend(box); // an empty box extends nothing
    EXPECT_EQ(values(accumulated), (Values{0, 1, 2, 3, 4, 5}));
    box.extend(koLinear::PointFlt(1.0f, -2.0f, 3.0f));
    EXPECT_EQ(values(box), (Values{1, -2, 3, 1, -2, 3}));
    for (int i = 0; i < 6; ++i) {
        Values v{0, 0, 0, 1, 1, 1};
        v[i] = std::nanf("");
        EXPECT_FALSE(makeBox(v).isValid()) << "NaN at value " << i;
    }
}

TEST(BoundingBox, ConstructionRoundsDoublesToNearestAndTakesRangesUnchecked) {
    const float p[3] = {1.0f, 2.0f, 3.0f};
    EXPECT_EQ(values(BoundingBox(p, 0.5f)), (Values{0.5f, 1.5f, 2.5f, 1.5f, 2.5f, 3.5f}));
    // 1 + 0.75 ulp rounds up to 1 + 1 ulp; truncation would give 1.
    const double near[3] = {1.0 + 3.0 * std::ldexp(1.0, -25), -0.5, 1e300};
    const double far[3] = {2.0, 2.0, 2.0};
    const float up = 1.0f + std::ldexp(1.0f, -23);
    EXPECT_EQ(values(BoundingBox(near, far)), (Values{up, -0.5f, inf, 2, 2, 2}));
    BoundingBox box;
    box = koLinear::Range3d({-1.0, 0.0, 1.0}, {near[0], 2.0, 3.0});
    EXPECT_EQ(values(box), (Values{-1, 0, 1, up, 2, 3}));
    // An empty range is copied as it is (its ±DBL_MAX overflow to ±infinity).
    box = koLinear::Range3d();
    EXPECT_EQ(values(box), (Values{inf, inf, inf, -inf, -inf, -inf}));
}

TEST(BoundingBox, CornersFollowBitNumberingWhileVerticesWalkTheFaces) {
    // Deliberate: getPoint numbers corners by bits, getVertices walks the bottom then the top
    // face; both orders are kept.
    const BoundingBox box = makeBox({1, 2, 3, 4, 5, 6});
    const koLinear::Point byBits[8] = {{1, 2, 3}, {4, 2, 3}, {1, 5, 3}, {4, 5, 3},
                                       {1, 2, 6}, {4, 2, 6}, {1, 5, 6}, {4, 5, 6}};
    float raw[3];
    for (int i = 0; i < 8; ++i) {
        box.getPoint(i | 0x78, raw); // higher bits ignored
        EXPECT_EQ(koLinear::Point(raw[0], raw[1], raw[2]), byBits[i]) << "corner " << i;
    }
    const ko::vector<koLinear::Point> faces = {{1, 2, 3}, {1, 5, 3}, {4, 5, 3}, {4, 2, 3},
                                               {1, 2, 6}, {1, 5, 6}, {4, 5, 6}, {4, 2, 6}};
    EXPECT_EQ(box.getVertices(), faces);
}

TEST(BoundingBox, CentreAndDiagonalsInFloatCentreInDoubleHalvesTheFloatSum) {
    const BoundingBox box = makeBox({0, 0, 0, 3, 4, 12});
    EXPECT_TRUE(box.center() == koLinear::PointFlt(1.5f, 2.0f, 6.0f) &&
                box.halfDiagonal() == koLinear::VectorFlt(1.5f, 2.0f, 6.0f));
    EXPECT_EQ(box.diagonalLength(), 13.0f);
    // 1 + 2^24 is not a float: the sum rounds to 2^24 before the halving in double, where a
    // sum in double would give 8388608.5.
    double centre[3];
    makeBox({1, 0, 0, 16777216.0f, 0, 0}).center(centre);
    EXPECT_EQ(centre[0], 8388608.0);
    // Halving the smallest subnormal float: in float the half rounds to 0 (ties to even), in
    // double it is kept.
    const float tiny = std::numeric_limits<float>::denorm_min();
    const BoundingBox subnormal = makeBox({0, 0, 0, tiny, tiny, tiny});
    float centreFlt[3];
    subnormal.center(centreFlt);
    subnormal.center(centre);
    EXPECT_TRUE(centreFlt[0] == 0.0f && centre[2] == std::ldexp(1.0, -150));
}

TEST(BoundingBox, PointDistanceIsSummedInFloatOverXYZ) {
    const BoundingBox unit = makeBox({0, 0, 0, 1, 1, 1});
    EXPECT_EQ(unit.distance2({1.0f, 0.0f, 0.5f}) + unit.distance({-3.0f, 0.5f, 5.0f}), 5.0);
    // 4097^2 = 16785409 is odd and above 2^24: in float it rounds to 16785408.
    EXPECT_EQ(unit.distance2({-4097.0f, 0.5f, 0.5f}), 16785408.0);
    // 2^24 + 1 + 1 summed in float from x on loses both ones; from z on, or in double, it
    // would give 16777218.
    EXPECT_EQ(unit.distance2({-4096.0f, 2.0f, 2.0f}), 16777216.0);
    EXPECT_EQ(unit.distance2({2.0f, 2.0f, -4096.0f}), 16777218.0);
}

TEST(BoundingBox, DeliberateContainmentStrictIntersectionClosedEquivalenceBelowTolerance) {
    // Deliberate: a box neither contains itself nor a box touching one of its faces; boxes that
    // only touch intersect; a difference equal to the tolerance fails, so 0 matches nothing.
    const BoundingBox outer = makeBox({0, 0, 0, 4, 4, 4}), unit = makeBox({0, 0, 0, 1, 1, 1});
    const Values a{1, 2, 3, 4, 5, 6};
    EXPECT_FALSE(outer.contains(outer) || equivalent(makeBox(a), makeBox(a), 0.0f));
    for (int i = 0; i < 6; ++i) { // value i: face i of `outer`, side i / 3 of `unit`'s axis i % 3
        SCOPED_TRACE(i);
        Values inner{1, 1, 1, 3, 3, 3};
        inner[i] = i < 3 ? 0.0f : 4.0f;
        EXPECT_FALSE(outer.contains(makeBox(inner)));
        inner[i] = i < 3 ? std::nextafter(0.0f, 1.0f) : std::nextafter(4.0f, 0.0f);
        EXPECT_TRUE(outer.contains(makeBox(inner)));
        inner[i] = std::nanf("");
        EXPECT_FALSE(outer.contains(makeBox(inner)));

        const int axis = i % 3;
        const float side = i < 3 ? -1.0f : 1.0f;
        Values touching{0, 0, 0, 1, 1, 1};
        touching[axis] += side;
        touching[axis + 3] += side;
        EXPECT_TRUE(unit.intersects(makeBox(touching)));
        touching[axis] = side > 0 ? std::nextafter(1.0f, 2.0f) : -1.0f; // now one step apart
        touching[axis + 3] = side > 0 ? 2.0f : std::nextafter(0.0f, -1.0f);
        EXPECT_FALSE(unit.intersects(makeBox(touching)));
        EXPECT_EQ(unit.intersects2D(makeBox(touching)), axis == 2); // z ignored

        Values b = a;
        b[i] += 0.25f;
        EXPECT_FALSE(equivalent(makeBox(a), makeBox(b), 0.25f));
        EXPECT_TRUE(equivalent(makeBox(a), makeBox(b), std::nextafter(0.25f, 1.0f)));
        b[i] = std::nanf("");
        EXPECT_FALSE(equivalent(makeBox(a), makeBox(b), floatMax));
    }
    // The difference ends in float: 1 - 1e-8 rounds to 1, which is not below 1.
    EXPECT_FALSE(equivalent(makeBox({1, 0, 0, 1, 0, 0}), makeBox({1e-8f, 0, 0, 1, 0, 0}), 1.0f));
}

TEST(BoundingBox, GrowingAndClipping) {
    const Values unit{0, 0, 0, 1, 1, 1};
    EXPECT_EQ(after(unit, [](BoundingBox& b) { b.extend(2.0f); }), (Values{-1, -1, -1, 2, 2, 2}));
    EXPECT_EQ(after(unit, [](BoundingBox& b) { b.extend(koLinear::PointFlt(2, 0.5f, -1)); }),
              (Values{0, 0, -1, 2, 1, 1}));
    const auto fractionally = [](BoundingBox& b) { b.extendFractionally(); };
    EXPECT_EQ(after({1, 2, 3, 1, 2, 3}, fractionally), (Values{1, 2, 3, 1, 2, 3}));
    const float e = 0.13f; // a hundredth of the diagonal 13
    EXPECT_EQ(after({0, 0, 0, 3, 4, 12}, fractionally),
              (Values{-e, -e, -e, 3.0f + e, 4.0f + e, 12.0f + e}));
    // Whichever axis is longest sets the cube's half-side.
    const auto cube = [](BoundingBox& b) { b.extendToCube(); };
    EXPECT_EQ(after({0, 0, 1, 4, 2, 2}, cube), (Values{0, -1, -0.5f, 4, 3, 3.5f}));
    EXPECT_EQ(after({0, 0, 1, 2, 4, 2}, cube), (Values{-1, 0, -0.5f, 3, 4, 3.5f}));
    EXPECT_EQ(after({0, 0, 0, 2, 2, 4}, cube), (Values{-1, -1, 0, 3, 3, 4}));
    // Clipping to a disjoint box leaves it crossed.
    BoundingBox box = makeBox({0, 0, 0, 4, 4, 4});
    box.clipTo(makeBox({1, -1, 3, 2, 5, 6}));
    EXPECT_EQ(values(box), (Values{1, 0, 3, 2, 4, 4}));
    box.clipTo(makeBox({3, 0, 0, 5, 1, 1}));
    EXPECT_EQ(values(box), (Values{3, 0, 3, 2, 1, 1}));
}

TEST(BoundingBox, ScalingMirrorsTheMinSideAboutTheCentre) {
    const Values v{0, -1, 4, 2, 1, 8};
    EXPECT_EQ(after(v, [](BoundingBox& b) { b.scale(2.0f); }), (Values{-1, -2, 2, 3, 2, 10}));
    // Deliberate: a negative factor swaps the corners and the inverted box is kept.
    EXPECT_EQ(after(v, [](BoundingBox& b) { b.scale(-1.0f); }), (Values{2, 1, 8, 0, -1, 4}));
    // The centre of [1, 2^24] rounds to 2^23 in float; max is rebuilt from the min side as
    // 2^23 + (2^23 - 1), so even a factor of 1 moves it down by one.
    EXPECT_EQ(after({1, 0, 0, 16777216.0f, 0, 0}, [](BoundingBox& b) { b.scale(1.0f); }),
              (Values{1, 0, 0, 16777215.0f, 0, 0}));
}

TEST(BoundingBox, InvalidBoxConvertsToTheUnboundedRange) {
    // Deliberate: not a range with the box's own crossed corners.
    koLinear::Range3d unbounded;
    unbounded.setUnbounded();
    EXPECT_EQ(makeBox({2, 0, 0, 1, 1, 1}).asRange3d(), unbounded);
    EXPECT_EQ(makeBox({0.1f, 2, 3, 0.1f, 5, 6}).asRange3d(),
              koLinear::Range3d({double(0.1f), 2, 3}, {double(0.1f), 5, 6}));
}

// The box about the eight corners, each transformed by the row-vector product written out
// here, in the matrix's precision, and rounded to float.
template <class Matrix>
Values bruteForceTransform(const Values& box, const Matrix& m) {
    Values out{floatMax, floatMax, floatMax, -floatMax, -floatMax, -floatMax};
    for (int corner = 0; corner < 8; ++corner) {
        const float x = box[corner & 1 ? 3 : 0], y = box[corner & 2 ? 4 : 1];
        const float z = box[corner & 4 ? 5 : 2];
        for (int c = 0; c < 3; ++c) {
            const auto image = x * m(0, c) + y * m(1, c) + z * m(2, c) + m(3, c);
            out[c] = std::min(out[c], static_cast<float>(image));
            out[c + 3] = std::max(out[c + 3], static_cast<float>(image));
        }
    }
    return out;
}

TEST(BoundingBox, TransformBoundsTheEightTransformedCorners) {
    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> coordinate(-100.0f, 100.0f);
    std::uniform_real_distribution<double> element(-2.0, 2.0);
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        Values v;
        for (int i = 0; i < 3; ++i) {
            std::tie(v[i], v[i + 3]) = std::minmax(coordinate(random), coordinate(random));
        }
        koLinear::AffineMatrix m;
        for (int i = 0; i < 12; ++i) m.data()[i] = (i < 9 ? 1.0 : 50.0) * element(random);
        const koLinear::AffineMatrixFlt mFlt(m);
        EXPECT_EQ(after(v, [&](BoundingBox& b) { b.transform(m); }), bruteForceTransform(v, m));
        EXPECT_EQ(after(v, [&](BoundingBox& b) { b.transform(mFlt); }),
                  bruteForceTransform(v, mFlt));
    }
    // An empty box is transformed as it stands: its corners span the whole float range.
    BoundingBox box;
    box.setInvalid();
    box.transform(koLinear::AffineMatrix(1.0));
    EXPECT_EQ(values(box), (Values{-floatMax, -floatMax, -floatMax, floatMax, floatMax, floatMax}));
}

} // namespace
} // namespace koGeom
