#include "geom/spatial/Sphere.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

TEST(Sphere, KeepsANegativeRadiusAsGiven) {
    // Not clamped or made absolute.
    const Sphere sphere({1.0, 2.0, 3.0}, -4.0);
    EXPECT_EQ(sphere.getPoint(), koLinear::Point(1.0, 2.0, 3.0));
    EXPECT_EQ(sphere.getRadius(), -4.0);
}

} // namespace
} // namespace koGeom
