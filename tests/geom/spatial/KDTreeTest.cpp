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

// The model's points in the box in pre-order, found by visiting every node.
void modelCollect(const ModelNode* node, const float* points, const float* box,
                  std::vector<int>& out) {
    for (; node != nullptr; node = node->right.get()) {
        if (inBox(points + 3 * node->index, box)) {
            out.push_back(node->index);
        }
        modelCollect(node->left.get(), points, box, out);
    }
}

TEST(KDTree, EqualCoordinatesGoRightAndBoundaryCounts) {
    // 0 is the root; 1 has the root's x and goes right; 2 goes left. Pre-order: 0, 2, 1.
    const float points[] = {0.5f, 0.9f, 0.0f, 0.5f, 0.1f, 0.0f, 0.2f, 0.5f, 0.0f};
    KDTree tree(3);
    std::vector<int> out = {-7};
    EXPECT_EQ(tree.search(points, std::vector<float>{0, 0, 0, 1, 1, 0}.data()), -1);
    tree.searchAll(points, std::vector<float>{0, 0, 0, 1, 1, 0}.data(), out);
    for (int i = 0; i < 3; ++i) {
        tree.insert(points, i);
    }
    tree.searchAll(points, std::vector<float>{0, 0, 0, 1, 1, 0}.data(), out);
    EXPECT_EQ(out, (std::vector<int>{-7, 0, 2, 1})) << "appends, never clears";
    // The box's max x touches the root's x: the right subtree is still searched.
    out.clear();
    tree.searchAll(points, std::vector<float>{0.3f, 0.1f, 0, 0.5f, 0.1f, 0}.data(), out);
    EXPECT_EQ(out, std::vector<int>{1});
    // The root answers although point 2 lies nearer the box's centre.
    EXPECT_EQ(tree.search(points, std::vector<float>{0.1f, 0.3f, 0, 0.6f, 0.95f, 0}.data()), 0);
    EXPECT_EQ(tree.search(points, std::vector<float>{0.1f, 0.4f, 0, 0.3f, 0.6f, 0}.data()), 2);
}

// Uniform, on a coarse grid (many equal coordinates), coincident, sorted and caterpillar
// clouds, inserted in runs of random length; after each run (which the next search links onto
// the tree so far, allocating nothing) random boxes are checked against the model and a
// brute-force scan. The last two go in in order: the sorted cloud makes a chain, the
// caterpillar a left chain with a right leaf on every node, deeper than the walk's stack.
TEST(KDTree, MatchesInsertionModelOnRandomClouds) {
    for (int cloud = 0; cloud < 5; ++cloud) {
        SCOPED_TRACE(testing::Message() << "cloud " << cloud);
        std::mt19937 random(cloud + 1);
        const int n = cloud == 0 ? 20000 : 1500;
        std::vector<float> points(3 * n);
        for (int i = 0; i < 3 * n; ++i) {
            const int k = i / 3 % (n / 2);
            points[i] = cloud == 0   ? std::uniform_real_distribution<float>(0, 1)(random)
                        : cloud == 1 ? static_cast<float>(random() % 5) / 4
                        : cloud == 2 ? 0.25f
                        : cloud == 3 ? static_cast<float>(i / 3) / n
                                     : 1 - (k - (i / 3 < n / 2 ? 0 : 0.25f)) / (n / 2);
        }
        std::vector<int> order(n);
        for (int i = 0; i < n; ++i) {
            order[i] = i;
        }
        if (cloud < 3) {
            std::shuffle(order.begin(), order.end(), random);
        }
        KDTree tree(n);
        std::unique_ptr<ModelNode> model;
        for (int inserted = 0, end = 0; inserted < n; inserted = end) {
            end = std::min<int>(n, inserted + 1 + random() % (n / 3));
            for (int i = inserted; i < end; ++i) {
                modelInsert(model, points.data(), order[i]);
            }
            const heapProbe::Scope probe; // Insertion and linking allocate nothing.
            for (int i = inserted; i < end; ++i) {
                tree.insert(points.data(), order[i]);
            }
            tree.search(points.data(), points.data()); // Links the run; any box serves.
            ASSERT_EQ(probe.calls(), 0u);
            for (int q = 0; q < 30; ++q) {
                float box[6];
                for (int a = 0; a < 3; ++a) {
                    // Every third box holds the whole cloud.
                    box[a] = q % 3 == 0 ? std::uniform_real_distribution<float>(-0.2f, 0)(random)
                                        : std::uniform_real_distribution<float>(-0.1f, 1)(random);
                    box[a + 3] = box[a] + (q % 3 == 0 ? 1.2f : 0.1f);
                }
                std::vector<int> expected;
                std::vector<int> found;
                modelCollect(model.get(), points.data(), box, expected);
                tree.searchAll(points.data(), box, found);
                EXPECT_EQ(found, expected);
                EXPECT_EQ(tree.search(points.data(), box), expected.empty() ? -1 : expected[0]);
                EXPECT_EQ(std::count_if(order.begin(), order.begin() + end,
                                        [&](int i) { return inBox(&points[3 * i], box); }),
                          static_cast<long>(found.size()));
            }
        }
    }
}

} // namespace
} // namespace koGeom
