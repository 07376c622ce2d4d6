#include "geom/view/Frustum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace koGeom {
namespace {

koLinear::Point corner(const Frustum& f, int k) {
    const double* p = f.getPoints() + 3 * k;
    return {p[0], p[1], p[2]};
}

// Every corner on or behind every plane, and each plane through corners it names.
void expectOutwardPlanes(const Frustum& f) {
    for (int s = 0; s < 6; ++s) {
        for (int k = 0; k < 8; ++k) {
            EXPECT_LT(f.getPlanes()[s].signedDistance(corner(f, k)), 1e-9)
                << "corner " << k << " outside plane " << s;
        }
    }
    // The centre of the volume is strictly inside.
    const koLinear::Point mid = combine(f.getNearCenter(), 0.5, f.getFarCenter(), 0.5);
    for (int s = 0; s < 6; ++s) {
        EXPECT_LT(f.getPlanes()[s].signedDistance(mid), -1e-3) << "plane " << s;
    }
}

TEST(Frustum, PerspectiveCornersPlanesAndRay) {
    const Frustum f(-1, 1, -1, 1, 1, 2, true);
    EXPECT_EQ(corner(f, 0), koLinear::Point(1, 1, -1)); // (r, t, -n)
    EXPECT_EQ(corner(f, 2), koLinear::Point(-1, -1, -1));
    EXPECT_EQ(corner(f, 4), koLinear::Point(2, 2, -2)); // scaled by f / n
    const double h = std::sqrt(0.5);
    EXPECT_TRUE(equivalent(f.getPlanes()[0].normal, koLinear::Vector(0, h, h), 1e-12)); // top
    EXPECT_EQ(f.getPlanes()[4].normal, koLinear::Normal(0, 0, 1));                      // near
    EXPECT_EQ(f.getPlanes()[5].normal, koLinear::Normal(0, 0, -1));                     // far
    EXPECT_EQ(f.getRay().origin, koLinear::Point(0, 0, -1));
    EXPECT_EQ(f.getRay().direction, koLinear::Normal(0, 0, -1));
    expectOutwardPlanes(f);
    const Frustum ortho(-1, 3, -2, 2, 1, 5, false);
    EXPECT_EQ(corner(ortho, 5), koLinear::Point(-1, 2, -5)); // corner 1 moved to z = -f
    EXPECT_EQ(ortho.getVector(), koLinear::Vector(0, 0, -4));
    expectOutwardPlanes(ortho);
}

TEST(Frustum, EightPointsAreGivenEdgeByEdge) {
    const Frustum byFrame(-1, 1, -1, 1, 1, 2, true);
    koLinear::Point c[8];
    for (int k = 0; k < 8; ++k) {
        c[k] = corner(byFrame, k);
    }
    const Frustum byPoints(c[0], c[4], c[1], c[5], c[2], c[6], c[3], c[7]);
    for (int k = 0; k < 8; ++k) {
        EXPECT_EQ(corner(byPoints, k), c[k]);
    }
    for (int s = 0; s < 6; ++s) {
        EXPECT_EQ(byPoints.getPlanes()[s], byFrame.getPlanes()[s]);
    }
}

TEST(Frustum, TransformsKeepPlanesOutwardThroughMirrors) {
    const koLinear::AffineMatrix moves[] = {
        koLinear::AffineMatrix::makeScale(-1, 1, 1),
        koLinear::AffineMatrix::makeScale(1, -2, 1),
        koLinear::AffineMatrix::makeRotation({1, 2, 3}, 0.7) *
            koLinear::AffineMatrix::makeTranslation({5, -1, 2}),
    };
    for (const koLinear::AffineMatrix& m : moves) {
        Frustum f(-1, 2, -1, 1, 1, 3, true);
        const koLinear::Point far = f.getFarCenter() * m;
        f.transform(m);
        expectOutwardPlanes(f);
        EXPECT_TRUE(equivalent(f.getFarCenter(), far, 1e-12));
    }
}

TEST(Frustum, CopiesOwnTheirPlanes) {
    Frustum a(-1, 1, -1, 1, 1, 2, true);
    const Frustum b(a);
    Frustum c(-2, 2, -2, 2, 1, 2, false);
    c = a;
    a.transform(koLinear::AffineMatrix::makeTranslation({0, 0, 5}));
    EXPECT_NE(a.getPlanes(), b.getPlanes());
    EXPECT_EQ(b.getPlanes()[4].origin, koLinear::Point(-1, 1, -1));
    EXPECT_EQ(c.getPlanes()[4].origin, koLinear::Point(-1, 1, -1));
    EXPECT_EQ(a.getPlanes()[4].origin, koLinear::Point(-1, 1, 4));
}

} // namespace
} // namespace koGeom
