// The k-d tree beside nanoflann's, in one run over the same points: a million uniform random
// points in the unit cube and 100,000 box queries of side 0.01. Each figure is the k-d tree's
// time; the counter "vs_nanoflann" divides it by nanoflann's time for the same work, measured
// in the same iterations. Both are timed in the thread's CPU time, which a busy machine does
// not inflate by descheduling; on a quiet one it equals the elapsed time. Every query's hits
// are checked against nanoflann's before timing.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>
#include <random>
#include <vector>

#include <nanoflann.hpp>

#include "geom/spatial/KDTree.h"

namespace {

constexpr int numPoints = 1'000'000;
constexpr int numQueries = 100'000;
constexpr float querySide = 0.01f;

struct Workload {
    Workload() : points(3 * static_cast<std::size_t>(numPoints)), boxes(6 * numQueries) {
        std::mt19937 random(20261122);
        std::uniform_real_distribution<float> unit(0.0f, 1.0f);
        for (float& v : points) {
            v = unit(random);
        }
        std::uniform_real_distribution<float> corner(0.0f, 1.0f - querySide);
        for (int q = 0; q < numQueries; ++q) {
            for (int axis = 0; axis < 3; ++axis) {
                boxes[6 * q + axis] = corner(random);
                boxes[6 * q + 3 + axis] = boxes[6 * q + axis] + querySide;
            }
        }
    }
    const float* box(int q) const { return &boxes[6 * static_cast<std::size_t>(q)]; }

    std::vector<float> points;
    std::vector<float> boxes;
};

const Workload& workload() {
    static const Workload data;
    return data;
}

// nanoflann's view of the same points.
struct CloudAdaptor {
    const float* points;
    std::size_t kdtree_get_point_count() const { return numPoints; }
    float kdtree_get_pt(std::size_t i, std::size_t axis) const { return points[3 * i + axis]; }
    template <class Box>
    bool kdtree_get_bbox(Box&) const {
        return false;
    }
};

using PeerTree =
    nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<float, CloudAdaptor>,
                                        CloudAdaptor, 3, std::uint32_t>;

std::unique_ptr<koGeom::KDTree> buildTree(const Workload& data) {
    auto tree = std::make_unique<koGeom::KDTree>(numPoints);
    for (int i = 0; i < numPoints; ++i) {
        tree->insert(data.points.data(), i);
    }
    // The first search links what was inserted: part of the build's cost.
    benchmark::DoNotOptimize(tree->search(data.points.data(), data.box(0)));
    return tree;
}

std::unique_ptr<PeerTree> buildPeer(const CloudAdaptor& cloud) {
    auto peer = std::make_unique<PeerTree>(3, cloud, nanoflann::KDTreeSingleIndexAdaptorParams(10));
    peer->buildIndex();
    return peer;
}

bool inBox(const float* p, const float* box) {
    return box[0] <= p[0] && p[0] <= box[3] && box[1] <= p[1] && p[1] <= box[4] && box[2] <= p[2] &&
           p[2] <= box[5];
}

// nanoflann has no box query: a radius search with the box's circumscribed sphere (radius
// widened by a few float steps so corners are not lost to rounding), then a box filter.
struct PeerBoxQuery {
    void operator()(const PeerTree& peer, const float* points, const float* box,
                    std::vector<int>& out) {
        const float centre[3] = {(box[0] + box[3]) * 0.5f, (box[1] + box[4]) * 0.5f,
                                 (box[2] + box[5]) * 0.5f};
        matches.clear();
        peer.radiusSearch(centre, radius2, matches, nanoflann::SearchParams(32, 0.0f, false));
        for (const auto& match : matches) {
            if (inBox(points + 3 * static_cast<std::size_t>(match.first), box)) {
                out.push_back(static_cast<int>(match.first));
            }
        }
    }

    float radius2 = 0.75f * querySide * querySide * 1.0001f;
    std::vector<std::pair<std::uint32_t, float>> matches;
};

double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// A million insertions, and the first search that links them, against nanoflann's build.
void kdTreeBuild(benchmark::State& state) {
    const Workload& data = workload();
    const CloudAdaptor cloud{data.points.data()};
    double ours = 0.0;
    double peers = 0.0;
    for (auto _ : state) {
        double start = cpuSeconds();
        auto tree = buildTree(data);
        const double seconds = cpuSeconds() - start;
        start = cpuSeconds();
        auto peer = buildPeer(cloud);
        peers += cpuSeconds() - start;
        ours += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["vs_nanoflann"] = ours / peers;
    state.SetItemsProcessed(state.iterations() * numPoints);
}
BENCHMARK(kdTreeBuild)->UseManualTime()->Unit(benchmark::kMillisecond);

// 100,000 box queries with searchAll against nanoflann's radius search and box filter.
void kdTreeSearchAll(benchmark::State& state) {
    const Workload& data = workload();
    const CloudAdaptor cloud{data.points.data()};
    const auto tree = buildTree(data);
    const auto peer = buildPeer(cloud);
    PeerBoxQuery peerQuery;
    std::vector<int> found;
    std::vector<int> expected;
    long hits = 0;
    for (int q = 0; q < numQueries; ++q) {
        found.clear();
        expected.clear();
        tree->searchAll(data.points.data(), data.box(q), found);
        peerQuery(*peer, data.points.data(), data.box(q), expected);
        std::sort(found.begin(), found.end());
        std::sort(expected.begin(), expected.end());
        if (found != expected) {
            state.SkipWithError("the k-d tree and nanoflann found different points");
            return;
        }
        hits += static_cast<long>(found.size());
    }
    double ours = 0.0;
    double peers = 0.0;
    for (auto _ : state) {
        double start = cpuSeconds();
        for (int q = 0; q < numQueries; ++q) {
            found.clear();
            tree->searchAll(data.points.data(), data.box(q), found);
            benchmark::DoNotOptimize(found.data());
        }
        const double seconds = cpuSeconds() - start;
        start = cpuSeconds();
        for (int q = 0; q < numQueries; ++q) {
            expected.clear();
            peerQuery(*peer, data.points.data(), data.box(q), expected);
            benchmark::DoNotOptimize(expected.data());
        }
        peers += cpuSeconds() - start;
        ours += seconds;
        state.SetIterationTime(seconds);
    }
    state.counters["vs_nanoflann"] = ours / peers;
    state.counters["hits"] = static_cast<double>(hits);
    state.SetItemsProcessed(state.iterations() * numQueries);
}
BENCHMARK(kdTreeSearchAll)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
