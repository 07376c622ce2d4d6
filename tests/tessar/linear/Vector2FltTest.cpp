#include "tessar/linear/Vector2Flt.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tessar/linear/Tuple2.h"

namespace koLinear {
namespace {

TEST(Vector2Flt, ConversionRoundsAndArithmeticIsFloat) {
    const Vector2Flt v(Tuple2(0.1, -1.0 / 3.0));
    EXPECT_EQ(v.x, 0.1f);
    EXPECT_EQ(v.y, -1.0f / 3.0f);
    EXPECT_EQ(Tuple2(Vector2Flt(0.5f, 2)), Tuple2(0.5, 2));

    Vector2Flt a(3, 4);
    EXPECT_EQ(a.length(), 5.0f);
    EXPECT_EQ(dot(a, Vector2Flt(-1, 2)), 5.0f);
    EXPECT_EQ(cross(a, Vector2Flt(-1, 2)), 10.0f);
    EXPECT_EQ(a.normalize(), 5.0f);
    EXPECT_EQ(a, Vector2Flt(0.6f, 0.8f));
    EXPECT_EQ(-Vector2Flt(3, 4) * 2.0f, Vector2Flt(-6, -8));
}

}  // namespace
}  // namespace koLinear
