#pragma once

// `Point2Flt`, the single-precision form, is declared with `Point2` as `BasicPoint2<float>`.
#include "tessar/linear/Point2.h"
