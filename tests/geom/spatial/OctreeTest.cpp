#include "geom/spatial/Octree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "geom/spatial/OctreeLines.h"
#include "geom/spatial/OctreeTris.h"
#include "tessar/core/Reference.h"
#include "tests/support/PrintedText.h"

namespace koGeom {
namespace {

using Points = std::vector<float>;

int depthLimitOf(int n) { return static_cast<int>(std::ceil(2 * std::log(n) / std::log(8.0))); }

BoundingBox boundsOf(const Points& p) {
    BoundingBox box;
    box.setInvalid();
    for (std::size_t i = 0; i < p.size(); i += 3) box.extend({p[i], p[i + 1], p[i + 2]});
    return box;
}

bool withinOneStep(float a, float b) { return a == b || std::nextafter(a, b) == b; }

// The first rule the tree breaks, empty when sound: the remap is a permutation; each point,
// descended by centre comparisons from the root, reaches the leaf whose range holds it; ranges
// keep point order; octants are left out, or kept empty, by the empty-cell rule; an over-full
// leaf is at the depth limit or holds one cluster, and no level lies below that limit (the root,
// split, makes level 2 for any limit); the counts, depth and leaf numbers match.
std::string check(const Octree& tree, const Points& p, int vertsPerLeaf, bool keep) {
    const int n = tree.numVertices();
    const int* remap = tree.getRemap();
    std::vector<int> slotOf(n, -1), leafNums(tree.numLeafNodes(), 0);
    for (int s = 0; s < n; ++s) {
        if (remap[s] < 0 || remap[s] >= n || slotOf[remap[s]] != -1) return "not a permutation";
        slotOf[remap[s]] = s;
    }
    std::string error;
    int nodes = 0, depth = 0;
    // Returns the number of points under the node.
    const auto walk = [&](auto& self, const OctreeIterator& it, int level) -> int {
        ++nodes;
        depth = std::max(depth, level);
        int first = 0, end = 0;
        if (it.isLeaf()) {
            it.getVertexRange(first, end);
            ++leafNums.at(it.getLeafNum());
            bool cluster = true;
            for (int i = first; i < end; ++i) {
                if (i > first && remap[i - 1] > remap[i]) error = "leaf out of point order";
                for (int a = 0; a < 3; ++a)
                    cluster &= withinOneStep(p[3 * remap[first] + a], p[3 * remap[i] + a]);
            }
            if (end - first > vertsPerLeaf && level > 1 && !cluster && level != depthLimitOf(n) + 1)
                error = "over-full separable leaf above the depth limit";
            return end - first;
        }
        int count = 0;
        const BoundingBox cell = it.getBox();
        const bool flat = cell.minPt().x == cell.maxPt().x || cell.minPt().y == cell.maxPt().y ||
                          cell.minPt().z == cell.maxPt().z;
        for (int k = 0; k < 8; ++k) {
            OctreeIterator child = it;
            const bool present = child.descend(k);
            if (present && child.isLeaf()) child.getVertexRange(first, end);
            if (present ? (first == end && child.isLeaf() && (flat || !keep)) : (keep && !flat))
                error = "octant kept or left out against the empty-cell rule";
            if (present) count += self(self, child, level + 1);
        }
        if (level > 1 && count <= vertsPerLeaf) error = "a cell split without need";
        return count;
    };
    walk(walk, tree.getRoot(), 1);
    for (int i = 0; i < n; ++i) {
        OctreeIterator it = tree.getRoot();
        for (bool down = true; down && !it.isLeaf();) {
            const koLinear::PointFlt c = it.getBox().center();
            down = it.descend((p[3 * i] >= c.x) | (p[3 * i + 1] >= c.y) << 1 |
                              (p[3 * i + 2] >= c.z) << 2);
        }
        int first = 0, end = 0;
        if (it.isLeaf()) it.getVertexRange(first, end);
        if (slotOf[i] < first || slotOf[i] >= end) error = "point off its leaf";
    }
    if (nodes != tree.numNodes() || depth != tree.maxDepth() ||
        depth > std::max(depthLimitOf(n) + 1, 2))
        error = "node count or depth";
    if (std::count(leafNums.begin(), leafNums.end(), 1) != tree.numLeafNodes())
        error = "leaf numbers not dense";
    return error;
}

enum class Cloud { Uniform, EqualZ, Clusters, Outside };

Points makeCloud(Cloud shape, int n, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> u(-10.0f, 10.0f);
    Points p(3 * n);
    for (int i = 0; i < n; ++i) {
        for (int a = 0; a < 3; ++a) p[3 * i + a] = u(random);
        if (shape == Cloud::EqualZ) p[3 * i + 2] = 2.5f;
        if (shape == Cloud::Clusters && i % 4 != 0) { // repeats, exact and one float step off
            for (int a = 0; a < 3; ++a) p[3 * i + a] = p[3 * (i - i % 4) + a];
            if (i % 4 == 3) p[3 * i] = std::nextafter(p[3 * i], 100.0f);
        }
    }
    return p;
}

TEST(Octree, RandomCloudsMatchBruteForce) {
    for (Cloud shape : {Cloud::Uniform, Cloud::EqualZ, Cloud::Clusters, Cloud::Outside}) {
        for (int n : {1, 9, 700, 5000}) {
            for (auto [vertsPerLeaf, keep] :
                 {std::pair{0, true}, {1, false}, {8, true}, {8, false}}) {
                SCOPED_TRACE(testing::Message() << int(shape) << " " << n << " " << vertsPerLeaf);
                const Points p = makeCloud(shape, n, 17u + n);
                BoundingBox box = boundsOf(p);
                if (shape == Cloud::Outside) box.scale(0.5f);
                const Octree tree(n, p.data(), box, keep, vertsPerLeaf);
                EXPECT_EQ(check(tree, p, vertsPerLeaf, keep), "");
                EXPECT_EQ(tree.numBytesUsed(), int(sizeof(Octree)) + 4 * n +
                                                   tree.numNodes() * int(sizeof(Octree::Node)));
            }
        }
    }
    // A degenerate box is widened only by a few FLT_MIN, which rounds away at 1: every cell is
    // flat, so even with keepEmptyCells the root's eight octants each grow one chain of single
    // children down to the depth limit, 6 for 300 points.
    const Points p = makeCloud(Cloud::Uniform, 300, 5);
    const float one[3] = {1, 1, 1};
    const Octree tree(300, p.data(), BoundingBox(one), true, 4);
    EXPECT_EQ(check(tree, p, 4, true), "");
    EXPECT_EQ(std::tuple(tree.numNodes(), tree.maxDepth()), std::tuple(1 + 8 * 6, 7));
}

TEST(Octree, HandWorkedTreeNumbersLeavesAndDescends) {
    // Root cell [0,4]^3, centre (2,2,2): one point in each octant but 3, which holds C and D.
    // Cell 3 is [2,4]x[2,4]x[0,2]; C lies on its centre and D above, both in its octant 7,
    // whose centre is D. Nine points allow depth 4.
    const Points p = {1, 1, 1, 3, 1, 1, 3, 3, 1, 3.5f, 3.5f, 1.5f, 1, 1,
                      3, 3, 1, 3, 1, 3, 3, 3, 3, 3,    1,    3,    1};
    const float lo[3] = {0, 0, 0}, hi[3] = {4, 4, 4};
    const Octree tree(9, p.data(), BoundingBox(lo, hi), false, 1);
    EXPECT_EQ(std::tuple(tree.numNodes(), tree.numLeafNodes(), tree.maxDepth()),
              std::tuple(12, 9, 4));
    const std::vector<int> path[] = {{0}, {1}, {3, 7, 0}, {3, 7, 7}, {4}, {5}, {6}, {7}, {2}};
    // A split leaf's number goes to its first child: cell 3 had 3, so C has it; D is new.
    const int leafNum[] = {0, 1, 3, 8, 4, 5, 6, 7, 2};
    for (int i = 0; i < 9; ++i) {
        OctreeIterator it = tree.getRoot();
        for (int k : path[i]) ASSERT_TRUE(it.descend(k));
        int first, end;
        it.getVertexRange(first, end);
        EXPECT_EQ(std::tuple(it.descend(0), end - first, tree.getRemap()[first], it.getLeafNum()),
                  std::tuple(false, 1, i, leafNum[i])); // a leaf: descending changes nothing
    }
    OctreeIterator cell = tree.getRoot();
    ASSERT_TRUE(cell.descend(3));
    EXPECT_FALSE(cell.descend(2)); // an absent octant
    EXPECT_FALSE(OctreeIterator().valid());
}

TEST(Octree, RootCellWidensThinAxesOnly) {
    // Axes shorter than a thousandth of the longest widen to it; a point box widens to
    // FLT_MIN * 2^(depthLimit + 1), here 2^4 for nine points.
    const float m = 8 * FLT_MIN;
    const std::array<float, 12> cases[] = {{0, 0, 5, 1000, 10, 5, 0, 0, 4.5f, 1000, 10, 5.5f},
                                           {0, 0, 0, 0, 0, 0, -m, -m, -m, m, m, m}};
    const Points p(27, 0.0f);
    for (const auto& c : cases) {
        const Octree tree(9, p.data(), BoundingBox(&c[0], &c[3]), false, 9);
        EXPECT_TRUE(equivalent(tree.getRoot().getBox(), BoundingBox(&c[6], &c[9]), m / 100));
    }
}

TEST(Octree, CoincidentPointsSplitTheRootOnce) {
    // Deliberate: points within one float step stay one over-full leaf, but the root is always
    // split. Two steps apart they are separable and go down a chain to the depth limit (5).
    const float lo[3] = {0, 0, 0}, hi[3] = {1, 1, 1};
    for (auto [steps, nodes, depth] : {std::array{0, 2, 2}, {1, 2, 2}, {2, 5, 5}}) {
        Points p(3 * 50, 0.25f);
        for (int s = 0; s < steps; ++s) p[3] = std::nextafter(p[3], 1.0f);
        const Octree tree(50, p.data(), BoundingBox(lo, hi), false, 4);
        EXPECT_EQ(std::tuple(tree.numNodes(), tree.numLeafNodes(), tree.maxDepth()),
                  std::tuple(nodes, 1, depth));
    }
    // Fewer points than the leaf holds: the root stays a leaf.
    const Points three = makeCloud(Cloud::Uniform, 3, 1);
    const Octree small(3, three.data(), BoundingBox(), false, 3);
    EXPECT_EQ(std::tuple(small.numNodes(), small.numLeafNodes(), small.maxDepth()),
              std::tuple(1, 1, 1));
}

TEST(Octree, NodeOrderingSortsOctantsFrontToBack) {
    const auto ordering = [](const koLinear::Vector& d) {
        std::vector<int> order(8);
        Octree::getNodeOrdering(d, order.data());
        return order;
    };
    std::mt19937 random(3);
    std::uniform_int_distribution<int> component(-2, 2); // small integers make ties
    for (int trial = 0; trial < 200; ++trial) {
        const koLinear::Vector d(component(random), component(random), component(random));
        // The child cells of [-1,1]^3 stably sorted by how far their centres lie along d.
        std::vector<int> expected = {0, 1, 2, 3, 4, 5, 6, 7};
        const auto along = [&](int k) {
            return (k & 1 ? 0.5 : -0.5) * d.x + (k & 2 ? 0.5 : -0.5) * d.y +
                   (k & 4 ? 0.5 : -0.5) * d.z;
        };
        std::stable_sort(expected.begin(), expected.end(),
                         [&](int a, int b) { return along(a) < along(b); });
        EXPECT_EQ(ordering(d), expected);
    }
}

TEST(Octree, PrintsStatisticsOnTheDebugChannel) {
    const Points p = makeCloud(Cloud::Uniform, 40, 4);
    std::unique_ptr<Octree> tree;
    const std::string printed = koGeomTest::printedText(
        [&](auto&) { tree = std::make_unique<Octree>(40, p.data(), boundsOf(p), false, 8); });
    char expected[200];
    std::snprintf(expected, sizeof expected,
                  "Octree: vertices(40) vertsPerLeaf(8) numNodes(%d)\n        maxDepth(%d): %f s\n",
                  tree->numNodes(), tree->maxDepth(), tree->partitionTime());
    EXPECT_EQ(printed, expected);
}

TEST(Octree, DeliberateCopySharesTheTreeAndOutlivesItsSource) {
    const Points p = makeCloud(Cloud::Uniform, 500, 6);
    ko::Reference<Octree> source(new Octree(500, p.data(), boundsOf(p), false, 8));
    ko::Reference<Octree> copy(new Octree(*source));
    EXPECT_EQ(copy->getRemap(), source->getRemap());
    source.reset(); // the pool and remap live on with the copy
    EXPECT_EQ(check(*copy, p, 8, false), "");
}

TEST(Octree, VoxelListsTakeTheirSetsBySwap) {
    ArrayOfSets sets;
    const int pairs[] = {0, 7, 2, 5, 0, 9};
    sets.assignFromPairs(3, 3, pairs);
    OctreeTris tris(sets), other;
    const OctreeTris copy(tris);
    other.swap(tris);
    EXPECT_EQ(
        std::tuple(sets.getNumSets(), other.numTris(0), other.firstTri(0)[1], other.firstTri(2)[0],
                   tris.numVoxels(), copy.numVoxels(), copy.numBytesUsed()),
        std::tuple(0, 2, 9, 5, 0, 3, int(sizeof(OctreeTris)) + 4 * (3 + 3)));
    sets.assignFromPairs(3, 3, pairs);
    const OctreeLines lines(sets);
    EXPECT_EQ(std::tuple(lines.numLines(2), lines.firstLine(0)[0]), std::tuple(1, 7));
}

} // namespace
} // namespace koGeom
