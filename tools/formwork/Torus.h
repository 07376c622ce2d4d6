#pragma once

#include "tools/formwork/MeshArrays.h"

namespace formworkTool {

/// The demonstration mesh: a torus about the y axis (its hole along y), major radius
/// `majorRadius` and tube radius `minorRadius`, as a grid of `segments` steps round the axis
/// by `rings` steps round the tube, two triangles a step, counter-clockwise seen from outside.
/// Every vertex has its exact normal, UVs running 0 to 1 round the axis (u) and round the
/// tube (v), and a colour that cycles round the axis.
///
/// The seams where u and v wrap carry vertices of their own (u = 1 beside u = 0), at exactly
/// the positions of the vertices they repeat, so the surface welded by position is a closed
/// torus: (segments + 1) × (rings + 1) vertices, 2 × segments × rings triangles. Both counts
/// must be at least 3.
MeshArrays makeTorus(int segments, int rings, double majorRadius, double minorRadius);

} // namespace formworkTool
