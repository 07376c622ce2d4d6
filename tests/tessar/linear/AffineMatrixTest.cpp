#include "tessar/linear/AffineMatrix.h"

#include <cmath>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "tessar/linear/Normal.h"
#include "tests/tessar/linear/Near.h"

namespace koLinear {
namespace {

using koLinearTest::near;

// Rows (0, 1, 0), (-1, 0, 0), (0, 0, 2) and translation (10, 20, 30): a quarter turn about
// z, a stretch of z, then a move.
const AffineMatrix handMatrix({0, 1, 0}, {-1, 0, 0}, {0, 0, 2}, {10, 20, 30});

TEST(AffineMatrix, PointsVectorsAndNormalsByHand) {
    EXPECT_EQ(AffineMatrix(), AffineMatrix(1.0));
    EXPECT_EQ(AffineMatrix(2.0), AffineMatrix::makeScale(2, 2, 2));
    // (1, 2, 3) * m = 1*(0, 1, 0) + 2*(-1, 0, 0) + 3*(0, 0, 2) + (10, 20, 30) = (8, 21, 36).
    EXPECT_EQ(Point(1, 2, 3) * handMatrix, Point(8, 21, 36));
    // A vector skips the translation: (-2, 1, 6).
    EXPECT_EQ(Vector(1, 2, 3) * handMatrix, Vector(-2, 1, 6));
    EXPECT_EQ(Normal::unitX() * handMatrix, Vector(0, 1, 0));
    EXPECT_EQ(handMatrix(3, 2), 30.0);
    EXPECT_EQ(handMatrix.data()[3], -1.0);
}

TEST(AffineMatrix, ProductAppliesTheLeftOperandFirst) {
    const AffineMatrix move = AffineMatrix::makeTranslation({1, 0, 0});
    const AffineMatrix turn = AffineMatrix::makeRotation({0, 0, 1}, std::numbers::pi / 2);
    // Move then turn: the origin goes to (1, 0, 0), then to (0, 1, 0).
    EXPECT_TRUE(near(Point() * (move * turn), Point(0, 1, 0), 1e-15));
    // Turn then move: the origin stays, then goes to (1, 0, 0).
    EXPECT_TRUE(near(Point() * (turn * move), Point(1, 0, 0), 1e-15));
    // (p * a) * b = p * (a * b) for the hand matrix and a shear.
    const AffineMatrix shear({1, 0, 0}, {2, 1, 0}, {0, 3, 1}, {-1, -2, -3});
    const Point p(0.5, -1.5, 2);
    EXPECT_EQ((p * handMatrix) * shear, p * (handMatrix * shear));
    EXPECT_EQ((p * shear) * handMatrix, p * (shear * handMatrix));
}

TEST(AffineMatrix, RotationFollowsTheRightHandRule) {
    const double quarter = std::numbers::pi / 2;
    const AffineMatrix aboutX = AffineMatrix::makeRotation({2, 0, 0}, quarter);
    EXPECT_TRUE(near(Vector(0, 1, 0) * aboutX, Vector(0, 0, 1), 1e-15));
    // A third of a turn about (1, 1, 1) cycles the axes x -> y -> z.
    const AffineMatrix cycle = AffineMatrix::makeRotation({1, 1, 1}, 2 * std::numbers::pi / 3);
    EXPECT_TRUE(near(Vector(1, 0, 0) * cycle, Vector(0, 1, 0), 1e-15));
    EXPECT_TRUE(near(Vector(0, 1, 0) * cycle, Vector(0, 0, 1), 1e-15));
    EXPECT_EQ(AffineMatrix::makeRotation(Vector(), 1.0), AffineMatrix(1.0));
}

TEST(AffineMatrix, DeterminantAndInverseByHand) {
    // Lower triangular: the product of the diagonal, 2 * 3 * 6; a mirror is negative.
    EXPECT_EQ(AffineMatrix({2, 0, 0}, {1, 3, 0}, {4, 5, 6}, {7, 8, 9}).determinant(), 36.0);
    EXPECT_EQ(AffineMatrix::makeScale(-1, 2, 3).determinant(), -6.0);
    EXPECT_EQ(handMatrix.determinant(), 2.0);
    // Scale (2, 4, 8) then move by (1, 2, 3): the inverse scales by (1/2, 1/4, 1/8) and
    // moves by -(1/2, 2/4, 3/8).
    const AffineMatrix m({2, 0, 0}, {0, 4, 0}, {0, 0, 8}, {1, 2, 3});
    AffineMatrix inverse;
    ASSERT_TRUE(m.inverse(inverse));
    EXPECT_EQ(inverse,
              AffineMatrix({0.5, 0, 0}, {0, 0.25, 0}, {0, 0, 0.125}, {-0.5, -0.5, -0.375}));
    // The hand matrix: the inverse of the quarter turn is its transpose, z is halved, and
    // the translation is -(10, 20, 30) taken through that: -(20, -10, 15).
    EXPECT_EQ(handMatrix.inverse(),
              AffineMatrix({0, -1, 0}, {1, 0, 0}, {0, 0, 0.5}, {-20, 10, -15}));
    AffineMatrix inPlace = m;
    ASSERT_TRUE(inPlace.inverse(inPlace));
    EXPECT_EQ(inPlace, inverse);
}

TEST(AffineMatrix, InverseTimesMatrixIsIdentityOnRandomMatrices) {
    std::mt19937 random(20240521);
    std::uniform_real_distribution<double> unit(-1.0, 1.0);
    std::uniform_real_distribution<double> scale(0.5, 2.0);
    for (int i = 0; i < 200; ++i) {
        SCOPED_TRACE(i);
        // A rotation, an unequal scale and a move: condition number at most 4.
        const AffineMatrix m =
            AffineMatrix::makeRotation({unit(random), unit(random), unit(random)},
                                       4.0 * unit(random)) *
            AffineMatrix::makeScale(scale(random), scale(random), scale(random)) *
            AffineMatrix::makeTranslation({100 * unit(random), 100 * unit(random), 0});
        AffineMatrix inverse;
        ASSERT_TRUE(m.inverse(inverse));
        EXPECT_TRUE(near(m * inverse, AffineMatrix(1.0), 1e-13));
        EXPECT_TRUE(near(inverse * m, AffineMatrix(1.0), 1e-13));
        const Point p(unit(random), unit(random), unit(random));
        EXPECT_TRUE(near(p * m * inverse, p, 1e-13));
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
    EXPECT_EQ(dependent.inverse(), AffineMatrix(1.0));
    // Rows at an angle of 1e-11 are nearly dependent; at 1e-9 they are not.
    EXPECT_FALSE(AffineMatrix({1, 0, 0}, {1, 1e-11, 0}, {0, 0, 1}, {}).inverse(out));
    EXPECT_TRUE(AffineMatrix({1, 0, 0}, {1, 1e-9, 0}, {0, 0, 1}, {}).inverse(out));
    // A small but well-shaped matrix is invertible, whatever its scale.
    ASSERT_TRUE(AffineMatrix(1e-6).inverse(out));
    EXPECT_TRUE(near(out, AffineMatrix(1e6), 1e-3));
    EXPECT_FALSE(AffineMatrix(0.0).inverse(out));
}

TEST(AffineMatrix, NormalMatrixKeepsNormalsPerpendicular) {
    // Stretching y by 2 with a move: the normal matrix is diag(1, 1/2, 1) with no move.
    const AffineMatrix stretch({1, 0, 0}, {0, 2, 0}, {0, 0, 1}, {5, 6, 7});
    AffineMatrix normals;
    ASSERT_TRUE(stretch.normalMatrix(normals));
    EXPECT_EQ(normals, AffineMatrix::makeScale(1, 0.5, 1));
    // The plane x + y = 0: tangent (1, -1, 0) goes to (1, -2, 0), normal (1, 1, 0) to
    // (1, 0.5, 0), and 1*1 + (-2)*0.5 = 0.
    const Vector tangent = Vector(1, -1, 0) * stretch;
    const Vector normal = Vector(1, 1, 0) * normals;
    EXPECT_EQ(normal, Vector(1, 0.5, 0));
    EXPECT_EQ(dot(tangent, normal), 0.0);
    // For a rotation the normal matrix is the rotation itself; a mirror keeps its sign.
    const AffineMatrix turn = AffineMatrix::makeRotation({1, 2, 3}, 0.7);
    ASSERT_TRUE(turn.normalMatrix(normals));
    EXPECT_TRUE(near(normals, turn, 1e-15));
    ASSERT_TRUE(AffineMatrix::makeScale(-1, 1, 1).normalMatrix(normals));
    EXPECT_EQ(normals, AffineMatrix::makeScale(-1, 1, 1));
}

TEST(AffineMatrix, SetFrameAndTranslate) {
    AffineMatrix frame;
    frame.setFrame({1, 2, 3}, {0, 1, 0}, {0, 0, 1}, {1, 0, 0});
    EXPECT_EQ(Point() * frame, Point(1, 2, 3));
    EXPECT_EQ(Point(1, 0, 0) * frame, Point(1, 3, 3));
    EXPECT_EQ(Point(0, 0, 2) * frame, Point(3, 2, 3));

    // The hand matrix translated by (1, 0, 0): the point (-1, 0, 0) now lands where the
    // origin did, (10, 20, 30); the origin lands where (1, 0, 0) did, (10, 21, 30).
    AffineMatrix moved = handMatrix;
    moved.translate({1, 0, 0});
    EXPECT_EQ(Point(-1, 0, 0) * moved, Point(10, 20, 30));
    EXPECT_EQ(Point() * moved, Point(10, 21, 30));
    EXPECT_EQ(moved, AffineMatrix::makeTranslation({1, 0, 0}) * handMatrix);
}

TEST(AffineMatrix, EquivalentComparesEveryElementStrictly) {
    AffineMatrix b = handMatrix;
    b(3, 2) += 0.5;
    EXPECT_FALSE(equivalent(handMatrix, b, 0.5));
    EXPECT_TRUE(equivalent(handMatrix, b, 0.75));
    EXPECT_FALSE(equivalent(handMatrix, handMatrix, 0.0));
}

} // namespace
} // namespace koLinear
