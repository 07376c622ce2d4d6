#include "tessar/linear/AffineMatrixFlt.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

TEST(AffineMatrixFlt, TransformsInFloatLikeTheDoubleMatrix) {
    // Rows (0, 1, 0), (-1, 0, 0), (0, 0, 2), translation (10, 20, 30), as in the double test:
    // (1, 2, 3) goes to (8, 21, 36), the vector (1, 2, 3) to (-2, 1, 6).
    const AffineMatrixFlt m({0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {10, 20, 30});
    EXPECT_EQ(PointFlt(1, 2, 3) * m, PointFlt(8, 21, 36));
    EXPECT_EQ(VectorFlt(1, 2, 3) * m, VectorFlt(-2, 1, 6));
    EXPECT_EQ(m.determinant(), 2.0f);

    AffineMatrixFlt moved = m;
    moved.translate({1, 0, 0});
    EXPECT_EQ(PointFlt(-1, 0, 0) * moved, PointFlt(10, 20, 30));
    EXPECT_EQ(PointFlt() * (m * moved), PointFlt(10, 20, 30) * moved);

    AffineMatrixFlt inverse;
    ASSERT_TRUE(m.inverse(inverse));
    EXPECT_EQ(inverse, AffineMatrixFlt({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5f}, {-20, 10, -15}));
    AffineMatrixFlt normals;
    ASSERT_TRUE(m.normalMatrix(normals));
    EXPECT_EQ(normals, AffineMatrixFlt({0, 1, 0}, {-1, 0, 0}, {0, 0, 0.5f}, {}));

    const AffineMatrixFlt flat({1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {});
    EXPECT_FALSE(flat.inverse(inverse));
    EXPECT_EQ(inverse(2, 2), 0.5f);
    EXPECT_EQ(flat.inverse(), AffineMatrixFlt());
}

TEST(AffineMatrixFlt, ConversionsRoundEachElement) {
    const AffineMatrix rotation = AffineMatrix::makeRotation({1, 2, 3}, 0.3);
    const AffineMatrixFlt narrow(rotation);
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 3; ++c) {
            EXPECT_EQ(narrow(r, c), static_cast<float>(rotation(r, c)));
        }
    }
    EXPECT_TRUE(near(AffineMatrix(narrow), rotation, 1e-7));
    AffineMatrixFlt shifted = narrow;
    shifted(3, 0) += 0.5f;
    EXPECT_FALSE(equivalent(narrow, shifted, 0.5f));
    EXPECT_TRUE(equivalent(narrow, shifted, 0.75f));
    static_assert(!std::is_convertible_v<AffineMatrix, AffineMatrixFlt>);
    static_assert(!std::is_convertible_v<AffineMatrixFlt, AffineMatrix>);
}

} // namespace
} // namespace koLinear
