#include "tessar/linear/Normal.h"

#include <type_traits>

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Normal, AxesReversalAndConversions) {
    EXPECT_EQ(Normal::unitX(), Normal(1, 0, 0));
    EXPECT_EQ(Normal::unitY(), Normal(0, 1, 0));
    EXPECT_EQ(Normal::unitZ(), Normal(0, 0, 1));
    Normal n = Normal::unitY();
    n.reverse();
    EXPECT_EQ(n, Normal(0, -1, 0));
    EXPECT_EQ(-n, Normal::unitY());

    // From a vector the direction is normalised: (0, 3, 4) / 5.
    const Normal fromVector(Vector(0, 3, 4));
    EXPECT_DOUBLE_EQ(fromVector.y, 0.6);
    EXPECT_DOUBLE_EQ(fromVector.z, 0.8);
    EXPECT_EQ(Normal(Vector()), Normal());
    // A normal takes part in vector arithmetic and gives vectors.
    EXPECT_EQ(Normal::unitZ() * 2.0, Vector(0, 0, 2));
    EXPECT_EQ(cross(Normal::unitX(), Normal::unitY()), Vector(0, 0, 1));
    static_assert(std::is_convertible_v<Normal, Vector>);
    static_assert(!std::is_convertible_v<Vector, Normal>);
}

} // namespace
} // namespace koLinear
