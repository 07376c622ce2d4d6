#include "tessar/linear/AffineMatrix.h"

#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "tessar/linear/AffineMatrix2.h"
#include "tessar/linear/AffineMatrixFlt.h"
#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

// Rows (0, 1, 0), (-1, 0, 0), (0, 0, 2) and translation (10, 20, 30): a quarter turn about
// z, a stretch of z, then a move.
const AffineMatrix handMatrix({0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {10, 20, 30});

TEST(AffineMatrix, TransformsAndProductsByHand) {
    // (1, 2, 3) * m = 1*(0, 1, 0) + 2*(-1, 0, 0) + 3*(0, 0, 2) + (10, 20, 30) = (8, 21, 36);
    // a vector skips the translation: (-2, 1, 6).
    EXPECT_EQ(Point(1, 2, 3) * handMatrix, Point(8, 21, 36));
    EXPECT_EQ(Vector(1, 2, 3) * handMatrix, Vector(-2, 1, 6));
    // Move then turn: the origin goes to (1, 0, 0), then to (0, 1, 0); the other order
    // leaves it at (1, 0, 0).
    const AffineMatrix move = AffineMatrix::makeTranslation({1, 0, 0});
    const AffineMatrix turn = AffineMatrix::makeRotation({0, 0, 1}, std::numbers::pi / 2);
    EXPECT_TRUE(near(Point() * (move * turn), Point(0, 1, 0), 1e-15));
    EXPECT_TRUE(near(Point() * (turn * move), Point(1, 0, 0), 1e-15));
    // About a non-unit x axis, y turns to z; a third of a turn about (1, 1, 1) takes x to y.
    const AffineMatrix aboutX = AffineMatrix::makeRotation({2, 0, 0}, std::numbers::pi / 2);
    EXPECT_TRUE(near(Vector(0, 1, 0) * aboutX, Vector(0, 0, 1), 1e-15));
    const AffineMatrix cycle = AffineMatrix::makeRotation({1, 1, 1}, 2 * std::numbers::pi / 3);
    EXPECT_TRUE(near(Vector(1, 0, 0) * cycle, Vector(0, 1, 0), 1e-15));
    EXPECT_EQ(AffineMatrix::makeRotation(Vector(), 1.0), AffineMatrix(1.0));
}

TEST(AffineMatrix, DeterminantAndInverseByHand) {
    EXPECT_EQ(handMatrix.determinant(), 2.0);
    // The inverse of the quarter turn is its transpose, z is halved, and the translation is
    // -(10, 20, 30) taken through that: -(20, -10, 15). Inverting in place gives the same.
    const AffineMatrix expected({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5}, {-20, 10, -15});
    EXPECT_EQ(handMatrix.inverse(), expected);
    AffineMatrix inPlace = handMatrix;
    ASSERT_TRUE(inPlace.inverse(inPlace));
    EXPECT_EQ(inPlace, expected);
}

TEST(AffineMatrix, InverseTimesMatrixIsIdentityOnRandomMatrices) {
    std::mt19937 random(20240521);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_real_distribution<double> scale(0.5, 2.0);
    for (int i = 0; i < 200; ++i) {
        // A rotation, an unequal scale and a move: condition number at most 4.
        const AffineMatrix m =
            AffineMatrix::makeRotation({unit(random), unit(random), unit(random)},
                                       4.0 * unit(random)) *
            AffineMatrix::makeScale(scale(random), scale(random), scale(random)) *
            AffineMatrix::makeTranslation({100 * unit(random), 100 * unit(random), 0});
        AffineMatrix inverse;
        ASSERT_TRUE(m.inverse(inverse));
        EXPECT_TRUE(near(m * inverse, AffineMatrix(1.0), 1e-13));
    }
}

TEST(AffineMatrix, SingularMatricesAreNotInverted) {
    const AffineMatrix untouched({1, 2, 3}, {4, 5, 6}, {7, 8, 10}, {1, 1, 1});
    AffineMatrix out = untouched;
    // Row 1 is twice row 0.
    const AffineMatrix dependent({1, 2, 3}, {2, 4, 6}, {0, 0, 1}, {5, 5, 5});
    EXPECT_FALSE(dependent.inverse(out));
    EXPECT_FALSE(dependent.normalMatrix(out));
    EXPECT_EQ(out, untouched);
    EXPECT_EQ(dependent.inverse(), AffineMatrix());
    // Rows at an angle of 1e-11 are nearly dependent; at 1e-9 they are not. A small but
    // well-shaped matrix is invertible, whatever its scale.
    EXPECT_FALSE(AffineMatrix({1, 0, 0}, {1, 1e-11, 0}, {0, 0, 1}, {}).inverse(out));
    EXPECT_TRUE(AffineMatrix({1, 0, 0}, {1, 1e-9, 0}, {0, 0, 1}, {}).inverse(out));
    ASSERT_TRUE(AffineMatrix(1e-6).inverse(out));
    EXPECT_TRUE(near(out, AffineMatrix(1e6), 1e-3));
}

TEST(AffineMatrix, NormalMatrixKeepsNormalsPerpendicular) {
    // Stretching y by 2 with a move: the normal matrix is diag(1, 1/2, 1) with no move, and
    // takes the normal (1, 1, 0) of x + y = 0 to (1, 0.5, 0), still perpendicular to the
    // stretched tangent (1, -2, 0).
    const AffineMatrix stretch({1, 0, 0}, {0, 2, 0}, {0, 0, 1}, {5, 6, 7});
    AffineMatrix normals;
    ASSERT_TRUE(stretch.normalMatrix(normals));
    EXPECT_EQ(normals, AffineMatrix::makeScale(1, 0.5, 1));
    EXPECT_EQ(dot(Vector(1, -1, 0) * stretch, Vector(1, 1, 0) * normals), 0.0);
    // A mirror keeps its sign.
    ASSERT_TRUE(AffineMatrix::makeScale(-1, 1, 1).normalMatrix(normals));
    EXPECT_EQ(normals, AffineMatrix::makeScale(-1, 1, 1));
}

TEST(AffineMatrix, SetFrameTranslateAndStrictEquivalence) {
    // Axes x -> (0, 1, 0), y -> (0, 0, 1), z -> (1, 0, 0) at (1, 2, 3): (1, 2, 3) goes to
    // (1, 2, 3) + (0, 1, 0) + (0, 0, 2) + (3, 0, 0).
    AffineMatrix frame;
    frame.setFrame({1, 2, 3}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0});
    EXPECT_EQ(Point(1, 2, 3) * frame, Point(4, 3, 5));
    // Translated by (1, 0, 0), the point (-1, 0, 0) lands where the origin did.
    AffineMatrix moved = handMatrix;
    moved.translate({1, 0, 0});
    EXPECT_EQ(moved, AffineMatrix::makeTranslation({1, 0, 0}) * handMatrix);
    // One element off by exactly the tolerance is outside it.
    EXPECT_FALSE(equivalent(handMatrix, moved, 1.0));
    EXPECT_TRUE(equivalent(handMatrix, moved, 1.5));
}

