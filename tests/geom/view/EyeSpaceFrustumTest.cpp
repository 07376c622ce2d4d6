#include "geom/view/EyeSpaceFrustum.h"

#include <gtest/gtest.h>

#include "geom/view/AngleOfView.h"
#include "tests/geom/view/ExpectMatrix.h"

namespace koGeom {
namespace {

using koGeomTest::expectMatrix;

// l = -1, r = 3, b = -2, t = 2, n = 2, f = 10: off-centre in x.
EyeSpaceFrustum offCentre(bool orthographic) {
    EyeSpaceFrustum f;
    f.setFrame({-1.0, -2.0}, {3.0, 2.0});
    f.setDepthRange(2.0, 10.0, false);
    f.setOrthographic(orthographic);
    return f;
}

TEST(EyeSpaceFrustum, MatricesElementByElement) {
    koLinear::ProjMatrix m, inverse;
    // Off-centre: 4/4, 4/4, m20 = (l+r)/(r-l) = 2/4, m22 = 12/-8, m32 = 40/-8. Inverse:
    // (r-l)/2n = 1, (t-b)/2n = 1, m23 = (f-n)/(-2fn) = 8/-40, m30 = (l+r)/2n, m33 = 12/40.
    const EyeSpaceFrustum persp = offCentre(false);
    persp.getMatrix(m, false);
    expectMatrix(m, {1, 0, 0, 0, 0, 1, 0, 0, 0.5, 0, -1.5, -1, 0, 0, -5, 0});
    persp.getInverseMatrix(inverse);
    expectMatrix(inverse, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, -0.2, 0.5, 0, -1, 0.3});
    // Open: m22 = e - 1, m32 = (e - 2) n, with e the float tolerance.
    const double e = static_cast<double>(koLinear::epsilonTolFlt);
    persp.getMatrix(m, true);
    expectMatrix(m, {1, 0, 0, 0, 0, 1, 0, 0, 0.5, 0, e - 1, -1, 0, 0, (e - 2) * 2, 0});

    // Orthographic, open ignored: 2/4, 2/4, -2/8, m30 = -2/4, m32 = -12/8. Inverse: (r-l)/2,
    // (t-b)/2, -(f-n)/2, (l+r)/2, -(f+n)/2.
    const EyeSpaceFrustum ortho = offCentre(true);
    ortho.getMatrix(m, true);
    expectMatrix(m, {0.5, 0, 0, 0, 0, 0.5, 0, 0, 0, 0, -0.25, 0, -0.5, 0, -1.5, 1});
    ortho.getInverseMatrix(inverse);
    expectMatrix(inverse, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, -4, 0, 1, 0, -6, 1});
    EyeSpaceFrustum rebuilt;
    rebuilt.setFromOrthographicProjection(m);
    EXPECT_TRUE(rebuilt == ortho);
}

TEST(EyeSpaceFrustum, DepthRangeAndProjectionSwitches) {
    EyeSpaceFrustum kept;
    kept.setDepthRange(2.0, 50.0, true); // 90 degrees at near 2: frame +-2
    EXPECT_NEAR(kept.getHeightAtDepth(2.0), 4.0, 1e-12);
    EyeSpaceFrustum narrowed;
    narrowed.setDepthRange(2.0, 50.0, false); // frame stays +-1
    EXPECT_EQ(narrowed.getHeightAtDepth(2.0), 2.0);
    EyeSpaceFrustum ortho = offCentre(true); // orthographic frames never move
    ortho.setDepthRange(3.0, 4.0, true);
    EXPECT_EQ(ortho.getHeightAtDepth(9.0), 4.0);

    EyeSpaceFrustum f; // at depth 4 the section is 8 x 8
    f.setOrthographic(true, 4.0);
    EXPECT_EQ(f.getHeightAtDepth(1.0), 8.0);
    f.setOrthographic(true, 1.0);  // already orthographic: nothing
    f.setOrthographic(false, 4.0); // back: 8 scaled by near / depth = 2
    EXPECT_TRUE(f == EyeSpaceFrustum());
    f.setDepthRange(1.0 + 0.5e-10, 100.0, false); // equal within 1e-10 on every value
    EXPECT_TRUE(f == EyeSpaceFrustum());
    f.setDepthRange(1.0, 100.0 + 2e-10, false);
    EXPECT_FALSE(f == EyeSpaceFrustum());
}

TEST(EyeSpaceFrustum, DeliberatePlaneAtDepthIgnoresAnOffCentreFrame) {
    // Deliberate: the section is centred on the view axis although the frame spans x -1..3.
    koLinear::ParamPlane plane;
    offCentre(false).getPlaneAtDepth(4.0, plane); // h = 4 * 4 / 2 = 8, w = 8 * 1
    EXPECT_EQ(plane, koLinear::ParamPlane({-4, -4, -4}, {0, 0, 1}, {8, 0, 0}, {0, 8, 0}));
    offCentre(true).getPlaneAtDepth(7.0, plane);
    EXPECT_EQ(plane.origin, koLinear::Point(-2.0, -2.0, -7.0));
}

} // namespace
} // namespace koGeom
