#pragma once

// `Vector2Flt`, the single-precision form, is declared with `Tuple2` as `BasicVector2<float>`.
#include "tessar/linear/Tuple2.h"
