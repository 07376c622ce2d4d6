#pragma once

#include "geom/FormworkExport.h"
#include "geom/spatial/OctreeVoxelSets.h"

namespace koGeom {

/// The lines of each voxel (octree leaf number) of a mesh, as line indices in a set store.
class FORMWORK_EXPORT OctreeLines : public OctreeVoxelSets {
public:
    OctreeLines() = default;
    /// Takes the contents of `sets`, leaving it empty.
    explicit OctreeLines(ArrayOfSets& sets) noexcept : OctreeVoxelSets(sets) {}

    void swap(OctreeLines& other) noexcept { swapSets(other); }

    /// The number of lines in `voxel`, which is not checked.
    int numLines(int voxel) const noexcept { return setSize(voxel); }
    /// The first of the line indices of `voxel`.
    const int* firstLine(int voxel) const noexcept { return firstInSet(voxel); }
};

} // namespace koGeom
