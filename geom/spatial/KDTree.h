#pragma once

#include <vector>

#include "tessar/core/ImplBase.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// An incremental three-dimensional k-d tree over point indices, answering box queries: the
/// first point found in a box, or all of them.
///
/// The tree stores neither coordinates nor a pointer to them. Every call receives the
/// caller's coordinate array, three floats (x, y, z) per point index, and must be given the
/// same array, unchanged, every time while the tree is in use.
///
/// The shape follows the order of insertion: a new point walks down from the root, splitting
/// on x at the root, then y, z, x, ... one axis per level, and goes left where the node's
/// coordinate is strictly greater than its own, otherwise right, so equal coordinates go
/// right. The first point inserted is the root. There is no removal and no rebalancing: points
/// inserted in a sorted order make a deep tree, and n coincident points make a chain of depth
/// n (placing them costs O(n^2), as it does one by one).
///
/// Every node record is allocated once, by the constructor, for `capacity` points (20 bytes a
/// point: the record and a slot of working space); insertion and search make no heap request
/// (only `searchAll`'s output vector grows). Inserting more points than the capacity is the
/// caller's error and is not detected.
///
/// Cost: `insert` is O(1): it files the point. The first search after a run of insertions links
/// the filed points into the tree, each landing exactly where inserting it on its own would
/// put it, in one sequential pass over the filed points per level they descend; a run at least
/// as long as the tree so far rebuilds the whole tree that way (O(n log n) for spread points),
/// so over a tree's life linking costs O(log n) a spread point. Linking lays each subtree out in
/// consecutive records. Searches then only read the tree; they walk it without recursion, with
/// a fixed stack of 64 pending subtrees and parent links beyond it, so no tree, however deep,
/// costs call stack. The tree is used from one thread at a time, including its searches.
///
/// A handle owns its tree; it is moved, never copied. A moved-from handle owns nothing and may
/// only be destroyed or assigned to.
class FORMWORK_EXPORT KDTree {
public:
    /// \name Construction
    /// @{

    /// An empty tree with node records for `capacity` points. A negative capacity throws
    /// `std::bad_alloc` (as any failed allocation does).
    explicit KDTree(int capacity);
    ~KDTree();

    KDTree(const KDTree&) = delete;
    KDTree& operator=(const KDTree&) = delete;
    KDTree(KDTree&& other) noexcept;
    KDTree& operator=(KDTree&& other) noexcept;
    /// @}

    /// \name Insertion and search
    /// `points` holds three floats per point index; `box` is six floats: min x, min y, min z,
    /// max x, max y, max z. A point is in the box when min <= coordinate <= max on all three
    /// axes (closed: points on the boundary are found; any NaN misses).
    /// @{

    /// Adds point `index` of `points`. At most `capacity` points may be inserted.
    void insert(const float* points, int index) noexcept;

    /// The index of the first point found in `box` in pre-order (node, then its left subtree,
    /// then its right), or -1 when none is or the tree is empty. This is not the nearest
    /// point: whenever the root's point is in the box, the root's index is the answer.
    int search(const float* points, const float* box) const noexcept;

    /// Appends the index of every point in `box` to `out`, in pre-order as in `search`.
    /// `out` is not cleared first.
    void searchAll(const float* points, const float* box, std::vector<int>& out) const;
    /// @}

    /// \name Size
    /// @{
    /// The points inserted so far.
    int size() const noexcept;
    /// The capacity given to the constructor.
    int capacity() const noexcept;
    /// @}

private:
    ko::ImplBase* impl_ = nullptr;
    bool owning_ = false;
};

} // namespace koGeom
