#include "geom/connectivity/MeshTriAdjTris.h"

namespace koGeom {

MeshTriAdjTris::~MeshTriAdjTris() = default;

} // namespace koGeom
