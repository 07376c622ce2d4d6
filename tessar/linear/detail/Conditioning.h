#pragma once

#include <cmath>

#include "tessar/linear/Tolerance.h"

namespace koLinear::detail {

// A square matrix is treated as singular when its determinant is small next to the product of
// its row lengths. By Hadamard's inequality that ratio lies in [0, 1] and measures how far the
// rows are from dependent regardless of their scale: a uniform scale by 1e-6 stays
// invertible, two nearly parallel rows do not. NaNs count as singular.
inline bool nearlySingular(double determinant, double rowLengthProduct) noexcept {
    return !(std::fabs(determinant) > epsilonTol * rowLengthProduct);
}

} // namespace koLinear::detail
