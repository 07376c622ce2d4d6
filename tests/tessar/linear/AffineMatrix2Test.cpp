#include "tessar/linear/AffineMatrix2.h"

#include <numbers>

#include <gtest/gtest.h>

#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

TEST(AffineMatrix2, TransformsProductsAndInverseByHand) {
    // Rows (2, 0), (1, 3), translation (5, 7).
    const AffineMatrix2 m({2, 0}, {1, 3}, {5, 7});
    // (1, 2) * m = (2, 0) + 2*(1, 3) + (5, 7) = (9, 13); the tuple skips the move: (4, 6).
    EXPECT_EQ(Point2(1, 2) * m, Point2(9, 13));
    EXPECT_EQ(Tuple2(1, 2) * m, Tuple2(4, 6));
    EXPECT_EQ(m.determinant(), 6.0);
    // Inverse of [[2, 0], [1, 3]] is [[1/2, 0], [-1/6, 1/3]]; translation -(5, 7) through it:
    // -(5/2 - 7/6, 7/3) = (-4/3, -7/3).
    AffineMatrix2 inverse;
    ASSERT_TRUE(m.inverse(inverse));
    EXPECT_TRUE(
        near(inverse, AffineMatrix2({0.5, 0}, {-1.0 / 6, 1.0 / 3}, {-4.0 / 3, -7.0 / 3}), 1e-15));
    EXPECT_TRUE(near(Point2(9, 13) * inverse, Point2(1, 2), 1e-14));
    EXPECT_TRUE(near(m * inverse, AffineMatrix2(1.0), 1e-15));

    // A quarter turn counter-clockwise after a move by (1, 0) takes the origin to (0, 1).
    const AffineMatrix2 turn = AffineMatrix2::makeRotation(std::numbers::pi / 2);
    EXPECT_TRUE(
        near(Point2() * (AffineMatrix2::makeTranslation({1, 0}) * turn), Point2(0, 1), 1e-15));
    AffineMatrix2 moved = m;
    moved.translate({-1, 0});
    EXPECT_EQ(Point2(1, 0) * moved, Point2() * m);
    AffineMatrix2 frame;
    frame.setFrame({1, 1}, {0, 1}, {-1, 0});
    EXPECT_EQ(Point2(2, 3) * frame, Point2(-2, 3));

    const AffineMatrix2 flat({1, 2}, {2, 4}, {1, 1});
    inverse = m;
    EXPECT_FALSE(flat.inverse(inverse));
    EXPECT_EQ(inverse, m);
    EXPECT_EQ(flat.inverse(), AffineMatrix2());
    EXPECT_FALSE(equivalent(m, moved, 1.0));
}

} // namespace
} // namespace koLinear
