#pragma once

#include "geom/FormworkExport.h"
#include "geom/spatial/OctreeVoxelSets.h"

namespace koGeom {

/// The triangles of each voxel (octree leaf number) of a mesh, as triangle indices in a set store.
class FORMWORK_EXPORT OctreeTris : public OctreeVoxelSets {
public:
    OctreeTris() = default;
    /// Takes the contents of `sets`, leaving it empty.
    explicit OctreeTris(ArrayOfSets& sets) noexcept : OctreeVoxelSets(sets) {}

    void swap(OctreeTris& other) noexcept { swapSets(other); }

    /// The number of triangles in `voxel`, which is not checked.
    int numTris(int voxel) const noexcept { return setSize(voxel); }
    /// The first of the triangle indices of `voxel`.
    const int* firstTri(int voxel) const noexcept { return firstInSet(voxel); }
};

} // namespace koGeom
