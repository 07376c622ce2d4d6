#pragma once

// Everything public of koLinear: points, vectors, matrices, ranges, planes, lines and the
// shared tolerances.

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/AffineMatrix2.h"
#include "tessar/linear/AffineMatrixFlt.h"
#include "tessar/linear/Angle.h"
#include "tessar/linear/HPoint.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/LinearScalar.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ParamLine.h"
#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/Plane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/Point2Flt.h"
#include "tessar/linear/PointFlt.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Range1d.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Range3d.h"
#include "tessar/linear/Tolerance.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/linear/Vector.h"
#include "tessar/linear/Vector2Flt.h"
#include "tessar/linear/VectorFlt.h"
