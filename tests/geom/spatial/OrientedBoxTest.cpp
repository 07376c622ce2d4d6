#include "geom/spatial/OrientedBox.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

namespace koGeom {
namespace {

const koLinear::Normal x = koLinear::Normal::unitX(), y = koLinear::Normal::unitY(),
                       z = koLinear::Normal::unitZ();

TEST(OrientedBox, DeliberateExtentTakesTheOriginAndItsNeighboursOnly) {
    const OrientedBox unit(koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    EXPECT_EQ(unit.axisAlignedExtent(), koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    EXPECT_EQ(unit.mid(), koLinear::Point(0.5, 0.5, 0.5));
    // Deliberate: turned 45 degrees about z, the corner origin + a0 + a1 = (0, 1.414, 0) is
    // left out, so the extent reaches y = 0.707 only.
    const double h = std::sqrt(0.5);
    const OrientedBox turned({0, 0, 0}, koLinear::Vector(h, h, 0), koLinear::Vector(-h, h, 0),
                             koLinear::Vector(0, 0, 1));
    const koLinear::Range3d extent = turned.axisAlignedExtent();
    EXPECT_TRUE(equivalent(extent, koLinear::Range3d({-h, 0, 0}, {h, h, 1}), 1e-15));
    EXPECT_NEAR(turned.eval(1, 1, 0).y, 2 * h, 1e-15);
}

TEST(OrientedBox, GrowingAndBounds) {
    OrientedBox box(koLinear::Range3d({0, 0, 0}, {1, 1, 1}));
    box.enlarge(2.0);
    EXPECT_EQ(box.origin(), koLinear::Point(-1, -1, -1));
    EXPECT_EQ(box.length(0), 3.0);
    EXPECT_EQ(box.length(2), 3.0);
    box.set({0, 0, 0}, x, y, z, 1, 4, 0);
    box.makeAtLeast(2.0); // x and z grow about their middles, y stays
    EXPECT_EQ(box.origin(), koLinear::Point(-0.5, 0, -1));
    EXPECT_EQ(box.length(0) + box.length(1) + box.length(2), 2.0 + 4.0 + 2.0);
    box.setUnbounded();
    EXPECT_FALSE(box.isBounded());
    box.set(koLinear::Point(1, 2, 3));
    EXPECT_TRUE(box.isBounded());
    EXPECT_EQ(box.length(0) + box.length(1) + box.length(2), 0.0);
}

TEST(OrientedBox, MidPlanesPickTheAxisMostAlongTheDirection) {
    const OrientedBox box({1, 1, 1}, koLinear::Vector(2, 0, 0), koLinear::Vector(0, 4, 0),
                          koLinear::Vector(0, 0, 6));
    struct Case {
        koLinear::Vector d;
        int normal, u, v; // axes of the box
    };
    // Ties: axis0 loses to either other axis, axis2 loses to axis1.
    const Case cases[] = {{{1, 1, 0}, 1, 0, 2},
                          {{0, 1, 1}, 1, 0, 2},
                          {{0, 0, -3}, 2, 0, 1},
                          {{1, 0, 1}, 2, 0, 1},
                          {{2, 1, 1}, 0, 2, 1}};
    for (const Case& c : cases) {
        const OrientedPlane plane = box.dominantMidPlane(c.d);
        EXPECT_EQ(plane.normal(), box.axis(c.normal));
        EXPECT_EQ(plane.axisU(), box.axis(c.u));
        EXPECT_EQ(plane.axisV(), box.axis(c.v));
        EXPECT_EQ(plane.lengthU(), box.length(c.u));
        EXPECT_EQ(plane.origin(), box.origin() + box.axis(c.normal) * (box.length(c.normal) / 2));
    }
    const OrientedPlane uv = box.uvMidplane();
    EXPECT_EQ(uv.origin(), koLinear::Point(2, 1, 1));
    EXPECT_EQ(uv.axisU(), z);
    EXPECT_EQ(uv.lengthV(), 4.0);
    EXPECT_EQ(box.frame(), koLinear::AffineMatrix(y, z, x, {1, 1, 1}));
}

TEST(OrientedBox, TransformMovesEdgesAndThePlaneNormal) {
    OrientedBox box({0, 0, 0}, koLinear::Vector(1, 0, 0), koLinear::Vector(0, 2, 0),
                    koLinear::Vector(0, 0, 3));
    const koLinear::AffineMatrix m = koLinear::AffineMatrix::makeScale(2, 1, 1) *
                                     koLinear::AffineMatrix::makeRotation(z, std::numbers::pi / 2);
    box.transform(m); // x doubled, then turned onto y
    EXPECT_TRUE(equivalent(box.axis(0), y, 1e-15));
    EXPECT_EQ(box.length(0), 2.0);
    EXPECT_TRUE(equivalent(box.axis(1), -x, 1e-15));
    EXPECT_EQ(box.length(1), 2.0);

    // A shear: the plane's normal follows the normal matrix, not the edges.
    OrientedPlane plane({0, 0, 0}, z, x, y, 1, 1);
    const koLinear::AffineMatrix shear({1, 0, 1}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0});
    plane.transform(shear);
    EXPECT_TRUE(equivalent(plane.normal(), koLinear::Vector(-1, 0, 1) / std::sqrt(2.0), 1e-15));
    EXPECT_NEAR(plane.lengthU(), std::sqrt(2.0), 1e-15);
    plane.transform(koLinear::AffineMatrix(0.0)); // singular: the normal stays
    EXPECT_TRUE(equivalent(plane.normal(), koLinear::Vector(-1, 0, 1) / std::sqrt(2.0), 1e-15));
    EXPECT_EQ(plane.lengthU(), 0.0);

    const OrientedPlane small({0, 0, 0}, z, x, y, 1, 3);
    const koLinear::ParamPlane grown = small.asParamPlane(2.0);
    EXPECT_EQ(grown.origin, koLinear::Point(-0.5, 0, 0));
    EXPECT_EQ(grown.uEdge, koLinear::Vector(2, 0, 0));
    EXPECT_EQ(grown.vEdge, koLinear::Vector(0, 3, 0));
    EXPECT_EQ(OrientedBox(grown).length(2), 3.0);
}

TEST(OrientedBox, IntersectCoversTheShadowOfTheRange) {
    const koLinear::Range3d cube({0, 0, 0}, {1, 1, 1});
    const OrientedBox flat = intersect(cube, koLinear::Plane({0, 0, 0.5}, z));
    // u = x, v = x cross z = -y, w = z; v-interval [-1, 0]: corner (0, 1, 0.5).
    EXPECT_EQ(flat.axis(0), x);
    EXPECT_EQ(flat.axis(1), -y);
    EXPECT_EQ(flat.axis(2), z);
    EXPECT_EQ(flat.origin(), koLinear::Point(0, 1, 0.5));
    EXPECT_EQ(flat.length(0), 1.0);
    EXPECT_EQ(flat.length(1), 1.0);
    EXPECT_EQ(flat.length(2), 0.0);

    // Tilted planes: every corner of the range projects into the rectangle.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
    for (int trial = 0; trial < 20; ++trial) {
        const koLinear::Plane plane(
            {coordinate(random), coordinate(random), coordinate(random)},
            koLinear::Normal(koLinear::Vector(coordinate(random), coordinate(random), 1.0)));
        const OrientedBox box = intersect(cube, plane);
        EXPECT_NEAR(box.axis(0).z, 0.0, 1e-12); // along the plane's trace on z = 0
        EXPECT_NEAR(plane.signedDistance(box.origin()), 0.0, 1e-12);
        for (int k = 0; k < 8; ++k) {
            const koLinear::Vector d = cube.corner(k) - box.origin();
            for (int a = 0; a < 2; ++a) {
                const double t = dot(d, box.axis(a));
                EXPECT_GE(t, -1e-12);
                EXPECT_LE(t, box.length(a) + 1e-12);
            }
        }
    }
}

} // namespace
} // namespace koGeom
