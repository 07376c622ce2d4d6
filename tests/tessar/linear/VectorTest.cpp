#include "tessar/linear/Vector.h"

#include <cmath>
#include <numbers>
#include <type_traits>

#include <gtest/gtest.h>

#include "tessar/linear/Angle.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/VectorFlt.h"

namespace koLinear {
namespace {

TEST(Vector, CrossAndNormalizeByHand) {
    // (2*6 - 3*(-5), 3*4 - 1*6, 1*(-5) - 2*4) = (27, 6, -13).
    EXPECT_EQ(cross(Vector(1, 2, 3), Vector(4, -5, 6)), Vector(27, 6, -13));
    EXPECT_EQ(cross(VectorFlt(1, 2, 3), VectorFlt(4, -5, 6)), VectorFlt(27, 6, -13));
    // normalize() returns the old length (a zero vector stays zero: see the Normal test).
    Vector v(3, 4, 12);
    EXPECT_EQ(v.normalize(), 13.0);
    EXPECT_EQ(v, Vector(3.0 / 13.0, 4.0 / 13.0, 12.0 / 13.0));
}

TEST(Vector, EquivalentParallelAndAngle) {
    // The offset (0.25, 0.5, 0.5) is exact in binary and has length sqrt(0.5625) = 0.75.
    const Vector a(1, 2, 3);
    EXPECT_FALSE(equivalent(a, Vector(1.25, 2.5, 3.5), 0.75));
    EXPECT_TRUE(equivalent(a, Vector(1.25, 2.5, 3.5), std::nextafter(0.75, 1.0)));
    // For (1, s, 0) the cross product with x is (0, 0, s): the sine is s / |(1, s, 0)|. It is
    // the sine that counts, not the size of the cross product, and a zero vector is parallel
    // to nothing.
    const Vector x(1, 0, 0);
    EXPECT_TRUE(isParallel(x, Vector(-2, 0, 0), parallelTol));
    EXPECT_FALSE(isParallel(x, Vector(1, 2e-10, 0), parallelTol));
    EXPECT_TRUE(isParallel(x, Vector(-1, 0.5e-10, 0), parallelTol));
    EXPECT_TRUE(isParallel(Vector(1e3, 0, 0), Vector(1e3, 5e-8, 0), parallelTol));
    EXPECT_FALSE(isParallel(Vector(1e-3, 0, 0), Vector(1e-3, 2e-13, 0), parallelTol));
    EXPECT_FALSE(isParallel(x, Vector(), parallelTol));
    EXPECT_DOUBLE_EQ(angle(x, Vector(-1, 1, 0)), 3 * std::numbers::pi / 4);
    EXPECT_EQ(angle(x, Vector()), 0.0);
}

TEST(VectorFlt, ArithmeticInFloatAndRoundingConversions) {
    // In float, 1 + 2^-24 rounds to 1 after each addition; summed in double and rounded once,
    // the length would come out as 1 + 2^-23.
    const float tinyY = std::ldexp(1.0f, -12);
    EXPECT_EQ(VectorFlt(1, tinyY, tinyY).length2(), 1.0f);
    // A normal narrows through its vector form. Among the denormals, multiples of 2^-149:
    // 0.75 of a step rounds up to one step, 0.25 rounds down to 0, and 1.5 steps, a tie,
    // rounds to the even count, 2.
    EXPECT_EQ(VectorFlt(Normal(1.0 / 3.0, 0, 0)).x, 1.0f / 3.0f);
    const double step = std::ldexp(1.0, -149);
    const VectorFlt tiny(Vector(0.75 * step, 0.25 * step, 1.5 * step));
    EXPECT_EQ(tiny, VectorFlt(std::ldexp(1.0f, -149), 0.0f, std::ldexp(1.0f, -148)));
}

TEST(Normal, ReversalAndConversions) {
    Normal n = Normal::unitY();
    n.reverse();
    EXPECT_EQ(n, Normal(0, -1, 0));
    // From a vector the direction is normalised: (0, 3, 4) / 5; zero stays zero, not NaN.
    EXPECT_EQ(Normal(Vector(0, 3, 4)), Normal(0, 0.6, 0.8));
    EXPECT_EQ(Normal(Vector()), Normal());
    static_assert(std::is_convertible_v<Normal, Vector> && !std::is_convertible_v<Vector, Normal>);
    EXPECT_DOUBLE_EQ(toDegrees(std::numbers::pi / 4), 45.0);
}

} // namespace
} // namespace koLinear
