#pragma once

#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Tolerance.h"

namespace koGeom::detail {

// The zero 4×4 matrix, from which the projection matrices are filled element by element.
inline koLinear::ProjMatrix zeroProjMatrix() noexcept {
    koLinear::ProjMatrix m;
    for (int i = 0; i < 16; ++i) {
        m.data()[i] = 0.0;
    }
    return m;
}

// The depth elements shared by every perspective matrix, with the near and far distances
// `n` and `f`: w = −z (m23 = −1), and m22 and m32 map the near plane to −1 and the far plane
// to +1. The open form puts the far plane at infinity, pulled in by the single-precision
// tolerance so that points far away still land inside the depth range.
inline void setPerspectiveDepth(koLinear::ProjMatrix& m, double n, double f, bool open) noexcept {
    m(2, 3) = -1.0;
    m(3, 3) = 0.0;
    if (open) {
        const double e = static_cast<double>(koLinear::epsilonTolFlt);
        m(2, 2) = e - 1.0;
        m(3, 2) = (e - 2.0) * n;
    } else {
        m(2, 2) = (n + f) / (n - f);
        m(3, 2) = 2.0 * n * f / (n - f);
    }
}

// The name a print uses for an object: the given one, or "unnamed".
inline const char* printedName(const char* name) noexcept {
    return name != nullptr ? name : "unnamed";
}

} // namespace koGeom::detail
