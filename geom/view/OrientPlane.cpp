#include "geom/view/OrientPlane.h"

#include <cmath>
#include <utility>

namespace koGeom {

void orientPlane(OrientedPlane& plane, const Camera& camera) {
    const koLinear::Normal right = camera.getRightVector();
    const koLinear::Normal up = camera.getUpVector();
    const koLinear::Normal view = camera.getViewVector();

    koLinear::Point origin = plane.origin();
    koLinear::Normal normal = plane.normal();
    koLinear::Normal axisU = plane.axisU();
    koLinear::Normal axisV = plane.axisV();
    double lengthU = plane.lengthU();
    double lengthV = plane.lengthV();

    if (std::fabs(dot(up, axisU)) > std::fabs(dot(up, axisV))) {
        std::swap(axisU, axisV);
        std::swap(lengthU, lengthV);
    }
    if (dot(right, axisU) < 0.0) {
        origin += axisU * lengthU;
        axisU.reverse();
    }
    if (dot(up, axisV) < 0.0) {
        origin += axisV * lengthV;
        axisV.reverse();
    }
    if (dot(view, normal) > 0.0) {
        normal.reverse();
    }
    plane.set(origin, normal, axisU, axisV, lengthU, lengthV);
}

} // namespace koGeom
