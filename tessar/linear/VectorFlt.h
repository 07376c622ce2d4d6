#pragma once

// `VectorFlt`, the single-precision form, is declared with `Vector` as `BasicVector<float>`.
#include "tessar/linear/Vector.h"
