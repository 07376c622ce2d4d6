#pragma once

#include "geom/FormworkExport.h"
#include "geom/spatial/BoundingBox.h"
#include "geom/spatial/Octree.h"

namespace koGeom {

/// A position in an `Octree`: a node and its cell, walked down from `Octree::getRoot()` with
/// `descend`. A value type, valid while its tree lives; a default-made iterator is on no node.
class FORMWORK_EXPORT OctreeIterator {
public:
    /// On no node, with the zero box.
    OctreeIterator() noexcept = default;
    OctreeIterator(Octree::Node* node, const BoundingBox& box) noexcept : box_(box), node_(node) {}

    /// True when on a node.
    bool valid() const noexcept { return node_ != nullptr; }
    bool isLeaf() const noexcept { return node_->isLeaf; }
    /// The current cell.
    const BoundingBox& getBox() const noexcept { return box_; }

    /// Moves to the child in `octant` (0 to 7) and its cell. Returns false, changing nothing,
    /// on a leaf or where that child is absent.
    bool descend(int octant) noexcept {
        if (node_->isLeaf || node_->children[octant] == nullptr) {
            return false;
        }
        Octree::getSubBox(octant, box_, box_);
        node_ = node_->children[octant];
        return true;
    }

    /// \name Leaf contents
    /// Meaningful on a leaf only.
    /// @{
    int getLeafNum() const noexcept { return node_->leaf.leafNum; }
    /// The leaf's slots [first, end) in the tree's remap.
    void getVertexRange(int& first, int& end) const noexcept {
        first = node_->leaf.first;
        end = node_->leaf.end;
    }
    /// @}

private:
    BoundingBox box_;
    Octree::Node* node_ = nullptr;
};

} // namespace koGeom
