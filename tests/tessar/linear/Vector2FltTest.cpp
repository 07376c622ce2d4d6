#include "tessar/linear/Vector2Flt.h"

#include <gtest/gtest.h>

namespace koLinear {
namespace {

TEST(Vector2Flt, ConversionRoundsAndLengthIsFloat) {
    const Vector2Flt v(Tuple2(0.1, -1.0 / 3.0));
    EXPECT_EQ(v.x, 0.1f);
    EXPECT_EQ(v.y, -1.0f / 3.0f);
    EXPECT_EQ(Tuple2(v).x, static_cast<double>(0.1f));
    EXPECT_EQ(Vector2Flt(3, 4).length(), 5.0f);
    EXPECT_EQ(cross(Vector2Flt(3, 4), Vector2Flt(-1, 2)), 10.0f);
}

} // namespace
} // namespace koLinear
