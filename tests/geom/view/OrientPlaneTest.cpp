#include "geom/view/OrientPlane.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

// A camera at (0, 0, 5) looking at the origin: right +x, up +y, view -z.
Camera frontCamera() {
    Camera camera;
    camera.setWorldToEye({0, 0, 0}, {0, 0, 5}, koLinear::Normal::unitY());
    return camera;
}

// The unit direction (s, 1, 0) / sqrt(2) for s = +1 or -1.
koLinear::Normal diagonal(double s) { return koLinear::Normal(koLinear::Vector(s, 1, 0)); }

TEST(OrientPlane, ReadsLeftToRightBottomToTopAndFacesTheViewer) {
    const koLinear::Normal x = koLinear::Normal::unitX(), y = koLinear::Normal::unitY();
    const koLinear::Normal z = koLinear::Normal::unitZ();
    struct Case {
        OrientedPlane given;
        OrientedPlane expected;
    };
    const Case cases[] = {
        // Already oriented: unchanged.
        {{{0, 0, 0}, z, x, y, 2, 3}, {{0, 0, 0}, z, x, y, 2, 3}},
        // axisU points left: the origin moves to the former right end.
        {{{4, 0, 0}, z, -x, y, 2, 3}, {{2, 0, 0}, z, x, y, 2, 3}},
        // axisU is the vertical one: swapped, then axisV (down) turned up; the normal faced
        // away and is turned.
        {{{0, 0, 0}, -z, -y, x, 3, 2}, {{0, -3, 0}, z, x, y, 2, 3}},
        // A tie keeps the order: both axes lean 45 degrees, up and to the right.
        {{{0, 0, 0}, z, diagonal(1), diagonal(-1), 2, 3},
         {{0, 0, 0}, z, diagonal(1), diagonal(-1), 2, 3}},
    };
    for (const Case& c : cases) {
        OrientedPlane plane = c.given;
        orientPlane(plane, frontCamera());
        EXPECT_EQ(plane.origin(), c.expected.origin());
        EXPECT_EQ(plane.normal(), c.expected.normal());
        EXPECT_EQ(plane.axisU(), c.expected.axisU());
        EXPECT_EQ(plane.axisV(), c.expected.axisV());
        EXPECT_EQ(plane.lengthU(), c.expected.lengthU());
        EXPECT_EQ(plane.lengthV(), c.expected.lengthV());
    }
}

} // namespace
} // namespace koGeom
