#include "geom/topomesh/TopoMeshState.h"

namespace koGeom {

TopoMeshState::~TopoMeshState() = default;

} // namespace koGeom
