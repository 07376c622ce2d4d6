#include "tessar/linear/Vector.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tessar/linear/Tolerance.h"

namespace koLinear {
namespace {

TEST(Vector, ArithmeticMatchesHandValues) {
    const Vector a(1, 2, 3);
    const Vector b(4, -5, 6);
    EXPECT_EQ(a - b, Vector(-3, 7, -3));
    EXPECT_EQ(2.0 * a, Vector(2, 4, 6));
    // 1*4 + 2*(-5) + 3*6 = 12.
    EXPECT_EQ(dot(a, b), 12.0);
    // (2*6 - 3*(-5), 3*4 - 1*6, 1*(-5) - 2*4) = (27, 6, -13).
    EXPECT_EQ(cross(a, b), Vector(27, 6, -13));
    EXPECT_EQ(cross(Vector(1, 0, 0), Vector(0, 1, 0)), Vector(0, 0, 1));
    Vector c = a;
    c[1] = 7.0;
    EXPECT_EQ(c, Vector(1, 7, 3));
}

TEST(Vector, NormalizeReturnsOldLength) {
    Vector v(3, 4, 12);
    EXPECT_EQ(v.length2(), 169.0);
    EXPECT_EQ(v.length(), 13.0);
    const Vector unit = v.normalized();
    EXPECT_EQ(v.normalize(), 13.0);
    EXPECT_EQ(v, unit);
    EXPECT_EQ(v, Vector(3.0 / 13.0, 4.0 / 13.0, 12.0 / 13.0));

    Vector zero;
    EXPECT_EQ(zero.normalize(), 0.0);
    EXPECT_EQ(zero, Vector());
}

TEST(Vector, EquivalentIsStrict) {
    // The offset (0.25, 0.5, 0.5) is exact in binary and has length sqrt(0.5625) = 0.75.
    const Vector a(1, 2, 3);
    const Vector b(1.25, 2.5, 3.5);
    EXPECT_FALSE(equivalent(a, b, 0.75));
    EXPECT_TRUE(equivalent(a, b, std::nextafter(0.75, 1.0)));
    EXPECT_FALSE(equivalent(a, a, 0.0));
    EXPECT_TRUE(equivalent(a, a, epsilonTol));
}

TEST(Vector, IsParallelComparesTheSineWithTheTolerance) {
    const Vector x(1, 0, 0);
    EXPECT_TRUE(isParallel(x, Vector(3, 0, 0), parallelTol));
    EXPECT_TRUE(isParallel(x, Vector(-2, 0, 0), parallelTol));
    // For (1, s, 0) the cross product with x is (0, 0, s): the sine is s / |(1, s, 0)|.
    EXPECT_FALSE(isParallel(x, Vector(1, 2e-10, 0), parallelTol));
    EXPECT_TRUE(isParallel(x, Vector(1, 0.5e-10, 0), parallelTol));
    EXPECT_TRUE(isParallel(x, Vector(-1, 0.5e-10, 0), parallelTol));
    // The test does not depend on the lengths.
    EXPECT_TRUE(isParallel(Vector(1e-6, 0, 0), Vector(1e6, 0.5e-4, 0), parallelTol));
    EXPECT_FALSE(isParallel(Vector(1e-6, 0, 0), Vector(1e6, 2e-4, 0), parallelTol));
    EXPECT_FALSE(isParallel(x, Vector(0, 0, 1), parallelTol));
    EXPECT_FALSE(isParallel(x, Vector(), parallelTol));
    EXPECT_FALSE(isParallel(Vector(), Vector(), parallelTol));

    EXPECT_DOUBLE_EQ(angle(x, Vector(0, 5, 0)), std::numbers::pi / 2);
    EXPECT_DOUBLE_EQ(angle(x, Vector(-1, 1, 0)), 3 * std::numbers::pi / 4);
    EXPECT_EQ(angle(x, Vector()), 0.0);
}

} // namespace
} // namespace koLinear
