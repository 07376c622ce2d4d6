#include "geom/view/OrientPlane.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

TEST(OrientPlane, ReadsLeftToRightBottomToTopAndFacesTheViewer) {
    Camera camera; // at (0, 0, 5) looking at the origin: right +x, up +y, view -z
    camera.setWorldToEye({0, 0, 0}, {0, 0, 5}, koLinear::Normal::unitY());
    const koLinear::Normal x = koLinear::Normal::unitX(), y = koLinear::Normal::unitY(),
                           z = koLinear::Normal::unitZ();
    const koLinear::Normal up(koLinear::Vector(1, 1, 0)), left(koLinear::Vector(-1, 1, 0));
    const OrientedPlane cases[][2] = {
        {{{0, 0, 0}, z, x, y, 2, 3}, {{0, 0, 0}, z, x, y, 2, 3}}, // already oriented
        // axisU points left: the origin moves to the former right end.
        {{{4, 0, 0}, z, -x, y, 2, 3}, {{2, 0, 0}, z, x, y, 2, 3}},
        // axisU is the vertical one: swapped, then axisV (down) turned up, and the normal.
        {{{0, 0, 0}, -z, -y, x, 3, 2}, {{0, -3, 0}, z, x, y, 2, 3}},
        // A tie keeps the order: both axes lean 45 degrees, up and to the right.
        {{{0, 0, 0}, z, up, left, 2, 3}, {{0, 0, 0}, z, up, left, 2, 3}},
    };
    for (const auto& [given, expected] : cases) {
        OrientedPlane plane = given;
        orientPlane(plane, camera);
        EXPECT_EQ(plane.origin(), expected.origin());
        EXPECT_EQ(plane.normal(), expected.normal());
        EXPECT_EQ(plane.axisU(), expected.axisU());
        EXPECT_EQ(plane.axisV(), expected.axisV());
        EXPECT_EQ(plane.lengthU(), expected.lengthU());
    }
}

} // namespace
} // namespace koGeom
