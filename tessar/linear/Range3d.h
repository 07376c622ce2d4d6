#pragma once

// `Range3d` is declared with the other range of points as `PointRange<Point>`.
#include "tessar/linear/PointRange.h"
