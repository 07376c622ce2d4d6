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

constexpr double noKey = std::numeric_limits<double>::max();
constexpr double never = std::numeric_limits<double>::infinity(); // beyond every key

// The best vertex of a pick: the smallest key, ties to the lower index; -1 when none.
struct Best {
    int vertex = -1;
    double key = noKey;
    void offer(int v, double k) {
        if (k < key || (k == key && v < vertex)) vertex = v, key = k;
    }
};

// Walks `tree` front to back along `direction`, skipping each cell whose `bound` lies beyond
// `best.key`, and hands the points of the other leaves to `visit`. Returns the points visited.
long walk(const Octree& tree, const koLinear::Vector& direction, const Best& best,
          const std::function<double(const BoundingBox&)>& bound,
          const std::function<void(int)>& visit) {
    int order[8], first = 0, end = 0;
    Octree::getNodeOrdering(direction, order);
    long visited = 0;
    const std::function<void(const OctreeIterator&)> down = [&](const OctreeIterator& it) {
        if (bound(it.getBox()) > best.key) return;
        if (it.isLeaf()) it.getVertexRange(first, end);
        for (int slot = first; it.isLeaf() && slot < end; ++slot, ++visited)
            visit(tree.getRemap()[slot]);
        for (int octant : order) {
            OctreeIterator child = it;
            if (child.descend(octant)) down(child); // false at a leaf
        }
    };
    down(tree.getRoot());
    return visited;
}

// The parameter (from 0 on) at which `ray` enters `box` grown by `r`, or `never` when it misses.
double entry(const koLinear::Line& ray, const BoundingBox& box, double r) {
    double t0 = 0.0, t1 = noKey;
    for (int a = 0; a < 3; ++a) {
        const double ta = (box.minPt()[a] - r - ray.origin[a]) / ray.direction[a];
        const double tb = (box.maxPt()[a] + r - ray.origin[a]) / ray.direction[a];
        t0 = std::max(t0, std::min(ta, tb));
        t1 = std::min(t1, std::max(ta, tb));
    }
    return t0 <= t1 ? t0 : never;
}

// The smallest normalised depth of the corners of `box` through `pick` (-noKey when one is not
// in front), or `never` when all eight break the same clip inequality |x|, |y|, |z| <= w.
double pickDepth(const BoundingBox& box, const koLinear::ProjMatrix& pick) {
    int outside[6] = {};
    double nearest = noKey;
    for (int k = 0; k < 8; ++k) {
        koLinear::PointFlt c;
        box.getPoint(k, c);
        const koLinear::HPoint h = koLinear::HPoint(koLinear::Point(c)) * pick;
        for (int a = 0; a < 6; ++a) outside[a] += (a % 2 ? -h[a / 2] : h[a / 2]) > h.w;
        nearest = h.w > 0.0 ? std::min(nearest, h.z / h.w) : -noKey;
    }
    return std::count(outside, outside + 6, 8) > 0 ? never : nearest;
}

TEST(Picking, OctreeWalksAgreeWithBruteForce) {
    CompactMesh mesh; // 250 x 200 torus: 100,000 triangles, 50,000 vertices
    koGeomTest::makeTorus(mesh, 250, 200);
    ASSERT_EQ(mesh.getNumTriangles(), 100000);
    const int n = mesh.getNumVertices();
    const float* xyz = mesh.getVerticesRaw();
    std::vector<koLinear::Point> vertex;
    for (int v = 0; v < n; ++v) vertex.emplace_back(xyz[3 * v], xyz[3 * v + 1], xyz[3 * v + 2]);
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

    std::vector<koLinear::Point2> pixels; // a grid, and the images of random vertices
    for (int i = 0; i < 16 * 12; ++i) pixels.emplace_back(20 + 40 * (i % 16), 20 + 40 * (i / 16));
    std::mt19937 random(11);
    for (int i = 0; i < 100; ++i) {
        koLinear::Point at;
        if (camera.project(vertex[std::uniform_int_distribution<int>(0, n - 1)(random)], at))
            pixels.emplace_back(at.x, at.y);
    }
    const double radius = 0.05, pixelRadius = 3.0; // world distance from the ray; pixels
    long rayHits = 0, pickHits = 0, visited = 0;
    for (const koLinear::Point2& pixel : pixels) {
        SCOPED_TRACE(testing::Message() << "pixel " << pixel.x << ", " << pixel.y);
        // Along the ray: the vertex within `radius` of it with the smallest ray parameter.
        koLinear::Line ray;
        camera.getWorldSpaceRay(pixel, ray);
        Best rayWalk, rayBrute;
        const auto tryRay = [&](Best& best, int v) {
            const double t = ray.projectParam(vertex[v]);
            if (t >= 0.0 && distance(vertex[v], ray) <= radius) best.offer(v, t);
        };
        visited += walk(
            tree, ray.direction, rayWalk,
            [&](const BoundingBox& b) { return entry(ray, b, radius); },
            [&](int v) { tryRay(rayWalk, v); });
        for (int v = 0; v < n; ++v) tryRay(rayBrute, v);
        EXPECT_EQ(rayWalk.vertex, rayBrute.vertex);
        rayHits += rayBrute.vertex >= 0;

        // Through the pick matrix: the front-most vertex in the pixel square, against the
        // vertices whose projected pixels lie in that square.
        koLinear::ProjMatrix pick;
        camera.getPickMatrix(pixel, pick, pixelRadius);
        Best pickWalk, projected;
        visited += walk(
            tree, ray.direction, pickWalk, [&](const BoundingBox& b) { return pickDepth(b, pick); },
            [&](int v) {
                const koLinear::HPoint h = koLinear::HPoint(vertex[v]) * pick;
                if (h.insideView(true)) pickWalk.offer(v, h.z / h.w);
            });
        for (int v = 0; v < n; ++v) {
            koLinear::Point at;
            if (camera.project(vertex[v], at) && std::fabs(at.x - pixel.x) <= pixelRadius &&
                std::fabs(at.y - pixel.y) <= pixelRadius)
                projected.offer(v, at.z);
        }
        EXPECT_EQ(pickWalk.vertex, projected.vertex);
        pickHits += projected.vertex >= 0;
    }
    // A meaningful comparison: most pixels hit the torus, and the walks prune, visiting a
    // small part of the points.
    const long tried = static_cast<long>(pixels.size());
    EXPECT_TRUE(rayHits > tried / 3 && pickHits > tried / 3);
    EXPECT_LT(visited, 2 * tried * n / 20);
}

} // namespace
} // namespace koGeom
