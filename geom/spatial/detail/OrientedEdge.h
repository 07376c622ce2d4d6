#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/Point.h"

namespace koGeom::detail {

// The edge arithmetic shared by oriented boxes and planes: an edge is a unit axis and a
// length, starting at the shape's origin corner.

// Grows an edge shorter than `s` to exactly `s` about its middle: the origin moves back along
// the axis by half the growth. Longer edges are untouched.
inline void growEdgeTo(koLinear::Point& origin, const koLinear::Normal& axis, double& length,
                       double s) noexcept {
    if (length < s) {
        origin -= axis * ((s - length) / 2.0);
        length = s;
    }
}

// Transforms the edge by `m` as a vector (no translation): the length of the image of
// axis · length becomes the new length, and the image of the axis, normalised, the new axis.
inline void transformEdge(koLinear::Normal& axis, double& length,
                          const koLinear::AffineMatrix& m) noexcept {
    length = ((axis * length) * m).length();
    axis = koLinear::Normal(koLinear::Vector(axis) * m);
}

} // namespace koGeom::detail
