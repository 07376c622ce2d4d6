#include "geom/spatial/OctreeVoxelSets.h"

namespace koGeom {

OctreeVoxelSets::~OctreeVoxelSets() = default;

int OctreeVoxelSets::numBytesUsed() const noexcept {
    return static_cast<int>(sizeof(*this)) +
           4 * (sets_.getOffsets().count() + sets_.getSets().count());
}

} // namespace koGeom
