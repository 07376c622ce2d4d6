#include "geom/spatial/Quadtree.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>

#include "tessar/core/ReferenceCount.h"
#include "tessar/os/StopWatch.h"

namespace koGeom {

// The nodes and the remap of a tree, shared by the tree and its copies and released with the
// last of them.
struct QuadtreeStorage : ko::ReferenceCount {
    ~QuadtreeStorage() override {
        release(root);
        delete[] remap;
    }

    // Children before their parent.
    static void release(Quadtree::Node* node) {
        if (node == nullptr) {
            return;
        }
        if (!node->isLeaf) {
            for (Quadtree::Node* child : node->children) {
                release(child);
            }
        }
        delete node;
    }

    int* remap = nullptr;
    Quadtree::Node* root = nullptr;
};

namespace {

Quadtree::Node* newLeaf(int first, int end) {
    Quadtree::Node* node = new Quadtree::Node;
    node->isLeaf = true;
    node->leaf = {first, end};
    return node;
}

// Both equal, or both NaN: two such values fall on the same side of every centre.
bool sameSide(float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); }

bool sameCell2D(const BoundingBox& a, const BoundingBox& b) {
    const koLinear::PointFlt aMin = a.minPt();
    const koLinear::PointFlt aMax = a.maxPt();
    const koLinear::PointFlt bMin = b.minPt();
    const koLinear::PointFlt bMax = b.maxPt();
    return std::bit_cast<std::uint32_t>(aMin.x) == std::bit_cast<std::uint32_t>(bMin.x) &&
           std::bit_cast<std::uint32_t>(aMin.y) == std::bit_cast<std::uint32_t>(bMin.y) &&
           std::bit_cast<std::uint32_t>(aMax.x) == std::bit_cast<std::uint32_t>(bMax.x) &&
           std::bit_cast<std::uint32_t>(aMax.y) == std::bit_cast<std::uint32_t>(bMax.y);
}

} // namespace

Quadtree::Quadtree(int numVertices, const float* vertices, const BoundingBox& box)
    : box_(box), vertices_(vertices), numVertices_(numVertices) {
    storage_ = new QuadtreeStorage;
    const std::size_t count = static_cast<std::size_t>(numVertices);
    remap_ = storage_->remap = new int[count];
    for (int i = 0; i < numVertices; ++i) {
        remap_[i] = i;
    }
    const std::unique_ptr<int[]> codes(new int[count]);
    const std::unique_ptr<int[]> scratch(new int[count]);
    const koOS::StopWatch watch;
    numNodes_ += 1;
    root_ = storage_->root = newLeaf(0, numVertices);
    if (numVertices > vertsPerLeaf) {
        maxDepth_ = recursivePartition(root_, box_, codes.get(), scratch.get(), 2);
    }
    partitionTime_ = watch.stop();
}

Quadtree::~Quadtree() = default;

Quadtree::Quadtree(const Quadtree& other) noexcept = default;

Quadtree& Quadtree::operator=(const Quadtree& other) noexcept = default;

int Quadtree::locate(int slot, const float* point) const noexcept {
    const float* p = vertices_ + 2 * static_cast<std::ptrdiff_t>(remap_[slot]);
    return (p[0] >= point[0] ? 1 : 0) | (p[1] >= point[1] ? 2 : 0);
}

bool Quadtree::coincide(int first, int end) const noexcept {
    const float* p = vertices_ + 2 * static_cast<std::ptrdiff_t>(remap_[first]);
    for (int i = first + 1; i < end; ++i) {
        const float* q = vertices_ + 2 * static_cast<std::ptrdiff_t>(remap_[i]);
        if (!sameSide(p[0], q[0]) || !sameSide(p[1], q[1])) {
            return false;
        }
    }
    return true;
}

// Splits a leaf into four leaves at the cell's centre, reordering its slots by a stable
// counting sort. Returns false, leaving the leaf as it is, when splitting would hand all its
// points to one quadrant whose cell is this cell again.
bool Quadtree::partition(Node* node, const BoundingBox& cell, int* codes, int* scratch) {
    const int first = node->leaf.first;
    const int end = node->leaf.end;
    const koLinear::PointFlt centre = cell.center();
    const float c[2] = {centre.x, centre.y};
    int count[4] = {0, 0, 0, 0};
    for (int i = first; i < end; ++i) {
        const int quadrant = locate(i, c);
        codes[i] = quadrant;
        ++count[quadrant];
    }
    for (int k = 0; k < 4; ++k) {
        if (count[k] == end - first) {
            BoundingBox sub;
            getSubBox(k, cell, sub);
            if (sameCell2D(sub, cell)) {
                return false;
            }
        }
    }
    int start[5];
    start[0] = first;
    for (int k = 0; k < 4; ++k) {
        start[k + 1] = start[k] + count[k];
    }
    node->isLeaf = false;
    std::fill(std::begin(node->children), std::end(node->children), nullptr);
    for (int k = 0; k < 4; ++k) {
        numNodes_ += 1;
        node->children[k] = newLeaf(start[k], start[k + 1]);
    }
    for (int i = first; i < end; ++i) {
        scratch[start[codes[i]]++] = remap_[i];
    }
    std::copy(scratch + first, scratch + end, remap_ + first);
    return true;
}

int Quadtree::recursivePartition(Node* node, const BoundingBox& cell, int* codes, int* scratch,
                                 int depth) {
    if (coincide(node->leaf.first, node->leaf.end) || !partition(node, cell, codes, scratch)) {
        return depth - 1;
    }
    int result = depth;
    for (int k = 0; k < 4; ++k) {
        const Node* child = node->children[k];
        if (child->leaf.end - child->leaf.first > vertsPerLeaf) {
            BoundingBox sub;
            getSubBox(k, cell, sub);
            result = std::max(
                result, recursivePartition(node->children[k], sub, codes, scratch, depth + 1));
        }
    }
    return result;
}

void Quadtree::getSubBox(int quadrant, const BoundingBox& cell, BoundingBox& out) noexcept {
    const koLinear::PointFlt min = cell.minPt();
    const koLinear::PointFlt max = cell.maxPt();
    const koLinear::PointFlt centre = cell.center();
    const float subMin[3] = {(quadrant & 1) ? centre.x : min.x, (quadrant & 2) ? centre.y : min.y,
                             0.0f};
    const float subMax[3] = {(quadrant & 1) ? max.x : centre.x, (quadrant & 2) ? max.y : centre.y,
                             0.0f};
    out = BoundingBox(subMin, subMax);
}

void Quadtree::getNodeOrdering(const koLinear::Vector& direction, int order[4]) noexcept {
    double score[4];
    for (int k = 0; k < 4; ++k) {
        score[k] = ((k & 1) ? 1.0 : -1.0) * direction.x + ((k & 2) ? 1.0 : -1.0) * direction.y +
                   0.0 * direction.z;
    }
    // Insertion sort: stable, so equal scores keep ascending quadrant order.
    for (int k = 0; k < 4; ++k) {
        int i = k;
        for (; i > 0 && score[k] < score[order[i - 1]]; --i) {
            order[i] = order[i - 1];
        }
        order[i] = k;
    }
}

} // namespace koGeom
