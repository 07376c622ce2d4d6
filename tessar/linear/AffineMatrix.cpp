#include "tessar/linear/AffineMatrix.h"

#include <cmath>

#include "tessar/linear/detail/Conditioning.h"

namespace koLinear {

namespace {

// The adjugate of the 3×3 part, row major: the inverse times the determinant.
std::array<double, 9> adjugate(const AffineMatrix& m) noexcept {
    const double a = m(0, 0), b = m(0, 1), c = m(0, 2);
    const double d = m(1, 0), e = m(1, 1), f = m(1, 2);
    const double g = m(2, 0), h = m(2, 1), i = m(2, 2);
    return {e * i - f * h, c * h - b * i, b * f - c * e, //
            f * g - d * i, a * i - c * g, c * d - a * f, //
            d * h - e * g, b * g - a * h, a * e - b * d};
}

bool singular(const AffineMatrix& m, double det) noexcept {
    return detail::nearlySingular(det, m.row(0).length() * m.row(1).length() * m.row(2).length());
}

} // namespace

AffineMatrix AffineMatrix::makeRotation(const Vector& axis, double radians) noexcept {
    const Vector k = axis.normalized();
    if (k.length2() == 0.0) {
        return AffineMatrix(1.0);
    }
    const double c = std::cos(radians);
    const double s = std::sin(radians);
    const double t = 1.0 - c;
    // Rodrigues' formula, transposed because points are row vectors: row i is the image of
    // axis i.
    return {{c + k.x * k.x * t, k.x * k.y * t + k.z * s, k.x * k.z * t - k.y * s},
            {k.x * k.y * t - k.z * s, c + k.y * k.y * t, k.y * k.z * t + k.x * s},
            {k.x * k.z * t + k.y * s, k.y * k.z * t - k.x * s, c + k.z * k.z * t},
            {}};
}

bool AffineMatrix::inverse(AffineMatrix& out) const noexcept {
    const double det = determinant();
    if (singular(*this, det)) {
        return false;
    }
    const std::array<double, 9> adj = adjugate(*this);
    AffineMatrix result;
    for (int k = 0; k < 9; ++k) {
        result.m_[k] = adj[k] / det;
    }
    // p * [A; t] = q  gives  p = (q - t) * A⁻¹, so the inverse translation is -t * A⁻¹.
    result.setTranslation(-(translation() * result));
    out = result;
    return true;
}

AffineMatrix AffineMatrix::inverse() const noexcept {
    AffineMatrix result(1.0);
    inverse(result);
    return result;
}

bool AffineMatrix::normalMatrix(AffineMatrix& out) const noexcept {
    const double det = determinant();
    if (singular(*this, det)) {
        return false;
    }
    const std::array<double, 9> adj = adjugate(*this);
    AffineMatrix result(0.0);
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            result(r, c) = adj[c * 3 + r] / det;
        }
    }
    out = result;
    return true;
}

} // namespace koLinear
