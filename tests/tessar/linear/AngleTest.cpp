#include "tessar/linear/Angle.h"

#include <numbers>

#include <gtest/gtest.h>

#include "tessar/linear/Tolerance.h"

namespace koLinear {
namespace {

TEST(Angle, DegreesAndRadians) {
    EXPECT_DOUBLE_EQ(toRadians(180.0), std::numbers::pi);
    EXPECT_DOUBLE_EQ(toRadians(-90.0), -std::numbers::pi / 2);
    EXPECT_DOUBLE_EQ(toDegrees(std::numbers::pi / 4), 45.0);
    EXPECT_DOUBLE_EQ(toDegrees(toRadians(55.0)), 55.0);
    // The angular tolerance in radians: 1e-6 * pi / 180.
    EXPECT_DOUBLE_EQ(toRadians(degreeTol), 1.7453292519943295e-8);
}

} // namespace
} // namespace koLinear
