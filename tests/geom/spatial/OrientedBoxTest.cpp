#include "geom/spatial/OrientedBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <tuple>

namespace koGeom {
namespace {

using V = koLinear::Vector;
const koLinear::Normal x = koLinear::Normal::unitX(), y = koLinear::Normal::unitY(),
                       z = koLinear::Normal::unitZ();
const double h = std::sqrt(0.5);

TEST(OrientedBox, DeliberateExtentTakesTheOriginAndItsNeighboursOnly) {
    const OrientedBox unit(koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    EXPECT_EQ(unit.axisAlignedExtent(), koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    // Deliberate: turned 45 degrees about z, the corner origin + a0 + a1 = (0, 1.414, 0) is
    // left out, so the extent reaches y = 0.707 only.
    const OrientedBox turned({0, 0, 0}, V(h, h, 0), V(-h, h, 0), V(0, 0, 1));
    EXPECT_TRUE(
        equivalent(turned.axisAlignedExtent(), koLinear::Range3d({-h, 0, 0}, {h, h, 1}), 1e-15));
}

TEST(OrientedBox, GrowingAndBounds) {
    OrientedBox box(koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    box.enlarge(2.0);
    EXPECT_TRUE(box.origin() == koLinear::Point(-1, -1, -1) && box.length(2) == 3.0);
    box.set({0, 0, 0}, x, y, z, 1, 4, 0);
    box.makeAtLeast(2.0); // x and z grow about their middles, y stays
    EXPECT_TRUE(box.mid() == koLinear::Point(0.5, 2, 0) && box.length(1) == 4.0);
    box.setUnbounded();
    EXPECT_FALSE(box.isBounded());
    box.set(koLinear::Point(1, 2, 3));
    EXPECT_TRUE(box.isBounded());
}

TEST(OrientedBox, MidPlanesPickTheAxisMostAlongTheDirection) {
    const OrientedBox box({1, 1, 1}, V(2, 0, 0), V(0, 4, 0), V(0, 0, 6));
    // (direction, normal axis, u axis, v axis); ties: axis0 loses to either other axis, axis2
    // loses to axis1.
    const std::tuple<V, int, int, int> cases[] = {{{1, 1, 0}, 1, 0, 2},
                                                  {{0, 1, 1}, 1, 0, 2},
                                                  {{0, 0, -3}, 2, 0, 1},
                                                  {{1, 0, 1}, 2, 0, 1},
                                                  {{2, 1, 1}, 0, 2, 1}};
    for (const auto& [d, n, u, v] : cases) {
        const OrientedPlane plane = box.dominantMidPlane(d);
        EXPECT_TRUE(plane.normal() == box.axis(n) && plane.axisU() == box.axis(u) &&
                    plane.axisV() == box.axis(v) && plane.lengthU() == box.length(u) &&
                    plane.origin() == box.origin() + box.axis(n) * (box.length(n) / 2))
            << d.x << " " << d.y << " " << d.z;
    }
    EXPECT_TRUE(box.uvMidplane().origin() == koLinear::Point(2, 1, 1) &&
                box.uvMidplane().axisU() == z);
    EXPECT_EQ(box.frame(), koLinear::AffineMatrix(y, z, x, {1, 1, 1}));
}

TEST(OrientedBox, TransformMovesEdgesAndThePlaneNormal) {
    OrientedBox box({0, 0, 0}, V(1, 0, 0), V(0, 2, 0), V(0, 0, 3));
    box.transform(koLinear::AffineMatrix::makeScale(2, 1, 1) *
                  koLinear::AffineMatrix::makeRotation(z, std::numbers::pi / 2));
    EXPECT_TRUE(equivalent(box.axis(0), y, 1e-15)); // x doubled, then turned onto y
    EXPECT_EQ(box.length(0), 2.0);

    // A shear: the plane's normal follows the normal matrix, not the edges.
    OrientedPlane plane({0, 0, 0}, z, x, y, 1, 1);
    plane.transform(koLinear::AffineMatrix({1, 0, 1}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}));
    const V sheared = V(-1, 0, 1) / std::sqrt(2.0);
    EXPECT_TRUE(equivalent(plane.normal(), sheared, 1e-15));
    EXPECT_NEAR(plane.lengthU(), std::sqrt(2.0), 1e-15);
    plane.transform(koLinear::AffineMatrix(0.0)); // singular: the normal stays
    EXPECT_TRUE(equivalent(plane.normal(), sheared, 1e-15));

    const koLinear::ParamPlane grown = OrientedPlane({0, 0, 0}, z, x, y, 1, 3).asParamPlane(2.0);
    EXPECT_EQ(grown, koLinear::ParamPlane({-0.5, 0, 0}, z, {2, 0, 0}, {0, 3, 0}));
}

TEST(OrientedBox, IntersectCoversTheShadowOfTheRange) {
    const koLinear::Range3d cube({0, 0, 0}, {1, 1, 1});
    // u = x, v = x cross z = -y, w = z; v-interval [-1, 0]: corner (0, 1, 0.5).
    const OrientedBox flat = intersect(cube, koLinear::Plane({0, 0, 0.5}, z));
    EXPECT_EQ(flat.frame(), koLinear::AffineMatrix(-y, z, x, {0, 1, 0.5})); // axes 1, 2, 0
    EXPECT_TRUE(flat.length(0) == 1 && flat.length(1) == 1 && flat.length(2) == 0);

    // Tilted planes: the box lies in the plane, and every corner of the range projects into it.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
    for (int trial = 0; trial < 20; ++trial) {
        const koLinear::Plane plane({coordinate(random), coordinate(random), coordinate(random)},
                                    koLinear::Normal(V(coordinate(random), coordinate(random), 1)));
        const OrientedBox box = intersect(cube, plane);
        EXPECT_NEAR(box.axis(0).z, 0.0, 1e-12); // along the plane's trace on z = 0
        EXPECT_NEAR(plane.signedDistance(box.origin()), 0.0, 1e-12);
        for (int k = 0; k < 8; ++k) {
            for (int a = 0; a < 2; ++a) {
                const double t = dot(cube.corner(k) - box.origin(), box.axis(a));
                EXPECT_TRUE(t >= -1e-12 && t <= box.length(a) + 1e-12) << k << " " << a;
            }
        }
    }
}

} // namespace
} // namespace koGeom
