#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "geom/mesh/CompactMesh.h"
#include "geom/spatial/Octree.h"
#include "geom/spatial/OctreeIterator.h"
#include "geom/view/Camera.h"
#include "tests/support/MeshShapes.h"

namespace koGeom {
namespace {

// The best vertex of a pick: the smallest key, ties to the lower index; -1 when none.
struct Best {
    int vertex = -1;
    double key = std::numeric_limits<double>::max();
    void offer(int v, double k) {
        if (k < key || (k == key && v < vertex)) {
            vertex = v;
            key = k;
        }
    }
};

// Walks the cells of `tree` front to back for `direction`, skipping every cell for which
// `prune(box)` holds, and hands each point of the remaining leaves to `visit`. Returns the
// number of points visited.
int walkFrontToBack(const Octree& tree, const koLinear::Vector& direction,
                    const std::function<bool(const BoundingBox&)>& prune,
                    const std::function<void(int)>& visit) {
    int order[8];
    Octree::getNodeOrdering(direction, order);
    int visited = 0;
    const std::function<void(const OctreeIterator&)> walk = [&](const OctreeIterator& it) {
        if (it.isLeaf()) {
            int first = 0, end = 0;
            it.getVertexRange(first, end);
            for (int slot = first; slot < end; ++slot, ++visited) {
                visit(tree.getRemap()[slot]);
            }
            return;
        }
        for (int octant : order) {
            OctreeIterator child = it;
            if (child.descend(octant) && !prune(child.getBox())) {
                walk(child);
            }
        }
    };
    if (!prune(tree.getRoot().getBox())) {
        walk(tree.getRoot());
    }
    return visited;
}

// The entry parameter of `ray` (from 0 on) into `box` grown by `r`; false when it misses.
bool entersBox(const koLinear::Line& ray, const BoundingBox& box, double r, double& entry) {
    double t0 = 0.0, t1 = std::numeric_limits<double>::max();
    for (int a = 0; a < 3; ++a) {
        const double lo = box.minPt()[a] - r, hi = box.maxPt()[a] + r;
        const double o = ray.origin[a], d = ray.direction[a];
        if (d == 0.0) {
            if (o < lo || o > hi) return false;
            continue;
        }
        const double ta = (lo - o) / d, tb = (hi - o) / d;
        t0 = std::max(t0, std::min(ta, tb));
        t1 = std::min(t1, std::max(ta, tb));
    }
    entry = t0;
    return t0 <= t1;
}

// The corners of `box` through `pick`: the box is outside the pick region when all eight
// break the same clip inequality (|x|, |y|, |z| <= w). Sets `nearest` to the smallest
// normalised depth of the corners, or -infinity when some corner is not in front (w <= 0).
bool outsidePick(const BoundingBox& box, const koLinear::ProjMatrix& pick, double& nearest) {
    int outside[6] = {};
    nearest = std::numeric_limits<double>::max();
    for (int k = 0; k < 8; ++k) {
        koLinear::PointFlt c;
        box.getPoint(k, c);
        const koLinear::HPoint h = koLinear::HPoint(koLinear::Point(c)) * pick;
        const double v[3] = {h.x, h.y, h.z};
        for (int a = 0; a < 3; ++a) {
            outside[2 * a] += v[a] > h.w;
            outside[2 * a + 1] += -v[a] > h.w;
        }
        nearest = h.w > 0.0 ? std::min(nearest, h.z / h.w) : -std::numeric_limits<double>::max();
    }
    return std::any_of(outside, outside + 6, [](int n) { return n == 8; });
}

TEST(Picking, OctreeWalksAgreeWithBruteForce) {
    CompactMesh mesh; // 250 x 200 torus: 100,000 triangles, 50,000 vertices
    koGeomTest::makeTorus(mesh, 250, 200);
    ASSERT_EQ(mesh.getNumTriangles(), 100000);
    const int n = mesh.getNumVertices();
    const float* xyz = mesh.getVerticesRaw();
    const auto vertex = [xyz](int v) {
        return koLinear::Point(xyz[3 * v], xyz[3 * v + 1], xyz[3 * v + 2]);
    };
    BoundingBox box;
    mesh.getBoundingBox(box);
    const Octree tree(n, xyz, box, false, 16);

    Camera camera;
    camera.setWorldToEye({0, 0, 0}, {1, -6, 5}, koLinear::Normal::unitZ());
    Viewport viewport;
    viewport.setSize(640, 480);
    camera.setViewport(viewport);
    AngleAspect lens;
    lens.setAspectRatio(640.0 / 480.0);
    camera.setFrustum(lens);
    camera.setNearFar(box);

    // Pixels: a grid over the viewport and the images of random vertices.
    std::vector<koLinear::Point2> pixels;
    for (int i = 0; i < 16; ++i) {
        for (int j = 0; j < 12; ++j) {
            pixels.emplace_back(20 + 40 * i, 20 + 40 * j);
        }
    }
    std::mt19937 random(11);
    for (int i = 0; i < 100; ++i) {
        koLinear::Point at;
        if (camera.project(vertex(std::uniform_int_distribution<int>(0, n - 1)(random)), at)) {
            pixels.emplace_back(at.x, at.y);
        }
    }

    const double radius = 0.05; // world distance from the ray
    const double pixelRadius = 3.0;
    int rayHits = 0, pickHits = 0;
    long rayVisited = 0, pickVisited = 0;
    for (const koLinear::Point2& pixel : pixels) {
        SCOPED_TRACE(testing::Message() << "pixel " << pixel.x << ", " << pixel.y);
        koLinear::Line ray;
        camera.getWorldSpaceRay(pixel, ray);

        // Along the ray: the nearest vertex (by ray parameter) within `radius` of it.
        Best rayWalk, rayBrute;
        const auto tryRay = [&](Best& best, int v) {
            const double t = ray.projectParam(vertex(v));
            if (t >= 0.0 && distance(vertex(v), ray) <= radius) best.offer(v, t);
        };
        rayVisited += walkFrontToBack(
            tree, ray.direction,
            [&](const BoundingBox& cell) {
                double entry = 0.0;
                return !entersBox(ray, cell, radius, entry) || entry > rayWalk.key;
            },
            [&](int v) { tryRay(rayWalk, v); });
        for (int v = 0; v < n; ++v) tryRay(rayBrute, v);
        EXPECT_EQ(rayWalk.vertex, rayBrute.vertex);
        rayHits += rayBrute.vertex >= 0;
        if (rayBrute.vertex >= 0) { // the ray runs through the pixel: its hit projects there
            koLinear::Point at;
            ASSERT_TRUE(camera.project(vertex(rayBrute.vertex), at));
            const double depth = camera.screenDepthAtPoint(vertex(rayBrute.vertex));
            EXPECT_LT(std::hypot(at.x - pixel.x, at.y - pixel.y),
                      1.5 * radius / camera.pixelScaleForDepth(depth, 1.0));
        }

        // Through the pick matrix: the front-most vertex inside the pixel square, checked
        // against the square of the vertices' projected pixels.
        koLinear::ProjMatrix pick;
        camera.getPickMatrix(pixel, pick, pixelRadius);
        Best pickWalk, projected;
        pickVisited += walkFrontToBack(
            tree, ray.direction,
            [&](const BoundingBox& cell) {
                double nearest = 0.0;
                return outsidePick(cell, pick, nearest) || nearest > pickWalk.key;
            },
            [&](int v) {
                const koLinear::HPoint h = koLinear::HPoint(vertex(v)) * pick;
                if (h.insideView(true)) pickWalk.offer(v, h.z / h.w);
            });
        for (int v = 0; v < n; ++v) {
            koLinear::Point at;
            if (camera.project(vertex(v), at) && std::fabs(at.x - pixel.x) <= pixelRadius &&
                std::fabs(at.y - pixel.y) <= pixelRadius) {
                projected.offer(v, at.z);
            }
        }
        EXPECT_EQ(pickWalk.vertex, projected.vertex);
        pickHits += projected.vertex >= 0;
    }
    // Preconditions of a meaningful comparison: most pixels hit the torus, and the walks
    // prune, visiting a small part of the points.
    const long tried = static_cast<long>(pixels.size());
    EXPECT_GT(rayHits, tried / 3);
    EXPECT_GT(pickHits, tried / 3);
    EXPECT_LT(rayVisited, tried * n / 20);
    EXPECT_LT(pickVisited, tried * n / 20);
}

} // namespace
} // namespace koGeom
