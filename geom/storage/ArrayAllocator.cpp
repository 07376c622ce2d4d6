#include "geom/storage/ArrayAllocator.h"

namespace koGeom {

ArrayAllocator::~ArrayAllocator() = default;

} // namespace koGeom
