// Building an octree over a million uniform random points, 32 points a leaf, beside PCL's
// octree with the same leaf rule built in the same run.
//
// PCL side: OctreePointCloudPointVector<PointXYZ> with dynamic depth (a leaf holding 32
// points is expanded when another arrives), on the same cube [0, 1]^3, and a resolution of
// 2^-14, so that its deepest level matches this octree's depth limit for 10^6 points. Both
// trees then split exactly the cells holding more than 32 points, and the run checks that
// their leaves agree, depth and point count.

#include <benchmark/benchmark.h>

#include <pcl/octree/octree_pointcloud_pointvector.h>
#include <pcl/point_cloud.h>
#include <pcl/point_types.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "geom/spatial/Octree.h"

namespace {

constexpr int numPoints = 1000000;
constexpr int pointsPerLeaf = 32;
constexpr double pclResolution = 1.0 / (1 << 14);

using LeafShape = std::vector<std::pair<int, int>>; // (depth below the root, points), sorted
using PclOctree = pcl::octree::OctreePointCloudPointVector<pcl::PointXYZ>;

std::vector<float> uniformPoints() {
    std::mt19937 random(20261122);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    std::vector<float> xyz(3 * static_cast<std::size_t>(numPoints));
    for (float& v : xyz) {
        v = unit(random);
    }
    return xyz;
}

void collectLeaves(koGeom::OctreeIterator it, int depth, LeafShape& leaves) {
    if (it.isLeaf()) {
        int first;
        int end;
        it.getVertexRange(first, end);
        leaves.emplace_back(depth, end - first);
        return;
    }
    for (int k = 0; k < 8; ++k) {
        koGeom::OctreeIterator child = it;
        if (child.descend(k)) {
            collectLeaves(child, depth + 1, leaves);
        }
    }
}

LeafShape leavesOf(const koGeom::Octree& tree) {
    LeafShape leaves;
    collectLeaves(tree.getRoot(), 0, leaves);
    std::sort(leaves.begin(), leaves.end());
    return leaves;
}

LeafShape leavesOf(const PclOctree& tree) {
    LeafShape leaves;
    for (auto it = tree.leaf_depth_begin(); it != tree.leaf_depth_end(); ++it) {
        leaves.emplace_back(static_cast<int>(it.getCurrentOctreeDepth()),
                            static_cast<int>(it.getLeafContainer().getSize()));
    }
    std::sort(leaves.begin(), leaves.end());
    return leaves;
}

std::unique_ptr<PclOctree> buildPcl(const pcl::PointCloud<pcl::PointXYZ>::ConstPtr& cloud) {
    auto tree = std::make_unique<PclOctree>(pclResolution);
    tree->enableDynamicDepth(pointsPerLeaf);
    tree->setInputCloud(cloud);
    tree->defineBoundingBox(0.0, 0.0, 0.0, 1.0, 1.0, 1.0);
    tree->addPointsFromInputCloud();
    return tree;
}

template <class Build>
double secondsToBuild(Build&& build) {
    const auto start = std::chrono::steady_clock::now();
    auto tree = build();
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
    benchmark::DoNotOptimize(tree.get());
    return elapsed.count();
}

// Each iteration builds both trees; the time reported is this octree's, and "vs_pcl" its
// total divided by PCL's.
void octreeBuildVsPcl(benchmark::State& state) {
    const std::vector<float> xyz = uniformPoints();
    auto cloud = std::make_shared<pcl::PointCloud<pcl::PointXYZ>>();
    cloud->reserve(numPoints);
    for (int i = 0; i < numPoints; ++i) {
        cloud->push_back(pcl::PointXYZ(xyz[3 * i], xyz[3 * i + 1], xyz[3 * i + 2]));
    }
    const float lo[3] = {0.0f, 0.0f, 0.0f};
    const float hi[3] = {1.0f, 1.0f, 1.0f};
    const koGeom::BoundingBox box(lo, hi);
    const auto buildOurs = [&] {
        return std::make_unique<koGeom::Octree>(numPoints, xyz.data(), box, false, pointsPerLeaf);
    };

    const auto ours = buildOurs();
    const LeafShape ourLeaves = leavesOf(*ours);
    if (ourLeaves != leavesOf(*buildPcl(cloud))) {
        state.SkipWithError("the two octrees' leaves differ");
        return;
    }

    double oursTotal = 0.0;
    double pclTotal = 0.0;
    for (auto _ : state) {
        const double seconds = secondsToBuild(buildOurs);
        pclTotal += secondsToBuild([&] { return buildPcl(cloud); });
        oursTotal += seconds;
        state.SetIterationTime(seconds);
    }
    const double iterations = static_cast<double>(state.iterations());
    state.SetItemsProcessed(state.iterations() * numPoints);
    state.counters["leaves"] = static_cast<double>(ourLeaves.size());
    state.counters["pcl_ms"] = 1e3 * pclTotal / iterations;
    state.counters["vs_pcl"] = oursTotal / pclTotal;
}
BENCHMARK(octreeBuildVsPcl)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
