#pragma once

#include <gtest/gtest.h>

#include <array>

#include "tessar/linear/ProjMatrix.h"

namespace koGeomTest {

// Checks all sixteen elements of `m` against `expected` (row order), naming the first
// element that differs.
inline void expectMatrix(const koLinear::ProjMatrix& m, const std::array<double, 16>& expected,
                         double tol = 1e-12) {
    for (int i = 0; i < 16; ++i) {
        EXPECT_NEAR(m.data()[i], expected[i], tol) << "element m" << i / 4 << i % 4;
    }
}

// Checks that a · b is the identity.
inline void expectInverses(const koLinear::ProjMatrix& a, const koLinear::ProjMatrix& b,
                           double tol = 1e-12) {
    expectMatrix(a * b, {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, tol);
}

} // namespace koGeomTest
