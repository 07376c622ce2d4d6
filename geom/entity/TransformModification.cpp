#include "geom/entity/TransformModification.h"

namespace koGeom {

TransformModification::~TransformModification() = default;

} // namespace koGeom
