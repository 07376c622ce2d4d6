#pragma once

// `PointFlt`, the single-precision form, is declared with `Point` as `BasicPoint<float>`.
#include "tessar/linear/Point.h"
