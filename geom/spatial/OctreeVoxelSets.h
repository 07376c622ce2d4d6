#pragma once

#include "tessar/core/ReferenceCount.h"

#include "geom/FormworkExport.h"
#include "geom/storage/ArrayOfSets.h"

namespace koGeom {

/// Per-voxel lists of element indices for an octree: set v of the store lists the elements
/// (triangles, lines) that client code assigned to the leaf numbered v. The library never
/// fills them; `OctreeTris` and `OctreeLines` name the elements.
class FORMWORK_EXPORT OctreeVoxelSets : public ko::ReferenceCount {
public:
    /// \name Construction
    /// @{
    OctreeVoxelSets() = default;
    /// Takes the contents of `sets` by swapping them with an empty store; `sets` is left empty.
    explicit OctreeVoxelSets(ArrayOfSets& sets) noexcept { sets_.swap(sets); }
    /// Copies the set store; the reference count is the new object's own.
    OctreeVoxelSets(const OctreeVoxelSets& other) = default;
    /// Copies the set store; a failed copy leaves this object unchanged.
    OctreeVoxelSets& operator=(const OctreeVoxelSets& other) = default;
    ~OctreeVoxelSets() override;
    /// @}

    /// \name Access
    /// @{
    int numVoxels() const noexcept { return sets_.getNumSets(); }
    const ArrayOfSets& getData() const noexcept { return sets_; }
    /// The size of the object plus 4 bytes for every entry of the store's two arrays.
    int numBytesUsed() const noexcept;
    /// @}

protected:
    void swapSets(OctreeVoxelSets& other) noexcept { sets_.swap(other.sets_); }
    int setSize(int voxel) const noexcept { return sets_.getSetSize(voxel); }
    const int* firstInSet(int voxel) const noexcept { return sets_.getSet(voxel); }

private:
    ArrayOfSets sets_;
};

} // namespace koGeom
