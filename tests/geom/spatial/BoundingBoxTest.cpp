#include "geom/spatial/BoundingBox.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace koGeom {
namespace {

using Values = std::array<float, 6>;

constexpr float floatMax = std::numeric_limits<float>::max();

BoundingBox makeBox(const Values& v) { return BoundingBox(v.data(), v.data() + 3); }

Values values(const BoundingBox& box) {
    Values v;
    box.minPt(v.data());
    box.maxPt(v.data() + 3);
    return v;
}

TEST(BoundingBox, DefaultBoxIsValidAndOnlySetInvalidEmptiesIt) {
    // Deliberate: a fresh box is the valid zero box, not an empty one.
    BoundingBox box;
    EXPECT_TRUE(box.isValid());
    EXPECT_EQ(values(box), Values{});
    EXPECT_EQ(box.diagonalLength(), 0.0f);

    box.setInvalid();
    EXPECT_FALSE(box.isValid());
    EXPECT_EQ(values(box), (Values{floatMax, floatMax, floatMax, -floatMax, -floatMax, -floatMax}));
    box.extend(koLinear::PointFlt(1.0f, -2.0f, 3.0f));
    EXPECT_EQ(values(box), (Values{1, -2, 3, 1, -2, 3}));

    BoundingBox accumulated;
    accumulated.setInvalid();
    accumulated.extend(makeBox({0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(values(accumulated), (Values{0, 1, 2, 3, 4, 5}));
    // An empty box extends nothing.
    BoundingBox empty;
    empty.setInvalid();
    accumulated.extend(empty);
    EXPECT_EQ(values(accumulated), (Values{0, 1, 2, 3, 4, 5}));

    EXPECT_TRUE(makeBox({1, 1, 1, 1, 1, 1}).isValid());
    for (int i = 0; i < 6; ++i) {
        Values v{0, 0, 0, 1, 1, 1};
        v[i] = std::nanf("");
        EXPECT_FALSE(makeBox(v).isValid()) << "NaN at value " << i;
    }
    // A box with max below min on one axis only is invalid.
    EXPECT_FALSE(makeBox({0, 2, 0, 1, 1, 1}).isValid());
}

TEST(BoundingBox, ConstructionRoundsDoublesToNearestAndTakesRangesUnchecked) {
    const float p[3] = {1.0f, 2.0f, 3.0f};
    EXPECT_EQ(values(BoundingBox(p, 0.5f)), (Values{0.5f, 1.5f, 2.5f, 1.5f, 2.5f, 3.5f}));
    EXPECT_EQ(values(BoundingBox(p)), (Values{1, 2, 3, 1, 2, 3}));

    // 1 + 0.75 ulp rounds up to 1 + 1 ulp; truncation would give 1.
    const double near[3] = {1.0 + 3.0 * std::ldexp(1.0, -25), -0.5, 1e300};
    const double far[3] = {2.0, 2.0, 2.0};
    const float up = 1.0f + std::ldexp(1.0f, -23);
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(values(BoundingBox(near, far)), (Values{up, -0.5f, inf, 2, 2, 2}));
    EXPECT_EQ(values(BoundingBox(near)), (Values{up, -0.5f, inf, up, -0.5f, inf}));

    BoundingBox box;
    box = koLinear::Range3d({-1.0, 0.0, 1.0}, {1.0 + 3.0 * std::ldexp(1.0, -25), 2.0, 3.0});
    EXPECT_EQ(values(box), (Values{-1, 0, 1, up, 2, 3}));
    // An empty range is copied as it is (its ±DBL_MAX overflow to ±infinity), not turned
    // into the empty box of setInvalid().
    box = koLinear::Range3d();
    EXPECT_EQ(values(box), (Values{inf, inf, inf, -inf, -inf, -inf}));
}

TEST(BoundingBox, CornersFollowBitNumberingWhileVerticesWalkTheFaces) {
    // Deliberate: getPoint numbers corners by bits, getVertices walks the bottom then the top
    // face; both orders are kept.
    const BoundingBox box = makeBox({1, 2, 3, 4, 5, 6});
    const koLinear::PointFlt byBits[8] = {{1, 2, 3}, {4, 2, 3}, {1, 5, 3}, {4, 5, 3},
                                          {1, 2, 6}, {4, 2, 6}, {1, 5, 6}, {4, 5, 6}};
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        koLinear::PointFlt corner;
        box.getPoint(i, corner);
        EXPECT_EQ(corner, byBits[i]);
        float raw[3];
        box.getPoint(i | 0x78, raw); // higher bits ignored
        EXPECT_EQ(koLinear::PointFlt(raw[0], raw[1], raw[2]), byBits[i]);
    }

    const ko::vector<koLinear::Point> faces = box.getVertices();
    const ko::vector<koLinear::Point> expected = {{1, 2, 3}, {1, 5, 3}, {4, 5, 3}, {4, 2, 3},
                                                  {1, 2, 6}, {1, 5, 6}, {4, 5, 6}, {4, 2, 6}};
    EXPECT_EQ(faces, expected);
}

TEST(BoundingBox, CentreAndDiagonalsInFloatCentreInDoubleHalvesTheFloatSum) {
    const BoundingBox box = makeBox({0, 0, 0, 3, 4, 12});
    EXPECT_EQ(box.center(), koLinear::PointFlt(1.5f, 2.0f, 6.0f));
    float diagonal[3];
    box.diagonal(diagonal);
    EXPECT_EQ(koLinear::VectorFlt(diagonal[0], diagonal[1], diagonal[2]),
              koLinear::VectorFlt(3, 4, 12));
    EXPECT_EQ(box.halfDiagonal(), koLinear::VectorFlt(1.5f, 2.0f, 6.0f));
    EXPECT_EQ(box.diagonalLength(), 13.0f);

    // 1 + 2^24 is not a float: the sum rounds to 2^24 before the halving in double, where a
    // sum in double would give 8388608.5.
    const float big = 16777216.0f;
    double centre[3];
    makeBox({1, 0, 0, big, 0, 0}).center(centre);
    EXPECT_EQ(centre[0], 8388608.0);

    // Halving the smallest subnormal float: in float the half rounds to 0 (ties to even), in
    // double it is kept.
    const float tiny = std::numeric_limits<float>::denorm_min();
    const BoundingBox subnormal = makeBox({0, 0, 0, tiny, tiny, tiny});
    float centreFlt[3];
    subnormal.center(centreFlt);
    subnormal.center(centre);
    EXPECT_EQ(centreFlt[0], 0.0f);
    EXPECT_EQ(subnormal.center().y, 0.0f);
    EXPECT_EQ(centre[2], std::ldexp(1.0, -150));
}

TEST(BoundingBox, PointDistanceIsSummedInFloatOverXYZ) {
    const BoundingBox unit = makeBox({0, 0, 0, 1, 1, 1});
    EXPECT_EQ(unit.distance2({1.0f, 0.0f, 0.5f}), 0.0);
    EXPECT_EQ(unit.distance({-3.0f, 0.5f, 5.0f}), 5.0);
    // 4097^2 = 16785409 is odd and above 2^24: in float it rounds to 16785408.
    EXPECT_EQ(unit.distance2({-4097.0f, 0.5f, 0.5f}), 16785408.0);
    // 2^24 + 1 + 1 summed in float from x on loses both ones; from z on, or in double, it
    // would give 16777218.
    EXPECT_EQ(unit.distance2({-4096.0f, 2.0f, 2.0f}), 16777216.0);
    EXPECT_EQ(unit.distance2({2.0f, 2.0f, -4096.0f}), 16777218.0);
}

TEST(BoundingBox, ContainmentIsStrictOnEveryAxis) {
    // Deliberate: a box neither contains itself nor a box touching one of its faces.
    const BoundingBox outer = makeBox({0, 0, 0, 4, 4, 4});
    EXPECT_FALSE(outer.contains(outer));
    EXPECT_TRUE(outer.contains(makeBox({1, 1, 1, 3, 3, 3})));
    for (int face = 0; face < 6; ++face) {
        Values inner{1, 1, 1, 3, 3, 3};
        inner[face] = face < 3 ? 0.0f : 4.0f;
        EXPECT_FALSE(outer.contains(makeBox(inner))) << "touching face " << face;
        inner[face] = face < 3 ? std::nextafter(0.0f, 1.0f) : std::nextafter(4.0f, 0.0f);
        EXPECT_TRUE(outer.contains(makeBox(inner))) << "one ulp inside face " << face;
        inner[face] = std::nanf("");
        EXPECT_FALSE(outer.contains(makeBox(inner))) << "NaN at face " << face;
    }
}

TEST(BoundingBox, IntersectionIsClosedAndTwoDimensionalIgnoresZ) {
    // Deliberate: boxes that only touch intersect.
    const BoundingBox box = makeBox({0, 0, 0, 1, 1, 1});
    for (int axis = 0; axis < 3; ++axis) {
        for (const float side : {-1.0f, 1.0f}) {
            SCOPED_TRACE(testing::Message() << "axis " << axis << " side " << side);
            Values touching{0, 0, 0, 1, 1, 1};
            touching[axis] += side;
            touching[axis + 3] += side;
            EXPECT_TRUE(box.intersects(makeBox(touching)));
            EXPECT_TRUE(makeBox(touching).intersects(box));
            Values apart = touching;
            apart[axis] = side > 0 ? std::nextafter(1.0f, 2.0f) : -1.0f;
            apart[axis + 3] = side > 0 ? 2.0f : std::nextafter(0.0f, -1.0f);
            EXPECT_FALSE(box.intersects(makeBox(apart)));
            EXPECT_FALSE(makeBox(apart).intersects(box));
            EXPECT_EQ(box.intersects2D(makeBox(apart)), axis == 2);
        }
    }
}

TEST(BoundingBox, EquivalenceIsStrictlyBelowTheToleranceOnEachValue) {
    // Deliberate: a difference equal to the tolerance fails, so tolerance 0 matches nothing.
    const Values a{1, 2, 3, 4, 5, 6};
    EXPECT_FALSE(equivalent(makeBox(a), makeBox(a), 0.0f));
    EXPECT_TRUE(equivalent(makeBox(a), makeBox(a), std::numeric_limits<float>::denorm_min()));
    for (int i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        Values b = a;
        b[i] += 0.25f;
        EXPECT_FALSE(equivalent(makeBox(a), makeBox(b), 0.25f));
        EXPECT_FALSE(equivalent(makeBox(b), makeBox(a), 0.25f));
        EXPECT_TRUE(equivalent(makeBox(a), makeBox(b), std::nextafter(0.25f, 1.0f)));
        b[i] = std::nanf("");
        EXPECT_FALSE(equivalent(makeBox(a), makeBox(b), floatMax));
    }
    // The difference ends in float: 1 - 1e-8 rounds to 1, which is not below 1.
    EXPECT_FALSE(equivalent(makeBox({1, 0, 0, 1, 0, 0}), makeBox({1e-8f, 0, 0, 1, 0, 0}), 1.0f));
}

TEST(BoundingBox, GrowingByDistanceFractionAndCube) {
    BoundingBox box = makeBox({0, 0, 0, 1, 1, 1});
    box.extend(2.0f);
    EXPECT_EQ(values(box), (Values{-1, -1, -1, 2, 2, 2}));

    box = makeBox({0, 0, 0, 1, 1, 1});
    box.extend(koLinear::PointFlt(2.0f, 0.5f, -1.0f));
    EXPECT_EQ(values(box), (Values{0, 0, -1, 2, 1, 1}));

    BoundingBox degenerate = makeBox({1, 2, 3, 1, 2, 3});
    degenerate.extendFractionally();
    EXPECT_EQ(values(degenerate), (Values{1, 2, 3, 1, 2, 3}));
    box = makeBox({0, 0, 0, 3, 4, 12}); // diagonal 13: each face moves out by 0.13
    box.extendFractionally();
    const float e = 0.13f;
    EXPECT_EQ(values(box), (Values{-e, -e, -e, 3.0f + e, 4.0f + e, 12.0f + e}));

    // Whichever axis is longest sets the cube's half-side.
    for (int longest = 0; longest < 3; ++longest) {
        SCOPED_TRACE(longest);
        Values v{0, 0, 1, 2, 2, 2};
        v[longest] = 0;
        v[longest + 3] = 4;
        box = makeBox(v);
        box.extendToCube();
        const koLinear::PointFlt c = makeBox(v).center();
        EXPECT_EQ(values(box), (Values{c.x - 2, c.y - 2, c.z - 2, c.x + 2, c.y + 2, c.z + 2}));
    }
}

TEST(BoundingBox, ScalingMirrorsTheMinSideAboutTheCentre) {
    BoundingBox box = makeBox({0, -1, 4, 2, 1, 8});
    box.scale(2.0f);
    EXPECT_EQ(values(box), (Values{-1, -2, 2, 3, 2, 10}));

    // Deliberate: a negative factor swaps the corners and the inverted box is kept.
    box = makeBox({0, -1, 4, 2, 1, 8});
    box.scale(-1.0f);
    EXPECT_EQ(values(box), (Values{2, 1, 8, 0, -1, 4}));
    EXPECT_FALSE(box.isValid());

    // The centre of [1, 2^24] rounds to 2^23 in float; max is rebuilt from the min side as
    // 2^23 + (2^23 - 1), so even a factor of 1 moves it down by one.
    box = makeBox({1, 0, 0, 16777216.0f, 0, 0});
    box.scale(1.0f);
    EXPECT_EQ(values(box), (Values{1, 0, 0, 16777215.0f, 0, 0}));
}

TEST(BoundingBox, ClippingIntersectsAndMayLeaveTheBoxInvalid) {
    BoundingBox box = makeBox({0, 0, 0, 4, 4, 4});
    box.clipTo(makeBox({1, -1, 3, 2, 5, 6}));
    EXPECT_EQ(values(box), (Values{1, 0, 3, 2, 4, 4}));
    box.clipTo(makeBox({3, 0, 0, 5, 1, 1}));
    EXPECT_EQ(values(box), (Values{3, 0, 3, 2, 1, 1}));
    EXPECT_FALSE(box.isValid());
}

TEST(BoundingBox, InvalidBoxConvertsToTheUnboundedRange) {
    // Deliberate: not a range with the box's own crossed corners.
    koLinear::Range3d unbounded;
    unbounded.setUnbounded();
    EXPECT_EQ(makeBox({2, 0, 0, 1, 1, 1}).asRange3d(), unbounded);
    BoundingBox empty;
    empty.setInvalid();
    EXPECT_EQ(empty.asRange3d(), unbounded);

    const koLinear::Range3d range = makeBox({0.1f, 2, 3, 0.1f, 5, 6}).asRange3d();
    EXPECT_EQ(range.min, koLinear::Point(static_cast<double>(0.1f), 2, 3));
    EXPECT_EQ(range.max, koLinear::Point(static_cast<double>(0.1f), 5, 6));
}

// The box about the eight corners, each transformed by the row-vector product written out
// here, in the matrix's precision, and rounded to float.
template <class Matrix>
Values bruteForceTransform(const Values& box, const Matrix& m) {
    Values out{floatMax, floatMax, floatMax, -floatMax, -floatMax, -floatMax};
    for (const float x : {box[0], box[3]}) {
        for (const float y : {box[1], box[4]}) {
            for (const float z : {box[2], box[5]}) {
                for (int c = 0; c < 3; ++c) {
                    const auto image = x * m(0, c) + y * m(1, c) + z * m(2, c) + m(3, c);
                    out[c] = std::min(out[c], static_cast<float>(image));
                    out[c + 3] = std::max(out[c + 3], static_cast<float>(image));
                }
            }
        }
    }
    return out;
}

TEST(BoundingBox, TransformBoundsTheEightTransformedCorners) {
    // A quarter turn about z, (x, y, z) -> (-y, x, z), then a shift by (10, 20, 30): the min
    // corner lands on the max side in x.
    const koLinear::AffineMatrix quarterTurn({0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {10, 20, 30});
    BoundingBox box = makeBox({1, 3, -1, 2, 5, 0});
    box.transform(quarterTurn);
    EXPECT_EQ(values(box), (Values{5, 21, 29, 7, 22, 30}));

    std::mt19937 random(20240611);
    std::uniform_real_distribution<float> coordinate(-100.0f, 100.0f);
    std::uniform_real_distribution<double> element(-2.0, 2.0);
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        Values v;
        for (float& value : v) {
            value = coordinate(random);
        }
        for (int i = 0; i < 3; ++i) {
            if (v[i] > v[i + 3]) {
                std::swap(v[i], v[i + 3]);
            }
        }
        koLinear::AffineMatrix m;
        for (int i = 0; i < 12; ++i) {
            m.data()[i] = i < 9 ? element(random) : 50.0 * element(random);
        }
        box = makeBox(v);
        box.transform(m);
        EXPECT_EQ(values(box), bruteForceTransform(v, m));
        const koLinear::AffineMatrixFlt mFlt(m);
        box = makeBox(v);
        box.transform(mFlt);
        EXPECT_EQ(values(box), bruteForceTransform(v, mFlt));
    }
}

TEST(BoundingBox, TransformPrecisionFollowsTheMatrixAndSkipsTheValidityCheck) {
    // x' = x + y + 1 at (2^24, 1, 0): 16777218 in double; in float each addition of 1 to
    // 2^24 rounds back to 2^24.
    const koLinear::AffineMatrix shear({1, 0, 0}, {1, 1, 0}, {0, 0, 1}, {1, 0, 0});
    const Values point{16777216.0f, 1, 0, 16777216.0f, 1, 0};
    BoundingBox box = makeBox(point);
    box.transform(shear);
    EXPECT_EQ(box.minPt().x, 16777218.0f);
    box = makeBox(point);
    box.transform(koLinear::AffineMatrixFlt(shear));
    EXPECT_EQ(box.minPt().x, 16777216.0f);

    // An empty box is transformed as it stands: its corners span the whole float range.
    box.setInvalid();
    box.transform(koLinear::AffineMatrix(1.0));
    EXPECT_EQ(values(box), (Values{-floatMax, -floatMax, -floatMax, floatMax, floatMax, floatMax}));
    EXPECT_TRUE(box.isValid());
}

} // namespace
} // namespace koGeom
