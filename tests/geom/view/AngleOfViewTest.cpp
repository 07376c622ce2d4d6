#include "geom/view/AngleOfView.h"

#include <gtest/gtest.h>

#include <numbers>

#include "geom/view/EyeSpaceFrustum.h"
#include "tests/geom/view/ExpectMatrix.h"

namespace koGeom {
namespace {

TEST(AngleAspect, MatrixFrustumAndEquality) {
    AngleAspect lens; // 55 degrees comes back from its own matrix
    koLinear::ProjMatrix m, fromFrustum;
    lens.getMatrix(m, false);
    EXPECT_NEAR(getVerticalAngleRadians(m), koLinear::toRadians(55.0), 1e-15);

    // 90 degrees, aspect 2: c = 1 / tan(45) = 1, m00 = c / 2; near 1, far 3: m22 = 4 / -2,
    // m32 = 6 / -2.
    lens.setAngleOfViewRad(std::numbers::pi / 2);
    lens.setAspectRatio(2.0);
    lens.setDepthRange(1.0, 3.0);
    lens.getMatrix(m, false);
    koGeomTest::expectMatrix(m, {0.5, 0, 0, 0, 0, 1, 0, 0, 0, 0, -2, -1, 0, 0, -3, 0});
    EXPECT_DOUBLE_EQ(getAspectRatio(m), 2.0);

    EyeSpaceFrustum frustum; // the lens's frustum has the same (open) matrix, and is perspective
    frustum.setOrthographic(true);
    lens.getEyeSpaceFrustum(frustum);
    frustum.getMatrix(fromFrustum, true);
    lens.getMatrix(m, true);
    EXPECT_TRUE(koLinear::equivalent(fromFrustum, m, 1e-12));
    AngleAspect back;
    frustum.getAngleAspect(back);
    EXPECT_TRUE(back == lens);
    back.setAngleOfViewRad(lens.getAngleOfViewRad() + koLinear::toRadians(0.5e-6));
    EXPECT_TRUE(back == lens);
    back.setAngleOfViewRad(lens.getAngleOfViewRad() + koLinear::toRadians(2e-6));
    EXPECT_FALSE(back == lens);
}

} // namespace
} // namespace koGeom
