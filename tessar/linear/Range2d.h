#pragma once

// `Range2d` is declared with the other range of points as `PointRange<Point2>`.
#include "tessar/linear/PointRange.h"
