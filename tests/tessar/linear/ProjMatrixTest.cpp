#include "tessar/linear/ProjMatrix.h"

#include <array>
#include <random>

#include <gtest/gtest.h>

#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

// The perspective projection of the frame [-1, 1]² at near distance 1 and far distance 3,
// eye looking down -z: m00 = m11 = 2n / (r - l) = 1, m22 = (n + f) / (n - f) = -2,
// m23 = -1, m32 = 2nf / (n - f) = -3.
// clang-format off
const ProjMatrix perspective(std::array<double, 16>{1, 0,  0,  0,
                                                    0, 1,  0,  0,
                                                    0, 0, -2, -1,
                                                    0, 0, -3,  0});
// clang-format on

TEST(ProjMatrix, PerspectiveAndItsInverseByHand) {
    // (0, 0, -1, 1): z' = -1*-2 + 1*-3 = -1, w' = -1*-1 = 1, so depth -1 on the near plane;
    // (1, -1, -3, 1): x' = 1, y' = -1, z' = 6 - 3 = 3, w' = 3: depth +1 on the far plane.
    EXPECT_EQ(HPoint(Point(0, 0, -1)) * perspective, HPoint(0, 0, -1, 1));
    EXPECT_EQ(HPoint(Point(1, -1, -3)) * perspective, HPoint(1, -1, 3, 3));
    // det = 1 * 1 * ((-2) * 0 - (-1) * (-3)) = -3; the elimination exchanges rows 2 and 3 on
    // the way, so the sign of the exchange counts.
    EXPECT_DOUBLE_EQ(perspective.determinant(), -3.0);
}

TEST(ProjMatrix, InverseRoundTripOnRandomMatrices) {
    std::mt19937 random(77);
    std::uniform_real_distribution<double> small(-0.3, 0.3);
    for (int i = 0; i < 200; ++i) {
        // The identity plus a perturbation of at most 0.3 per element, rows permuted so
        // that the elimination has to pivot.
        ProjMatrix m;
        for (int k = 0; k < 16; ++k) {
            m.data()[k] += small(random);
        }
        const HPoint r0 = m.row(0);
        m.setRow(0, m.row(i % 4));
        m.setRow(i % 4, r0);
        ProjMatrix inverse;
        ASSERT_TRUE(m.inverse(inverse));
        EXPECT_TRUE(near(m * inverse, ProjMatrix(), 1e-13));
    }
}

TEST(ProjMatrix, AffineEmbeddingAndSingularity) {
    const AffineMatrix a({0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {10, 20, 30});
    const ProjMatrix pa(a);
    EXPECT_EQ(pa.transposed()(0, 3), 10.0);
    EXPECT_EQ((HPoint(Point(1, 2, 3)) * pa).dehomogenize(), Point(1, 2, 3) * a);
    const AffineMatrix b = AffineMatrix::makeRotation({1, 1, 0}, 0.5);
    EXPECT_TRUE(near(pa * ProjMatrix(b), ProjMatrix(a * b), 1e-14));

    ProjMatrix flat = pa;
    flat.setRow(2, HPoint(0, 0, 0, 0));
    ProjMatrix out = perspective;
    EXPECT_FALSE(flat.inverse(out));
    EXPECT_EQ(out, perspective);
    EXPECT_EQ(flat.inverse(), ProjMatrix());
    EXPECT_EQ(flat.determinant(), 0.0);
}

} // namespace
} // namespace koLinear
