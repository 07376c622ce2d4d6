#include "geom/spatial/Sphere.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

TEST(Sphere, KeepsCentreAndRadiusAsGivenAndCopiesByValue) {
    // A negative radius is kept, not clamped or made absolute.
    Sphere sphere({1.0, 2.0, 3.0}, -4.0);
    const Sphere copy = sphere;
    sphere.setPoint({-1.0, 0.0, 0.5});
    sphere.setRadius(0.0);
    EXPECT_EQ(copy.getPoint(), koLinear::Point(1.0, 2.0, 3.0));
    EXPECT_EQ(copy.getRadius(), -4.0);
    EXPECT_EQ(sphere.getPoint(), koLinear::Point(-1.0, 0.0, 0.5));
    EXPECT_EQ(sphere.getRadius(), 0.0);
}

} // namespace
} // namespace koGeom
