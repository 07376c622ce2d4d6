#include "geom/spatial/Quadtree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace koGeom {
namespace {

struct Census {
    int nodes = 0;
    int depth = 0;
    int nextSlot = 0;
    int biggestLeaf = 0;
};

// Every inner node has four children and cells below the root have z = 0; leaves tile the
// remap in order, and each holds exactly the points whose walk from the root by the centre
// comparisons ends in it, in input order.
void survey(const Quadtree& tree, const QuadtreeIterator& at, int level, Census& census) {
    ++census.nodes;
    census.depth = std::max(census.depth, level);
    EXPECT_TRUE(level == 1 || (at.getBox().minPt().z == 0 && at.getBox().maxPt().z == 0));
    for (int k = 0; k < 4 && !at.isLeaf(); ++k) {
        QuadtreeIterator child = at;
        ASSERT_TRUE(child.descend(k));
        survey(tree, child, level + 1, census);
    }
    int first = 0;
    int end = 0;
    if (at.isLeaf()) {
        at.getVertexRange(first, end);
        ASSERT_EQ(first, census.nextSlot);
        census.nextSlot = end;
        census.biggestLeaf = std::max(census.biggestLeaf, end - first);
    }
    for (int slot = first; slot < end; ++slot) {
        const int index = tree.getRemap()[slot];
        EXPECT_TRUE(slot == first || tree.getRemap()[slot - 1] < index);
        const float* p = tree.getVertices() + 2 * index;
        QuadtreeIterator walk = tree.getRoot();
        while (!walk.isLeaf()) {
            const koLinear::PointFlt c = walk.getBox().center();
            walk.descend((p[0] >= c.x ? 1 : 0) | (p[1] >= c.y ? 2 : 0));
        }
        EXPECT_EQ(walk.getNode(), at.getNode()) << "point " << index;
    }
}

Census checkTree(const Quadtree& tree) {
    Census census;
    survey(tree, tree.getRoot(), 1, census);
    EXPECT_EQ(census.nextSlot, tree.numVertices());
    EXPECT_EQ(census.nodes, tree.numNodes());
    EXPECT_EQ(census.depth, tree.maxDepth());
    return census;
}

const float unitBox[6] = {0, 0, -3, 1, 1, 5};
const BoundingBox unit(unitBox, unitBox + 3);

TEST(Quadtree, MatchesCentreRuleOnRandomClouds) {
    // Uniform, clustered, on a 1/16 grid (many points on centre lines), spilling outside.
    for (int shape = 0; shape < 4; ++shape) {
        for (int n : {0, 300, 301, 5000, 40000}) {
            SCOPED_TRACE(testing::Message() << "shape " << shape << " n " << n);
            std::mt19937 random(shape * 100 + n);
            std::uniform_real_distribution<float> uniform(0.0f, 1.0f);
            std::normal_distribution<float> cluster(0.3f, 0.02f);
            std::vector<float> points(2 * n);
            for (float& v : points) {
                v = shape == 0   ? uniform(random)
                    : shape == 1 ? cluster(random)
                    : shape == 2 ? std::floor(uniform(random) * 16) / 16
                                 : uniform(random) * 1.1f - 0.05f;
            }
            const Quadtree tree(n, points.data(), unit);
            EXPECT_LE(checkTree(tree).biggestLeaf, Quadtree::vertsPerLeaf);
            EXPECT_EQ(tree.getRoot().getBox().minPt().z, -3.0f);
            EXPECT_EQ(tree.numNodes() == 1 && tree.maxDepth() == 1, n <= 300);
            EXPECT_TRUE(n <= 300 || (tree.numNodes() >= 5 && tree.maxDepth() >= 2));
        }
    }
}

// Cells whose points can never be told apart stay over-full leaves instead of splitting
// forever: coincident points (in a box, then in a point-sized box), points a float step apart
// in a cell shrunk to that step, and points outside the box beyond a corner.
TEST(Quadtree, UnseparablePointsEndAsOneOverfullLeaf) {
    const float step = std::nextafter(1.0f, 2.0f);
    const float narrow[6] = {1, 0, 0, step, 1, 0};
    const float quarter[3] = {0.25f, 0.25f, 0};
    const struct {
        float x0, x1, y;
        BoundingBox box;
        int biggestLeaf;
    } cases[] = {{0.25f, 0.25f, 0.25f, unit, 700},
                 {0.25f, 0.25f, 0.25f, BoundingBox(quarter), 702},
                 {1.0f, step, 0.5f, BoundingBox(narrow, narrow + 3), 700},
                 {2.0f, 3.0f, 2.5f, unit, 700}};
    for (const auto& c : cases) {
        std::vector<float> points;
        for (int i = 0; i < 700; ++i) {
            points.insert(points.end(), {i % 2 == 0 ? c.x0 : c.x1, c.y});
        }
        points.insert(points.end(), {0.75f, 0.75f, 0.6f, 0.6f});
        const Quadtree tree(702, points.data(), c.box);
        EXPECT_EQ(checkTree(tree).biggestLeaf, c.biggestLeaf);
    }
}

TEST(Quadtree, NodeOrderingAndDescent) {
    const double directions[3][3] = {{1, 0, 5}, {0, 0, 0}, {-1, -2, 0}};
    const std::vector<int> expected[3] = {{0, 2, 1, 3}, {0, 1, 2, 3}, {3, 2, 1, 0}};
    for (int d = 0; d < 3; ++d) {
        int order[4];
        Quadtree::getNodeOrdering({directions[d][0], directions[d][1], directions[d][2]}, order);
        EXPECT_EQ(std::vector<int>(order, order + 4), expected[d]);
    }
    const float point[] = {0.5f, 0.5f};
    const Quadtree tree(1, point, unit);
    QuadtreeIterator at = tree.getRoot();
    EXPECT_FALSE(at.descend(0));
    EXPECT_EQ(at.getNode(), tree.getRoot().getNode());
    EXPECT_FALSE(QuadtreeIterator().valid());
}

// Deliberate: assignment shares the source's cells; each copy may outlive the others.
TEST(Quadtree, DeliberateAssignmentSharesCells) {
    std::vector<float> points(2 * 1000);
    std::mt19937 random(7);
    for (float& v : points) {
        v = std::uniform_real_distribution<float>(0.0f, 1.0f)(random);
    }
    auto source = std::make_unique<Quadtree>(1000, points.data(), unit);
    Quadtree target(1, points.data(), unit);
    target = *source;
    EXPECT_EQ(target.getRemap(), source->getRemap());
    EXPECT_EQ(target.getRoot().getNode(), source->getRoot().getNode());
    const Quadtree copy(target);
    target = Quadtree(5, points.data(), unit);
    source.reset();
    checkTree(copy);
}

} // namespace
} // namespace koGeom
