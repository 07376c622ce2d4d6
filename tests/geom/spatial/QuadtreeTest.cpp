#include "geom/spatial/Quadtree.h"

#include <gtest/gtest.h>

#include <cmath>
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

// Walks the whole tree: every inner node has four children, leaves tile the remap in order,
// and each leaf holds exactly the points whose walk from the root, by the centre comparisons,
// ends in its cell; within a leaf the points keep their input order.
void survey(const Quadtree& tree, QuadtreeIterator at, int level, Census& census) {
    ++census.nodes;
    census.depth = std::max(census.depth, level);
    if (level > 1) {
        EXPECT_EQ(at.getBox().minPt().z, 0.0f);
        EXPECT_EQ(at.getBox().maxPt().z, 0.0f);
    }
    if (!at.isLeaf()) {
        for (int k = 0; k < 4; ++k) {
            QuadtreeIterator child = at;
            ASSERT_TRUE(child.descend(k));
            survey(tree, child, level + 1, census);
        }
        return;
    }
    int first = 0;
    int end = 0;
    at.getVertexRange(first, end);
    ASSERT_EQ(first, census.nextSlot);
    census.nextSlot = end;
    census.biggestLeaf = std::max(census.biggestLeaf, end - first);
    for (int slot = first; slot < end; ++slot) {
        const int index = tree.getRemap()[slot];
        if (slot > first) {
            EXPECT_LT(tree.getRemap()[slot - 1], index);
        }
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

TEST(Quadtree, MatchesCentreRuleOnRandomClouds) {
    // Uniform, clustered, on a 1/16 grid (many points on centre lines) and spilling outside.
    for (int shape = 0; shape < 4; ++shape) {
        for (int n : {0, 1, 300, 301, 5000, 40000}) {
            SCOPED_TRACE(testing::Message() << "shape " << shape << " n " << n);
            std::mt19937 random(shape * 100 + n);
            std::uniform_real_distribution<float> unit(0.0f, 1.0f);
            std::normal_distribution<float> cluster(0.3f, 0.02f);
            std::vector<float> points(2 * n);
            for (float& v : points) {
                v = shape == 0   ? unit(random)
                    : shape == 1 ? cluster(random)
                    : shape == 2 ? std::floor(unit(random) * 16) / 16
                                 : unit(random) * 1.1f - 0.05f;
            }
            const Quadtree tree(n, points.data(), BoundingBox(unitBox, unitBox + 3));
            const Census census = checkTree(tree);
            EXPECT_LE(census.biggestLeaf, Quadtree::vertsPerLeaf);
            EXPECT_EQ(tree.getRoot().getBox().minPt().z, -3.0f);
            if (n <= 300) {
                EXPECT_EQ(tree.numNodes(), 1);
                EXPECT_EQ(tree.maxDepth(), 1);
            } else {
                EXPECT_GE(tree.numNodes(), 5);
                EXPECT_GE(tree.maxDepth(), 2);
            }
        }
    }
}

// Cells whose points can never be told apart stay over-full leaves instead of splitting
// forever: coincident points, points a float step apart in a cell that has shrunk to that
// step, and points outside the box beyond a corner.
TEST(Quadtree, UnseparablePointsEndAsOneOverfullLeaf) {
    const float step = std::nextafter(1.0f, 2.0f);
    struct Case {
        float x0, x1, y;
        BoundingBox box;
        bool rootSplits;
    };
    const float narrow[6] = {1, 0, 0, step, 1, 0};
    const float point[3] = {0.25f, 0.25f, 0};
    const Case cases[] = {
        {0.25f, 0.25f, 0.25f, BoundingBox(unitBox, unitBox + 3), true},
        {0.25f, 0.25f, 0.25f, BoundingBox(point), false},
        {1.0f, step, 0.5f, BoundingBox(narrow, narrow + 3), true},
        {2.0f, 3.0f, 2.5f, BoundingBox(unitBox, unitBox + 3), true},
    };
    for (const Case& c : cases) {
        std::vector<float> points;
        for (int i = 0; i < 700; ++i) {
            points.insert(points.end(), {i % 2 == 0 ? c.x0 : c.x1, c.y});
        }
        points.insert(points.end(), {0.75f, 0.75f, 0.6f, 0.6f});
        const Quadtree tree(702, points.data(), c.box);
        const Census census = checkTree(tree);
        EXPECT_EQ(census.biggestLeaf, c.rootSplits ? 700 : 702);
        EXPECT_EQ(tree.maxDepth() > 1, c.rootSplits);
    }
}

TEST(Quadtree, NodeOrderingFollowsDirection) {
    int order[4];
    Quadtree::getNodeOrdering({1, 0, 5}, order);
    EXPECT_EQ(std::vector<int>(order, order + 4), (std::vector<int>{0, 2, 1, 3}));
    Quadtree::getNodeOrdering({0, 0, 0}, order);
    EXPECT_EQ(std::vector<int>(order, order + 4), (std::vector<int>{0, 1, 2, 3}));
    Quadtree::getNodeOrdering({-1, -2, 0}, order);
    EXPECT_EQ(std::vector<int>(order, order + 4), (std::vector<int>{3, 2, 1, 0}));
}

TEST(Quadtree, DescendStopsAtLeaves) {
    const float points[] = {0.5f, 0.5f};
    const Quadtree tree(1, points, BoundingBox(unitBox, unitBox + 3));
    QuadtreeIterator at = tree.getRoot();
    EXPECT_FALSE(at.descend(0));
    EXPECT_EQ(at.getNode(), tree.getRoot().getNode());
    EXPECT_FALSE(QuadtreeIterator().valid());
}

// Deliberate: assignment shares the source's cells; each copy may outlive the other.
TEST(Quadtree, DeliberateAssignmentSharesCells) {
    std::vector<float> points(2 * 1000);
    std::mt19937 random(7);
    for (float& v : points) {
        v = std::uniform_real_distribution<float>(0.0f, 1.0f)(random);
    }
    auto source =
        std::make_unique<Quadtree>(1000, points.data(), BoundingBox(unitBox, unitBox + 3));
    Quadtree target(1, points.data(), BoundingBox(unitBox, unitBox + 3));
    target = *source;
    EXPECT_EQ(target.getRemap(), source->getRemap());
    EXPECT_EQ(target.getRoot().getNode(), source->getRoot().getNode());
    Quadtree copy(target);
    target = Quadtree(5, points.data(), BoundingBox(unitBox, unitBox + 3));
    source.reset();
    EXPECT_EQ(copy.numNodes(), checkTree(copy).nodes);
}

} // namespace
} // namespace koGeom
