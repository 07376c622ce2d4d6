#include "tools/formwork/SurfaceTopology.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <numeric>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "geom/topomesh/TopoMeshBoundaryIterator.h"
#include "tools/formwork/MeshArrays.h"

namespace formworkTool {

namespace {

using koGeom::TopoMesh;
using koGeom::TopoMeshEdge;
using koGeom::TopoMeshFace;
using koGeom::TopoMeshVertex;

// Disjoint sets over 0 … n − 1, with path halving and union by index (the smaller root wins,
// so the sets and their roots do not depend on the order of the unions' arguments).
class DisjointSets {
public:
    explicit DisjointSets(std::size_t n) : parent_(n) {
        std::iota(parent_.begin(), parent_.end(), 0);
    }
    int find(int i) {
        while (parent_[static_cast<std::size_t>(i)] != i) {
            int& p = parent_[static_cast<std::size_t>(i)];
            p = parent_[static_cast<std::size_t>(p)];
            i = p;
        }
        return i;
    }
    void join(int a, int b) {
        a = find(a);
        b = find(b);
        if (a != b) {
            parent_[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
        }
    }

private:
    std::vector<int> parent_;
};

// A position by its bits, with −0 taken as +0 so that the two zeros weld.
struct PositionKey {
    std::array<std::uint32_t, 3> bits;
    bool operator==(const PositionKey&) const = default;
};

struct PositionKeyHash {
    std::size_t operator()(const PositionKey& key) const noexcept {
        std::uint64_t h = 0x9E3779B97F4A7C15ull;
        for (const std::uint32_t b : key.bits) {
            h = (h ^ b) * 0x100000001B3ull;
            h ^= h >> 29;
        }
        return static_cast<std::size_t>(h);
    }
};

PositionKey keyOf(const float* p) {
    PositionKey key;
    for (int i = 0; i < 3; ++i) {
        key.bits[static_cast<std::size_t>(i)] =
            std::bit_cast<std::uint32_t>(p[i] == 0.0f ? 0.0f : p[i]);
    }
    return key;
}

// Half-edge h of the triangle list is corner h % 3 of triangle h / 3 to the next corner.
int nextHalfEdge(int h) { return h - h % 3 + (h % 3 + 1) % 3; }

// One use of an undirected edge: its ends in order and the half-edge that runs along it.
struct EdgeUse {
    int low;
    int high;
    int halfEdge;
    bool operator<(const EdgeUse& o) const {
        return std::tie(low, high, halfEdge) < std::tie(o.low, o.high, o.halfEdge);
    }
};

} // namespace

int SurfaceTopology::genus() const noexcept {
    const std::int64_t twice = 2LL * components - eulerCharacteristic() - boundaryLoops;
    if (!isOrientedManifold() || twice < 0 || twice % 2 != 0) {
        return -1;
    }
    return static_cast<int>(twice / 2);
}

SurfaceTopology buildSurfaceTopology(const koGeom::CompactMesh& mesh, Progress& progress) {
    progress.start("topology");
    SurfaceTopology result;
    result.mesh = new TopoMesh;
    const int numVertices = mesh.getNumVertices();
    const float* positions = mesh.getVerticesRaw();

    // Welding: each vertex's welded number, in order of first appearance.
    std::vector<int> weld(static_cast<std::size_t>(numVertices));
    std::vector<int> weldedSource; // a vertex at each welded position
    {
        std::unordered_map<PositionKey, int, PositionKeyHash> index;
        index.reserve(static_cast<std::size_t>(numVertices));
        for (int v = 0; v < numVertices; ++v) {
            const auto [found, added] =
                index.emplace(keyOf(positions + 3 * v), static_cast<int>(weldedSource.size()));
            if (added) {
                weldedSource.push_back(v);
            }
            weld[static_cast<std::size_t>(v)] = found->second;
        }
    }
    const std::vector<int> all = surfaceTriangles(mesh);
    std::vector<int> corners; // welded vertex of each corner of each kept triangle
    corners.reserve(all.size());
    for (std::size_t t = 0; t < all.size(); t += 3) {
        const int a = weld[static_cast<std::size_t>(all[t])];
        const int b = weld[static_cast<std::size_t>(all[t + 1])];
        const int c = weld[static_cast<std::size_t>(all[t + 2])];
        if (a == b || b == c || c == a) {
            ++result.degenerateTriangles;
        } else {
            corners.insert(corners.end(), {a, b, c});
        }
    }
    result.faces = static_cast<int>(corners.size() / 3);
    const int numCorners = static_cast<int>(corners.size());
    progress.update(0.2);

    // Vertices, components and unused vertices of the welded surface.
    std::vector<char> used(weldedSource.size(), 0);
    DisjointSets pieces(weldedSource.size());
    for (int h = 0; h < numCorners; ++h) {
        used[static_cast<std::size_t>(corners[static_cast<std::size_t>(h)])] = 1;
        pieces.join(corners[static_cast<std::size_t>(h)],
                    corners[static_cast<std::size_t>(nextHalfEdge(h))]);
    }
    for (std::size_t w = 0; w < weldedSource.size(); ++w) {
        if (used[w]) {
            ++result.vertices;
            result.components += pieces.find(static_cast<int>(w)) == static_cast<int>(w) ? 1 : 0;
        }
    }
    for (int v = 0; v < numVertices; ++v) {
        result.unusedVertices +=
            used[static_cast<std::size_t>(weld[static_cast<std::size_t>(v)])] ? 0 : 1;
    }

    // Edges: the uses of each undirected edge side by side. Corners of two triangles that
    // share a manifold edge, running opposite ways, lie in one fan.
    std::vector<EdgeUse> uses;
    uses.reserve(corners.size());
    for (int h = 0; h < numCorners; ++h) {
        const int a = corners[static_cast<std::size_t>(h)];
        const int b = corners[static_cast<std::size_t>(nextHalfEdge(h))];
        uses.push_back({std::min(a, b), std::max(a, b), h});
    }
    std::sort(uses.begin(), uses.end());
    progress.update(0.4);
    // Corners round one vertex: `around` joins them across every edge of two triangles (the
    // vertex's topological fans), `fans` only across those the triangles run opposite ways
    // (the fans the half-edge mesh can hold).
    DisjointSets around(corners.size());
    DisjointSets fans(corners.size());
    std::vector<std::pair<int, int>> twins;
    for (std::size_t i = 0; i < uses.size();) {
        std::size_t j = i + 1;
        while (j < uses.size() && uses[j].low == uses[i].low && uses[j].high == uses[i].high) {
            ++j;
        }
        ++result.edges;
        if (j - i > 2) {
            ++result.nonManifoldEdges;
        } else if (j - i == 2) {
            const int h1 = uses[i].halfEdge;
            const int h2 = uses[i + 1].halfEdge;
            if (corners[static_cast<std::size_t>(h1)] == corners[static_cast<std::size_t>(h2)]) {
                ++result.misorientedEdges;
                around.join(h1, h2);
                around.join(nextHalfEdge(h1), nextHalfEdge(h2));
            } else {
                around.join(h1, nextHalfEdge(h2));
                around.join(nextHalfEdge(h1), h2);
                fans.join(h1, nextHalfEdge(h2));
                fans.join(nextHalfEdge(h1), h2);
                twins.emplace_back(h1, h2);
            }
        }
        i = j;
    }

    // A vertex is not a manifold where its corners form more than one topological fan.
    std::vector<int> firstFan(weldedSource.size(), -1);
    std::vector<char> counted(weldedSource.size(), 0);
    for (int h = 0; h < numCorners; ++h) {
        const int fan = around.find(h);
        const auto w = static_cast<std::size_t>(corners[static_cast<std::size_t>(h)]);
        if (firstFan[w] < 0) {
            firstFan[w] = fan;
        } else if (firstFan[w] != fan && !counted[w]) {
            counted[w] = 1;
            ++result.nonManifoldVertices;
        }
    }

    // One half-edge vertex per fan it can hold, made in order of first use.
    TopoMesh& topo = *result.mesh;
    std::vector<TopoMeshVertex> fanVertex(corners.size());
    for (int h = 0; h < numCorners; ++h) {
        TopoMeshVertex& vertex = fanVertex[static_cast<std::size_t>(fans.find(h))];
        if (!vertex) {
            const float* p =
                positions +
                3 * weldedSource[static_cast<std::size_t>(corners[static_cast<std::size_t>(h)])];
            vertex = topo.allocVertex(koLinear::Point(p[0], p[1], p[2]));
        }
    }
    progress.update(0.5);
    std::vector<TopoMeshEdge> halfEdges(corners.size());
    for (int t = 0; t < result.faces; ++t) {
        TopoMeshVertex v[3];
        for (int k = 0; k < 3; ++k) {
            v[k] = fanVertex[static_cast<std::size_t>(fans.find(3 * t + k))];
        }
        TopoMeshEdge e = topo.allocTriangle(v[0], v[1], v[2]).firstEdge();
        for (int k = 0; k < 3; ++k, e = e.next()) {
            halfEdges[static_cast<std::size_t>(3 * t + k)] = e;
        }
        if ((t & 0xFFFF) == 0) {
            progress.update(0.5 + 0.4 * t / result.faces);
        }
    }
    // A triangle added while a corner's fan was still in pieces found no twin across the gap:
    // pair what it missed.
    for (const auto& [h1, h2] : twins) {
        const TopoMeshEdge e1 = halfEdges[static_cast<std::size_t>(h1)];
        const TopoMeshEdge e2 = halfEdges[static_cast<std::size_t>(h2)];
        assert(e1.v1() == e2.v2() && e1.v2() == e2.v1());
        if (!e1.twin() && !e2.twin()) {
            topo.setTwins(e1, e2);
        }
    }

    std::unordered_set<TopoMeshEdge> walked;
    for (TopoMeshEdge e = topo.firstEdge(); e; e = e.nextInMesh()) {
        if (!e.twin() && walked.insert(e).second) {
            ++result.boundaryLoops;
            for (koGeom::TopoMeshBoundaryIterator it(e); it.valid(); it.next()) {
                walked.insert(it.edge());
            }
        }
    }
    progress.finish();
    return result;
}

ko::Reference<koGeom::CompactMesh> compactMeshOf(const TopoMesh& mesh) {
    MeshArrays arrays;
    std::unordered_map<TopoMeshVertex, int> index;
    index.reserve(static_cast<std::size_t>(mesh.numVertices()));
    arrays.positions.reserve(3 * static_cast<std::size_t>(mesh.numVertices()));
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        index.emplace(v, static_cast<int>(index.size()));
        const koLinear::Point p = v.point();
        arrays.positions.insert(
            arrays.positions.end(),
            {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)});
    }
    for (TopoMeshFace f = mesh.firstFace(); f; f = f.nextInMesh()) {
        const TopoMeshEdge first = f.firstEdge();
        const int apex = index.at(first.v1());
        for (TopoMeshEdge e = first.next(); e.next() != first; e = e.next()) {
            arrays.triangles.insert(arrays.triangles.end(),
                                    {apex, index.at(e.v1()), index.at(e.v2())});
        }
    }
    return arrays.toMesh();
}

} // namespace formworkTool
