#pragma once

#include "geom/FormworkExport.h"
#include "geom/spatial/BoundingBox.h"
#include "geom/spatial/Quadtree.h"

namespace koGeom {

/// A position in a `Quadtree`: a node and its cell, walked down from `Quadtree::getRoot()` with
/// `descend`. A value type, valid while its tree lives; a default-made iterator is on no node.
class FORMWORK_EXPORT QuadtreeIterator {
public:
    /// On no node, with the zero box.
    QuadtreeIterator() noexcept = default;
    QuadtreeIterator(Quadtree::Node* node, const BoundingBox& box) noexcept
        : box_(box), node_(node) {}

    /// True when on a node.
    bool valid() const noexcept { return node_ != nullptr; }
    bool isLeaf() const noexcept { return node_->isLeaf; }
    /// The current cell (z is 0 below the root).
    const BoundingBox& getBox() const noexcept { return box_; }
    Quadtree::Node* getNode() const noexcept { return node_; }

    /// Moves to the child in `quadrant` (0 to 3) and its cell. Returns false, changing
    /// nothing, on a leaf or where that child is absent.
    bool descend(int quadrant) noexcept {
        if (node_->isLeaf || node_->children[quadrant] == nullptr) {
            return false;
        }
        Quadtree::getSubBox(quadrant, box_, box_);
        node_ = node_->children[quadrant];
        return true;
    }

    /// The leaf's slots [first, end) in the tree's remap; meaningful on a leaf only.
    void getVertexRange(int& first, int& end) const noexcept {
        first = node_->leaf.first;
        end = node_->leaf.end;
    }

private:
    BoundingBox box_;
    Quadtree::Node* node_ = nullptr;
};

inline QuadtreeIterator Quadtree::getRoot() const noexcept { return {root_, box_}; }

} // namespace koGeom
