#pragma once

#include "geom/FormworkExport.h"
#include "geom/spatial/OrientedPlane.h"
#include "geom/view/Camera.h"

namespace koGeom {

/// Re-parameterises the rectangle `plane` for the viewer of `camera`, without moving it:
/// the axis closer to the screen's vertical becomes axisV (on a tie the order stays), each
/// axis is turned (moving the origin to the opposite end) so that axisU runs to the right and
/// axisV up on the screen, and the normal is turned to face the camera.
FORMWORK_EXPORT void orientPlane(OrientedPlane& plane, const Camera& camera);

} // namespace koGeom
