#include "geom/spatial/Octree.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "tessar/core/Containers.h"
#include "tessar/os/StopWatch.h"

#include "geom/entity/LibraryDebugChannel.h"

namespace koGeom {

// The working state of one build, on the constructor's stack.
struct OctreePartitionData {
    explicit OctreePartitionData(int numVertices)
        : codes(new int[static_cast<std::size_t>(numVertices)]),
          scratch(new int[static_cast<std::size_t>(numVertices)]) {}

    // Numbers of leaves that were split, reused last freed first.
    ko::vector<int> freeLeafNums;
    // The octant code of each slot of the cell being partitioned.
    std::unique_ptr<int[]> codes;
    // Where a cell's point indices are gathered in their new order.
    std::unique_ptr<int[]> scratch;
    int leafNumCounter = 0;
};

namespace {

constexpr int nodesPerPoolBlock = 8192;

// Twice the base-8 logarithm of the point count, rounded up. A count below two has no
// logarithm worth taking (ln 0 is -inf, ln of a negative count NaN), and gives 0.
int computeDepthLimit(int numVertices) {
    if (numVertices < 2) {
        return 0;
    }
    return static_cast<int>(
        std::ceil(2.0 * std::log(static_cast<double>(numVertices)) / std::log(8.0)));
}

// `box` with every axis shorter than s widened to s about the box's centre; s is a thousandth
// of the longest extent, but never so small that the deepest cells underflow.
BoundingBox computeRootBox(const BoundingBox& box, int depthLimit) {
    float extent[3];
    box.diagonal(extent);
    float s = std::max({extent[0], extent[1], extent[2]}) / 1000.0f;
    s = std::max(s, std::ldexp(FLT_MIN, depthLimit + 1));
    const koLinear::PointFlt centre = box.center();
    float min[3];
    float max[3];
    box.minPt(min);
    box.maxPt(max);
    for (int axis = 0; axis < 3; ++axis) {
        if (extent[axis] < s) {
            min[axis] = centre[axis] - 0.5f * s;
            max[axis] = centre[axis] + 0.5f * s;
        }
    }
    return BoundingBox(min, max);
}

bool isFlat(const BoundingBox& cell) {
    const koLinear::PointFlt min = cell.minPt();
    const koLinear::PointFlt max = cell.maxPt();
    return min.x == max.x || min.y == max.y || min.z == max.z;
}

} // namespace

Octree::Octree(int numVertices, const float* vertices, const BoundingBox& box, bool keepEmptyCells,
               int vertsPerLeaf)
    : vertices_(vertices),
      vertsPerLeaf_(vertsPerLeaf),
      numVertices_(numVertices),
      keepEmptyCells_(keepEmptyCells) {
    const int depthLimit = computeDepthLimit(numVertices);
    rootBox_ = computeRootBox(box, depthLimit);

    // A negative count wraps to a size no heap can give, so it fails with std::bad_alloc.
    remap_.reset(new int[static_cast<std::size_t>(numVertices)]);
    int* remap = remap_.get();
    for (int i = 0; i < numVertices; ++i) {
        remap[i] = i;
    }
    OctreePartitionData data(numVertices);

    nodePool_ = std::make_shared<koOS::FSAllocator>(sizeof(Node), nodesPerPoolBlock);
    nodePool_->setLazy();

    const koOS::StopWatch watch;
    ++numNodes_;
    root_ = allocNode(0, numVertices, data);
    // The root is split however close its points lie: only its children are tested for
    // separability.
    if (numVertices > vertsPerLeaf) {
        maxDepth_ = recursivePartition(root_, rootBox_, 2, depthLimit, data);
    }
    partitionTime_ = watch.stop();
    numLeafNodes_ = data.leafNumCounter;

    debugChannel().print(
        "Octree: vertices(%d) vertsPerLeaf(%d) numNodes(%d)\n        maxDepth(%d): %f s\n",
        numVertices_, vertsPerLeaf_, numNodes_, maxDepth_, partitionTime_);
}

Octree::Octree(const Octree& other) = default;

Octree::~Octree() = default;

OctreeIterator Octree::getRoot() const noexcept { return OctreeIterator(root_, rootBox_); }

int Octree::numBytesUsed() const noexcept {
    return static_cast<int>(sizeof(Octree)) + numVertices_ * static_cast<int>(sizeof(int)) +
           numNodes_ * static_cast<int>(sizeof(Node));
}

void Octree::getNodeOrdering(const koLinear::Vector& direction, int order[8]) noexcept {
    double score[8];
    for (int octant = 0; octant < 8; ++octant) {
        score[octant] = ((octant & 1) ? 1.0 : -1.0) * direction.x +
                        ((octant & 2) ? 1.0 : -1.0) * direction.y +
                        ((octant & 4) ? 1.0 : -1.0) * direction.z;
    }
    // Insertion by ascending score; an octant goes after every one with an equal score, so
    // ties keep ascending octant numbers.
    for (int i = 0; i < 8; ++i) {
        int j = i;
        for (; j > 0 && score[order[j - 1]] > score[i]; --j) {
            order[j] = order[j - 1];
        }
        order[j] = i;
    }
}

Octree::Node* Octree::allocNode(int first, int end, OctreePartitionData& data) {
    Node* node = static_cast<Node*>(nodePool_->alloc());
    node->isLeaf = true;
    std::fill_n(node->children, 8, nullptr);
    node->leaf.first = first;
    node->leaf.end = end;
    if (data.freeLeafNums.empty()) {
        node->leaf.leafNum = data.leafNumCounter++;
    } else {
        node->leaf.leafNum = data.freeLeafNums.back();
        data.freeLeafNums.pop_back();
    }
    return node;
}

inline int Octree::locate(int slot, const float* point) const noexcept {
    const float* p = vertices_ + 3 * static_cast<std::ptrdiff_t>(remap_[slot]);
    return (p[0] >= point[0] ? 1 : 0) | (p[1] >= point[1] ? 2 : 0) | (p[2] >= point[2] ? 4 : 0);
}

// A stable counting sort of the cell's slots by octant: one pass codes and counts, one
// scatters the point indices into the scratch array, and they are copied back.
void Octree::partition(Node* node, const BoundingBox& cell, OctreePartitionData& data) {
    const int first = node->leaf.first;
    const int end = node->leaf.end;
    float centre[3];
    cell.center(centre);
    const bool flat = isFlat(cell);

    int* codes = data.codes.get();
    int count[8] = {};
    for (int i = first; i < end; ++i) {
        const int code = locate(i, centre);
        codes[i] = code;
        ++count[code];
    }
    int start[9];
    start[0] = first;
    for (int k = 0; k < 8; ++k) {
        start[k + 1] = start[k] + count[k];
    }

    // The split leaf's number is handed to the next leaf made, its first child.
    data.freeLeafNums.push_back(node->leaf.leafNum);
    node->isLeaf = false;
    Node* children[8];
    for (int k = 0; k < 8; ++k) {
        if (start[k] == start[k + 1] && (flat || !keepEmptyCells_)) {
            children[k] = nullptr;
        } else {
            ++numNodes_;
            children[k] = allocNode(start[k], start[k + 1], data);
        }
    }
    std::copy_n(children, 8, node->children);

    int* remap = remap_.get();
    int* scratch = data.scratch.get();
    for (int i = first; i < end; ++i) {
        scratch[start[codes[i]]++] = remap[i];
    }
    std::copy(scratch + first, scratch + end, remap + first);
}

int Octree::recursivePartition(Node* node, const BoundingBox& cell, int depth, int depthLimit,
                               OctreePartitionData& data) {
    partition(node, cell, data);
    int result = depth;
    for (int k = 0; k < 8; ++k) {
        Node* child = node->children[k];
        if (child == nullptr) {
            continue;
        }
        const int first = child->leaf.first;
        const int end = child->leaf.end;
        if (depth <= depthLimit && end - first > vertsPerLeaf_ && isSeparable(first, end)) {
            BoundingBox childCell;
            getSubBox(k, cell, childCell);
            result =
                std::max(result, recursivePartition(child, childCell, depth + 1, depthLimit, data));
        }
    }
    return result;
}

// Separable when some point differs from the first on some axis by more than one float step:
// beyond the next float from the first point towards it.
bool Octree::isSeparable(int first, int end) const noexcept {
    if (end - first < 2) {
        return false;
    }
    const int* remap = remap_.get();
    const float* p = vertices_ + 3 * static_cast<std::ptrdiff_t>(remap[first]);
    for (int i = first + 1; i < end; ++i) {
        const float* q = vertices_ + 3 * static_cast<std::ptrdiff_t>(remap[i]);
        for (int axis = 0; axis < 3; ++axis) {
            const float step = std::nextafter(p[axis], q[axis]);
            if (q[axis] > step || q[axis] < step) {
                return true;
            }
        }
    }
    return false;
}

void Octree::getSubBox(int octant, const BoundingBox& cell, BoundingBox& out) noexcept {
    float centre[3];
    float min[3];
    float max[3];
    cell.center(centre);
    cell.minPt(min);
    cell.maxPt(max);
    for (int axis = 0; axis < 3; ++axis) {
        if (octant & (1 << axis)) {
            min[axis] = centre[axis];
        } else {
            max[axis] = centre[axis];
        }
    }
    out = BoundingBox(min, max);
}

} // namespace koGeom
