#include "geom/view/Viewport.h"

#include <gtest/gtest.h>

#include "tests/geom/view/ExpectMatrix.h"

namespace koGeom {
namespace {

using koGeomTest::expectMatrix;

// Origin (10, 20), 200 x 100 pixels, depths `depthNear` to 1.
Viewport window(double depthNear) {
    Viewport v;
    v.setOrigin(10.0, 20.0);
    v.setSize(200.0, 100.0);
    v.setDepthRange(depthNear, 1.0);
    return v;
}

TEST(Viewport, DeliberateDepthOffsetsOfTheViewTransforms) {
    // x, y: scale 200/2, 100/2, offset (10 + 100, 20 + 50); inverse 2/200, 2/100 and
    // (-110 * 0.01, -70 * 0.02). Deliberate: z scale (1 - 0.2)/2 = 0.4 with offset
    // 0.4 - 0.2 = 0.2 (not 0.6); inverse z scale 1/0.4 = 2.5 with offset -(0.2 + 1) = -1.2.
    koLinear::ProjMatrix forward, inverse;
    window(0.2).getViewTransform(forward);
    window(0.2).getInverseViewTransform(inverse);
    expectMatrix(forward, {100, 0, 0, 0, 0, 50, 0, 0, 0, 0, 0.4, 0, 110, 70, 0.2, 1});
    expectMatrix(inverse, {0.01, 0, 0, 0, 0, 0.02, 0, 0, 0, 0, 2.5, 0, -1.1, -1.4, -1.2, 1});
    // So z comes back as (0.4 z + 0.2) 2.5 - 1.2 = z - 0.7; only a range from 0 round-trips.
    expectMatrix(forward * inverse, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -0.7, 1});
    window(0.0).getViewTransform(forward);
    window(0.0).getInverseViewTransform(inverse);
    koGeomTest::expectInverses(forward, inverse);
}

TEST(Viewport, PickTransformMagnifiesTheRangeToTheSquareAndEquality) {
    koLinear::AffineMatrix m;
    // c = (105, 65), s = (10, 10): scale 200/10, 100/10, offset ((200 - 2 * 95) / 10,
    // (100 - 2 * 45) / 10).
    window(0.2).getPickTransform({{100, 60}, {110, 70}}, m);
    EXPECT_EQ(m, koLinear::AffineMatrix({20, 0, 0}, {0, 10, 0}, {0, 0, 1}, {1, 1, 0}));
    // An empty range keeps factors of 1 and is centred on its point: (200 - 2 * 95) * 1.
    window(0.2).getPickTransform({{105, 65}, {105, 65}}, m);
    EXPECT_EQ(m, koLinear::AffineMatrix({200, 0, 0}, {0, 100, 0}, {0, 0, 1}, {10, 10, 0}));
    Viewport other = window(0.2); // equal within 1e-10 on every value
    other.setDepthRange(0.2 + 0.5e-10, 1.0);
    EXPECT_TRUE(other == window(0.2));
    other.setDepthRange(0.2 + 2e-10, 1.0);
    EXPECT_FALSE(other == window(0.2));
}

} // namespace
} // namespace koGeom
