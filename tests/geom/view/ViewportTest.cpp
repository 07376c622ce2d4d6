#include "geom/view/Viewport.h"

#include <gtest/gtest.h>

#include <string>

#include "geom/entity/LibraryDebugChannel.h"
#include "tests/geom/view/ExpectMatrix.h"

namespace koGeom {
namespace {

using koGeomTest::expectInverses;
using koGeomTest::expectMatrix;

// Origin (10, 20), 200 x 100 pixels, depths 0.2 to 1.
Viewport window(double depthNear = 0.2) {
    Viewport v;
    v.setOrigin(10.0, 20.0);
    v.setSize(200.0, 100.0);
    v.setDepthRange(depthNear, 1.0);
    return v;
}

TEST(Viewport, DeliberateDepthOffsetsOfTheViewTransforms) {
    const Viewport v = window();
    koLinear::AffineMatrix2 planar;
    v.getViewTransform(planar); // scale 200/2, 100/2; translation (10 + 100, 20 + 50)
    EXPECT_EQ(planar, koLinear::AffineMatrix2({100, 0}, {0, 50}, {110, 70}));
    v.getInverseViewTransform(planar); // 2/200, 2/100; (-110 * 0.01, -70 * 0.02)
    EXPECT_TRUE(koLinear::equivalent(
        planar, koLinear::AffineMatrix2({0.01, 0}, {0, 0.02}, {-1.1, -1.4}), 1e-15));

    // Deliberate: z scale (1 - 0.2)/2 = 0.4 and z offset 0.4 - 0.2 = 0.2 (not 0.6); the
    // inverse has z scale 1/0.4 = 2.5 and z offset -(0.2 + 1) = -1.2.
    koLinear::ProjMatrix forward, inverse;
    v.getViewTransform(forward);
    v.getInverseViewTransform(inverse);
    expectMatrix(forward, {100, 0, 0, 0, 0, 50, 0, 0, 0, 0, 0.4, 0, 110, 70, 0.2, 1});
    expectMatrix(inverse, {0.01, 0, 0, 0, 0, 0.02, 0, 0, 0, 0, 2.5, 0, -1.1, -1.4, -1.2, 1});
    // So they undo each other only for a range starting at 0: here z comes back as
    // (0.4 z + 0.2) 2.5 - 1.2 = z - 0.7.
    expectMatrix(forward * inverse, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, -0.7, 1}, 1e-12);
    window(0.0).getViewTransform(forward);
    window(0.0).getInverseViewTransform(inverse);
    expectInverses(forward, inverse);
}

TEST(Viewport, PickTransformMagnifiesTheRangeToTheSquare) {
    const Viewport v = window();
    koLinear::AffineMatrix m;
    // c = (105, 65), s = (10, 10): m00 = 200/10, m11 = 100/10,
    // translation ((200 - 2 * 95) / 10, (100 - 2 * 45) / 10).
    v.getPickTransform({{100, 60}, {110, 70}}, m);
    EXPECT_EQ(m, koLinear::AffineMatrix({20, 0, 0}, {0, 10, 0}, {0, 0, 1}, {1, 1, 0}));
    // An empty range keeps factors of 1 and is centred on its point: (200 - 2 * 95) * 1.
    v.getPickTransform({{105, 65}, {105, 65}}, m);
    EXPECT_EQ(m, koLinear::AffineMatrix({200, 0, 0}, {0, 100, 0}, {0, 0, 1}, {10, 10, 0}));
    // The range's corners land on the square's: pixel 100 is normalised (100 - 110) / 100.
    v.getPickTransform({{100, 60}, {110, 70}}, m);
    EXPECT_NEAR((koLinear::Point(-0.1, -0.1, 0) * m).x, -1.0, 1e-12);
    EXPECT_NEAR((koLinear::Point(0.0, 0.0, 0) * m).y, 1.0, 1e-12);
}

TEST(Viewport, EqualityAndPrint) {
    Viewport other = window();
    EXPECT_TRUE(other == window());
    other.setDepthRange(0.2 + 2e-10, 1.0);
    EXPECT_FALSE(other == window());
    koLinear::Point2 centre;
    window().getCenter(centre);
    EXPECT_EQ(centre, koLinear::Point2(110, 70));
    EXPECT_EQ(window().getAspectRatio(), 2.0);

    koOS::DebugChannel& channel = debugChannel();
    std::string printed;
    channel.setSink([&printed](std::string_view text) { printed += text; });
    channel.setEnabled(true);
    window().debugPrint(channel, "main");
    channel.setEnabled(false);
    channel.setSink(nullptr);
    EXPECT_EQ(printed,
              "main Viewport is\n  origin 10.00 20.00\n  size   200.00 100.00\n"
              "  range  0.20 1.00\n");
}

} // namespace
} // namespace koGeom
