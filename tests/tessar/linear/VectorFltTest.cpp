#include "tessar/linear/VectorFlt.h"

#include <cmath>
#include <type_traits>

#include <gtest/gtest.h>

#include "tessar/linear/Normal.h"

namespace koLinear {
namespace {

TEST(VectorFlt, LengthAndProductsInFloat) {
    VectorFlt v(3, 4, 12);
    static_assert(std::is_same_v<decltype(v.length()), float>);
    EXPECT_EQ(v.normalize(), 13.0f);
    EXPECT_EQ(v, VectorFlt(3.0f / 13.0f, 4.0f / 13.0f, 12.0f / 13.0f));
    EXPECT_EQ(dot(VectorFlt(1, 2, 3), VectorFlt(4, -5, 6)), 12.0f);
    EXPECT_EQ(cross(VectorFlt(1, 2, 3), VectorFlt(4, -5, 6)), VectorFlt(27, 6, -13));
}

TEST(VectorFlt, ConversionsRoundAndWiden) {
    // A normal narrows through its vector form; 1/3 rounds to the nearest float.
    const VectorFlt fromNormal(Normal(1.0 / 3.0, 0, 0));
    EXPECT_EQ(fromNormal.x, 1.0f / 3.0f);
    EXPECT_EQ(Vector(fromNormal).x, static_cast<double>(1.0f / 3.0f));
    // Among the denormals, multiples of 2^-149: 0.75 of a step rounds up to one step, 0.25
    // rounds down to 0, and 1.5 steps, a tie, rounds to the even count, 2.
    const double step = std::ldexp(1.0, -149);
    const VectorFlt tiny(Vector(0.75 * step, 0.25 * step, 1.5 * step));
    EXPECT_EQ(tiny.x, std::ldexp(1.0f, -149));
    EXPECT_EQ(tiny.y, 0.0f);
    EXPECT_EQ(tiny.z, std::ldexp(1.0f, -148));
}

} // namespace
} // namespace koLinear
