#include "geom/topomesh/TopoMeshAlloc.h"

namespace koGeom {

TopoMeshAlloc::~TopoMeshAlloc() = default;

} // namespace koGeom
