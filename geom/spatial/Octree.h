#pragma once

#include <memory>

#include "tessar/core/ReferenceCount.h"
#include "tessar/linear/Vector.h"
#include "tessar/os/FSAllocator.h"

#include "geom/FormworkExport.h"
#include "geom/spatial/BoundingBox.h"

namespace koGeom {

class OctreeIterator;
struct OctreePartitionData;

/// An octree of axis-aligned cells over a caller's array of points, for picking and other
/// spatial queries.
///
/// The tree does not copy the points: it keeps a pointer to them (three floats a point) and a
/// permutation of the point indices, the remap, in which the points of every cell are
/// contiguous. Each leaf is a range of slots [first, end) of the remap, and carries a dense
/// leaf number, 0 to `numLeafNodes() - 1`, that client code uses as a voxel number for
/// per-voxel lists (`OctreeTris`, `OctreeLines`). Within a leaf the points keep their order in
/// the caller's array.
///
/// Octants are numbered by bits: bit 0 set is the upper half in x, bit 1 the upper half in y,
/// bit 2 the upper half in z. A coordinate equal to the cell's centre belongs to the upper
/// half. Points outside the given box are sorted by the same comparisons and end up in the
/// outer octants.
///
/// The whole tree is built by the constructor and never changes; there is no insertion or
/// removal. The caller's points must neither move nor change while the tree is in use.
/// Iterators (`getRoot()`, `OctreeIterator::descend`) point into the tree's nodes and stay
/// valid while the tree, or a copy of it, lives. Allocation failures throw `std::bad_alloc`;
/// nothing else is reported.
///
/// Copies are shallow: the copy constructor copies the pointers, so a copy shares the node
/// pool, the nodes and the remap with its source. Here the pool and the remap are owned jointly
/// by every copy and released with the last one, so a source and its copies may be destroyed in
/// any order, and a copy stays usable after its source is gone.
class FORMWORK_EXPORT Octree : public ko::ReferenceCount {
public:
    /// A cell of the tree, taken from the tree's node pool and released with the pool.
    struct Node {
        /// The slots of a leaf's points in the remap, and its leaf number.
        struct LeafRange {
            int first;
            int end;
            int leafNum;
        };

        bool isLeaf;
        union {
            /// Meaningful when `isLeaf`.
            LeafRange leaf;
            /// Meaningful when not `isLeaf`: the child in each octant, null where the octant
            /// was left out.
            Node* children[8];
        };
    };

    /// \name Construction
    /// @{

    /// Builds the tree over `numVertices` points at `vertices` (x, y, z floats), which are not
    /// copied and must outlive the tree.
    ///
    /// The depth limit is ceil(2 · ln(n) / ln(8)), twice the base-8 logarithm of the point
    /// count (0 for fewer than two points). The root cell is `box`, except that every axis
    /// shorter than s is widened to exactly s about the box's centre, where s is the longest
    /// extent / 1000, or FLT_MIN · 2^(depthLimit + 1) if that is larger; the cell is not made
    /// cubic.
    ///
    /// When there are more than `vertsPerLeaf` points the root is split, and each child with
    /// more than `vertsPerLeaf` points is split again while its depth is within the limit (the
    /// root is depth 1, so the deepest level is depthLimit + 1) and its points do not all lie
    /// within one float step of the first of them. Such a cluster stays one over-full leaf,
    /// whatever `vertsPerLeaf` says; the root is split without that test. An empty octant of
    /// a split cell gets no child, except that with `keepEmptyCells` it gets an empty leaf
    /// (with a leaf number) unless the cell is flat (its min equals its max on some axis).
    ///
    /// When a leaf is split, its leaf number goes to its first child, so numbers stay dense.
    /// The build takes O(n · depth) time with one int of code and one of scratch per point,
    /// allocated once. It is timed (`partitionTime()`), and its statistics line goes to the
    /// library's debug channel. A negative `numVertices` throws `std::bad_alloc`.
    Octree(int numVertices, const float* vertices, const BoundingBox& box, bool keepEmptyCells,
           int vertsPerLeaf);

    /// A shallow copy that shares the nodes, the node pool and the remap with `other`.
    // Deliberate: copies share one tree; the original library copies the pointers, and
    // callers copy trees cheaply on that understanding.
    Octree(const Octree& other);
    Octree& operator=(const Octree&) = delete;
    ~Octree() override;
    /// @}

    /// \name Access
    /// @{

    /// An iterator on the root node and the root cell.
    OctreeIterator getRoot() const noexcept;
    const float* getVertices() const noexcept { return vertices_; }
    /// Slot → point index; the points of each leaf are the slots of its range.
    const int* getRemap() const noexcept { return remap_.get(); }
    int numVertices() const noexcept { return numVertices_; }
    /// The nodes made, root included.
    int numNodes() const noexcept { return numNodes_; }
    /// The leaf numbers issued.
    int numLeafNodes() const noexcept { return numLeafNodes_; }
    /// The depth of the deepest level; 1 when the root is a leaf.
    int maxDepth() const noexcept { return maxDepth_; }
    /// The seconds the build took.
    double partitionTime() const noexcept { return partitionTime_; }
    /// The size of this object, plus 4 bytes a point for the remap, plus the size of one
    /// `Node` per node.
    int numBytesUsed() const noexcept;
    /// @}

    /// \name Traversal order
    /// @{

    /// Writes the eight octants to `order` in front-to-back order for a view along
    /// `direction`: sorted by ascending score (±x) · d.x + (±y) · d.y + (±z) · d.z, where each
    /// sign is + for the upper half of that axis; equal scores keep ascending octant numbers.
    static void getNodeOrdering(const koLinear::Vector& direction, int order[8]) noexcept;
    /// @}

private:
    friend class OctreeIterator;

    Node* allocNode(int first, int end, OctreePartitionData& data);
    void partition(Node* node, const BoundingBox& cell, OctreePartitionData& data);
    int recursivePartition(Node* node, const BoundingBox& cell, int depth, int depthLimit,
                           OctreePartitionData& data);
    bool isSeparable(int first, int end) const noexcept;
    int locate(int slot, const float* point) const noexcept;
    static void getSubBox(int octant, const BoundingBox& cell, BoundingBox& out) noexcept;

    BoundingBox rootBox_;
    std::shared_ptr<koOS::FSAllocator> nodePool_;
    std::shared_ptr<int[]> remap_;
    const float* vertices_;
    Node* root_ = nullptr;
    int vertsPerLeaf_;
    int numVertices_;
    int numNodes_ = 0;
    int numLeafNodes_ = 0;
    int maxDepth_ = 1;
    bool keepEmptyCells_;
    double partitionTime_ = 0.0;
};

} // namespace koGeom

#include "geom/spatial/OctreeIterator.h"
