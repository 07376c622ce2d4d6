#include "tessar/linear/ProjMatrix.h"

#include <cmath>
#include <utility>

#include "tessar/linear/detail/Conditioning.h"

namespace koLinear {

namespace {

double rowLengthProduct(const ProjMatrix& m) noexcept {
    double product = 1.0;
    for (int r = 0; r < 4; ++r) {
        const HPoint h = m.row(r);
        product *= std::sqrt(h.x * h.x + h.y * h.y + h.z * h.z + h.w * h.w);
    }
    return product;
}

// Gauss-Jordan elimination with partial pivoting on [m | inverse], which starts as the
// identity. Returns the determinant, the product of the pivots with the sign of the row
// exchanges; stops early with 0 when a column has no non-zero pivot left, leaving `inverse`
// meaningless.
double eliminate(ProjMatrix m, ProjMatrix& inverse) noexcept {
    inverse = ProjMatrix();
    double det = 1.0;
    for (int col = 0; col < 4; ++col) {
        int pivot = col;
        for (int r = col + 1; r < 4; ++r) {
            if (std::fabs(m(r, col)) > std::fabs(m(pivot, col))) {
                pivot = r;
            }
        }
        if (m(pivot, col) == 0.0) {
            return 0.0;
        }
        if (pivot != col) {
            for (int c = 0; c < 4; ++c) {
                std::swap(m(pivot, c), m(col, c));
                std::swap(inverse(pivot, c), inverse(col, c));
            }
            det = -det;
        }
        const double p = m(col, col);
        det *= p;
        for (int c = 0; c < 4; ++c) {
            m(col, c) /= p;
            inverse(col, c) /= p;
        }
        for (int r = 0; r < 4; ++r) {
            const double factor = m(r, col);
            if (r == col || factor == 0.0) {
                continue;
            }
            for (int c = 0; c < 4; ++c) {
                m(r, c) -= factor * m(col, c);
                inverse(r, c) -= factor * inverse(col, c);
            }
        }
    }
    return det;
}

} // namespace

double ProjMatrix::determinant() const noexcept {
    ProjMatrix unused;
    return eliminate(*this, unused);
}

bool ProjMatrix::inverse(ProjMatrix& out) const noexcept {
    ProjMatrix result;
    const double det = eliminate(*this, result);
    if (detail::nearlySingular(det, rowLengthProduct(*this))) {
        return false;
    }
    out = result;
    return true;
}

ProjMatrix ProjMatrix::inverse() const noexcept {
    ProjMatrix result;
    inverse(result);
    return result;
}

} // namespace koLinear
