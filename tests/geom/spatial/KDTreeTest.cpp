#include "geom/spatial/KDTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "tests/support/HeapProbe.h"

namespace koGeom {
namespace {

// The tree as inserting point by point builds it: left where the node's coordinate is
// strictly greater, axis x, y, z, x, ... by depth.
struct ModelNode {
    int index;
    std::unique_ptr<ModelNode> left, right;
};

void modelInsert(std::unique_ptr<ModelNode>& root, const float* points, int index) {
    std::unique_ptr<ModelNode>* slot = &root;
    for (int axis = 0; *slot; axis = (axis + 1) % 3) {
        ModelNode& node = **slot;
        slot = points[3 * node.index + axis] > points[3 * index + axis] ? &node.left : &node.right;
    }
    *slot = std::make_unique<ModelNode>(ModelNode{index, nullptr, nullptr});
}

bool inBox(const float* p, const float* box) {
    return box[0] <= p[0] && p[0] <= box[3] && box[1] <= p[1] && p[1] <= box[4] && box[2] <= p[2] &&
           p[2] <= box[5];
}

// The points of the model in the box, in pre-order, found by visiting every node.
void modelCollect(const ModelNode* node, const float* points, const float* box,
                  std::vector<int>& out) {
    for (; node != nullptr; node = node->right.get()) {
        if (inBox(points + 3 * node->index, box)) {
            out.push_back(node->index);
        }
        modelCollect(node->left.get(), points, box, out);
    }
}

// Checks search and searchAll against the model and a brute-force scan of inserted points.
void expectMatchesModel(const KDTree& tree, const ModelNode* model,
                        const std::vector<float>& points, const std::vector<int>& inserted,
                        const float* box) {
    std::vector<int> expected;
    modelCollect(model, points.data(), box, expected);
    std::vector<int> found = {-7};
    tree.searchAll(points.data(), box, found);
    ASSERT_EQ(found.front(), -7) << "searchAll cleared its output";
    found.erase(found.begin());
    EXPECT_EQ(found, expected);
    EXPECT_EQ(tree.search(points.data(), box), expected.empty() ? -1 : expected.front());
    int scanned = 0;
    for (int index : inserted) {
        scanned += inBox(&points[3 * index], box) ? 1 : 0;
    }
    EXPECT_EQ(static_cast<int>(found.size()), scanned);
}

TEST(KDTree, EmptyTreeFindsNothing) {
    const float point[3] = {0, 0, 0};
    const float everything[6] = {-1, -1, -1, 1, 1, 1};
    for (int capacity : {0, 4}) {
        const KDTree tree(capacity);
        std::vector<int> out = {5};
        EXPECT_EQ(tree.search(point, everything), -1);
        tree.searchAll(point, everything, out);
        EXPECT_EQ(out, std::vector<int>{5});
    }
}

TEST(KDTree, EqualCoordinatesGoRightAndBoundaryCounts) {
    // 0 is the root; 1 has the root's x and goes right; 2 goes left. Pre-order: 0, 2, 1.
    const float points[] = {0.5f, 0.9f, 0.0f, 0.5f, 0.1f, 0.0f, 0.2f, 0.5f, 0.0f};
    KDTree tree(3);
    for (int i = 0; i < 3; ++i) {
        tree.insert(points, i);
    }
    std::vector<int> out;
    tree.searchAll(points, std::vector<float>{0, 0, 0, 1, 1, 0}.data(), out);
    EXPECT_EQ(out, (std::vector<int>{0, 2, 1}));
    // The box's max x touches the root's x: the right subtree is still searched.
    out.clear();
    tree.searchAll(points, std::vector<float>{0.3f, 0.1f, 0, 0.5f, 0.1f, 0}.data(), out);
    EXPECT_EQ(out, std::vector<int>{1});
    // The root answers although point 2 sits at the box's centre.
    EXPECT_EQ(tree.search(points, std::vector<float>{0.1f, 0.3f, 0, 0.6f, 0.95f, 0}.data()), 0);
    EXPECT_EQ(tree.search(points, std::vector<float>{0.1f, 0.4f, 0, 0.3f, 0.6f, 0}.data()), 2);
}

enum class Cloud { Uniform, CoarseGrid, Coincident, Sorted };

std::vector<float> makeCloud(Cloud cloud, int n, std::mt19937& random) {
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<float> points(3 * static_cast<std::size_t>(n));
    for (int i = 0; i < 3 * n; ++i) {
        switch (cloud) {
            case Cloud::Uniform:
                points[i] = unit(random);
                break;
            case Cloud::CoarseGrid:
                points[i] = static_cast<float>(random() % 5) / 4;
                break;
            case Cloud::Coincident:
                points[i] = 0.25f;
                break;
            case Cloud::Sorted:
                points[i] = static_cast<float>(i / 3) / n;
                break;
        }
    }
    return points;
}

// Random clouds inserted in runs of random length (a search between runs links each run onto
// the tree so far), checked after every run against the model with random boxes.
TEST(KDTree, MatchesInsertionModelOnRandomClouds) {
    for (Cloud cloud : {Cloud::Uniform, Cloud::CoarseGrid, Cloud::Coincident, Cloud::Sorted}) {
        for (unsigned seed : {1u, 2u}) {
            SCOPED_TRACE(testing::Message()
                         << "cloud " << static_cast<int>(cloud) << " seed " << seed);
            std::mt19937 random(seed);
            const int n = cloud == Cloud::Uniform ? 20000 : 1500;
            const std::vector<float> points = makeCloud(cloud, n, random);
            std::vector<int> order(n);
            for (int i = 0; i < n; ++i) {
                order[i] = i;
            }
            std::shuffle(order.begin(), order.end(), random);
            KDTree tree(n);
            std::unique_ptr<ModelNode> model;
            std::vector<int> inserted;
            while (static_cast<int>(inserted.size()) < n) {
                const int run = std::min<int>(1 + random() % (n / 3), n - inserted.size());
                for (int k = 0; k < run; ++k) {
                    const int index = order[inserted.size()];
                    tree.insert(points.data(), index);
                    modelInsert(model, points.data(), index);
                    inserted.push_back(index);
                }
                for (int q = 0; q < 30; ++q) {
                    const float side = q % 3 == 0 ? 1.2f : 0.1f;
                    float box[6];
                    for (int a = 0; a < 3; ++a) {
                        box[a] = std::uniform_real_distribution<float>(-0.1f, 1.0f)(random);
                        box[a + 3] = box[a] + side;
                    }
                    expectMatchesModel(tree, model.get(), points, inserted, box);
                }
            }
            EXPECT_EQ(tree.size(), n);
        }
    }
}

TEST(KDTree, InsertionAndSearchAllocateNothing) {
    std::mt19937 random(3);
    const std::vector<float> points = makeCloud(Cloud::Uniform, 5000, random);
    KDTree tree(5000);
    std::vector<int> out;
    out.reserve(5000);
    const float box[6] = {0.2f, 0.2f, 0.2f, 0.6f, 0.6f, 0.6f};
    const heapProbe::Scope probe;
    for (int i = 0; i < 5000; ++i) {
        tree.insert(points.data(), i);
        if (i % 1000 == 0) {
            tree.searchAll(points.data(), box, out);
        }
    }
    EXPECT_NE(tree.search(points.data(), box), -1);
    tree.searchAll(points.data(), box, out);
    EXPECT_EQ(probe.calls(), 0u);
}

TEST(KDTree, MovedTreeKeepsItsPoints) {
    const float points[] = {0, 0, 0, 1, 1, 1};
    KDTree tree(2);
    tree.insert(points, 1);
    KDTree moved(std::move(tree));
    KDTree other(1);
    other = std::move(moved);
    const float box[6] = {1, 1, 1, 1, 1, 1};
    EXPECT_EQ(other.search(points, box), 1);
    EXPECT_EQ(other.capacity(), 2);
}

} // namespace
} // namespace koGeom
