#pragma once

#include "tessar/core/Reference.h"
#include "tessar/linear/Vector.h"

#include "geom/FormworkExport.h"
#include "geom/spatial/BoundingBox.h"

namespace koGeom {

class QuadtreeIterator;
struct QuadtreeStorage;

/// A quadtree of axis-aligned cells over a caller's array of 2-D points: the two-dimensional
/// counterpart of the octree.
///
/// The tree does not copy the points: it keeps a pointer to them (two floats a point, x and y)
/// and a permutation of the point indices, the remap, in which the points of every cell are
/// contiguous. Each leaf is a range of slots [first, end) of the remap; within a leaf the
/// points keep their order in the caller's array.
///
/// A cell holding more than 300 points (a fixed capacity) is split at its centre into four
/// quadrants, and all four children are always made, empty ones too. Quadrants are numbered by
/// bits: bit 0 set is the upper half in x, bit 1 the upper half in y; a coordinate equal to the
/// centre belongs to the upper half. Points outside the given box are sorted by the same
/// comparisons and end up in the outer quadrants. Cells below the root carry z = 0 in their
/// boxes; the root box is the constructor's box as given.
///
/// Cells that can never be separated stay over-full leaves instead of being split without
/// end: a cell is not split when all its points coincide (equal x and equal y, or NaN in the
/// same coordinates), nor when its split would hand every point to one quadrant whose cell is
/// the cell itself (its size has underflowed to the float step, or points outside the box sit
/// at a corner it has shrunk to). Splitting such a cell would repeat forever; every other cell
/// is split exactly as described above.
///
/// The whole tree is built by the constructor and never changes. The caller's points must
/// neither move nor change while the tree is in use. Iterators point into the tree's nodes and
/// stay valid while the tree, or a copy of it, lives. Allocation failures throw
/// `std::bad_alloc` and leave nothing allocated; nothing else is reported.
///
/// Copies are shallow: copy construction and assignment copy the pointers, so a copy shares
/// the nodes and the remap with its source. The nodes and the remap are owned jointly by every
/// copy and released with the last one, so the source and its copies may be destroyed in any
/// order.
class FORMWORK_EXPORT Quadtree {
public:
    /// A cell: a leaf over a range of remap slots, or an inner node with four children.
    struct Node {
        /// The points of a leaf: remap slots [first, end).
        struct Leaf {
            int first;
            int end;
        };

        bool isLeaf;
        union {
            Leaf leaf;
            Node* children[4];
        };
    };

    /// The most points a cell may hold before it is split.
    static constexpr int vertsPerLeaf = 300;

    /// \name Construction
    /// @{

    /// Sorts the `numVertices` points at `vertices` (x, y pairs) into cells of `box`, which is
    /// taken as it is. O(n log n) for spread points; a negative count throws
    /// `std::bad_alloc`.
    Quadtree(int numVertices, const float* vertices, const BoundingBox& box);
    ~Quadtree();

    /// Shares the source's nodes and remap.
    Quadtree(const Quadtree& other) noexcept;
    /// Copies every field, the pointers to the nodes and the remap included: this tree then
    /// shares the source's nodes and remap, and lets go of its own.
    // Deliberate: assignment is a shallow copy, sharing the cells with the source; client code
    // passes trees around by assignment without rebuilding them.
    Quadtree& operator=(const Quadtree& other) noexcept;
    /// @}

    /// \name The tree
    /// @{

    /// An iterator on the root node and the root box.
    QuadtreeIterator getRoot() const noexcept;
    const float* getVertices() const noexcept { return vertices_; }
    /// Slot -> point index; the points of each leaf occupy its slots [first, end).
    const int* getRemap() const noexcept { return remap_; }
    int numVertices() const noexcept { return numVertices_; }
    /// The nodes made, root included.
    int numNodes() const noexcept { return numNodes_; }
    /// The deepest level; 1 when the root is a leaf.
    int maxDepth() const noexcept { return maxDepth_; }
    /// The seconds the build took.
    double partitionTime() const noexcept { return partitionTime_; }
    /// @}

    /// Writes the four quadrants to `order` sorted by ascending score along `direction`,
    /// score = (bit 0 ? +1 : -1) * x + (bit 1 ? +1 : -1) * y, ties in ascending quadrant
    /// order; z plays no part. For a view direction this is front-to-back order.
    static void getNodeOrdering(const koLinear::Vector& direction, int order[4]) noexcept;

private:
    friend class QuadtreeIterator;

    bool partition(Node* node, const BoundingBox& cell, int* codes, int* scratch);
    int recursivePartition(Node* node, const BoundingBox& cell, int* codes, int* scratch,
                           int depth);
    bool coincide(int first, int end) const noexcept;
    int locate(int slot, const float* point) const noexcept;
    static void getSubBox(int quadrant, const BoundingBox& cell, BoundingBox& out) noexcept;

    BoundingBox box_;
    int* remap_ = nullptr;
    const float* vertices_ = nullptr;
    Node* root_ = nullptr;
    int numVertices_ = 0;
    int numNodes_ = 0;
    int maxDepth_ = 1;
    double partitionTime_ = 0.0;
    // Owns the nodes and the remap jointly with every copy.
    ko::Reference<QuadtreeStorage> storage_;
};

} // namespace koGeom

#include "geom/spatial/QuadtreeIterator.h"
