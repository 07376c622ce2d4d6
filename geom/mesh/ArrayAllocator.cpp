#include "geom/mesh/ArrayAllocator.h"

namespace koGeom {

ArrayAllocator::~ArrayAllocator() = default;

} // namespace koGeom
