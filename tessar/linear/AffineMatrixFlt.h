#pragma once

// `AffineMatrixFlt`, the single-precision form, is declared with `AffineMatrix` as
// `BasicAffineMatrix<float>`.
#include "tessar/linear/AffineMatrix.h"