TEST(AffineMatrix2, TransformsProductsAndInverseByHand) {
    // Rows (2, 0), (1, 3), translation (5, 7).
    const AffineMatrix2 m({2, 0}, {1, 3}, {5, 7});
    // (1, 2) * m = (2, 0) + 2*(1, 3) + (5, 7) = (9, 13); the tuple skips the move: (4, 6).
    EXPECT_EQ(Point2(1, 2) * m, Point2(9, 13));
    EXPECT_EQ(Tuple2(1, 2) * m, Tuple2(4, 6));
    // Inverse of [[2, 0], [1, 3]] is [[1/2, 0], [-1/6, 1/3]]; translation -(5, 7) through it:
    // -(5/2 - 7/6, 7/3) = (-4/3, -7/3).
    AffineMatrix2 inverse;
    ASSERT_TRUE(m.inverse(inverse));
    EXPECT_TRUE(
        near(inverse, AffineMatrix2({0.5, 0}, {-1.0 / 6, 1.0 / 3}, {-4.0 / 3, -7.0 / 3}), 1e-15));

    // A quarter turn counter-clockwise after a move by (1, 0) takes the origin to (0, 1).
    const AffineMatrix2 turn = AffineMatrix2::makeRotation(std::numbers::pi / 2);
    EXPECT_TRUE(
        near(Point2() * (AffineMatrix2::makeTranslation({1, 0}) * turn), Point2(0, 1), 1e-15));
    AffineMatrix2 moved = m;
    moved.translate({-1, 0});
    EXPECT_EQ(Point2(1, 0) * moved, Point2() * m);
    // The translations differ by 2 in x: the comparison covers them too.
    EXPECT_FALSE(equivalent(m, moved, 2.0));

    const AffineMatrix2 flat({1, 2}, {2, 4}, {1, 1});
    inverse = m;
    EXPECT_FALSE(flat.inverse(inverse));
    EXPECT_EQ(inverse, m);
}

TEST(AffineMatrixFlt, TransformsInFloatLikeTheDoubleMatrix) {
    // The hand matrix of the double test: (1, 2, 3) goes to (8, 21, 36), the vector
    // (1, 2, 3) to (-2, 1, 6); translated by (1, 0, 0), (-1, 0, 0) lands where the origin did.
    const AffineMatrixFlt m({0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {10, 20, 30});
    EXPECT_EQ(PointFlt(1, 2, 3) * m, PointFlt(8, 21, 36));
    EXPECT_EQ(VectorFlt(1, 2, 3) * m, VectorFlt(-2, 1, 6));
    AffineMatrixFlt moved = m;
    moved.translate({1, 0, 0});
    EXPECT_EQ(PointFlt() * (m * moved), PointFlt(10, 20, 30) * moved);

    AffineMatrixFlt inverse;
    ASSERT_TRUE(m.inverse(inverse));
    EXPECT_EQ(inverse, AffineMatrixFlt({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5f}, {-20, 10, -15}));
    const AffineMatrixFlt flat({1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {});
    EXPECT_FALSE(flat.inverse(inverse));
    EXPECT_EQ(inverse(2, 2), 0.5f);
    // Conversion rounds each element.
    const AffineMatrix rotation = AffineMatrix::makeRotation({1, 2, 3}, 0.3);
    const AffineMatrixFlt narrow(rotation);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(narrow.data()[i], static_cast<float>(rotation.data()[i]));
    }
}

} // namespace
} // namespace koLinear
