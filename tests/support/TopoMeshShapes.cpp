#include "tests/support/TopoMeshShapes.h"

#include <cmath>
#include <map>
#include <numbers>
#include <utility>

namespace koGeomTest {

using koGeom::TopoMesh;
using koGeom::TopoMeshVertex;
using koLinear::Point;

std::vector<TopoMeshVertex> buildTopoMesh(TopoMesh& mesh, const TopoMeshShape& shape) {
    std::vector<TopoMeshVertex> vertices;
    for (const Point& p : shape.points) {
        vertices.push_back(mesh.allocVertex(p));
    }
    for (const std::vector<int>& face : shape.faces) {
        ko::vector<TopoMeshVertex> loop;
        for (int i : face) {
            loop.push_back(vertices[static_cast<std::size_t>(i)]);
        }
        mesh.allocFace(loop);
    }
    // A face added beside a vertex whose fan is still in pieces finds only the piece of the
    // vertex's first edge: pair what it missed.
    std::map<std::pair<void*, void*>, koGeom::TopoMeshEdge> open;
    for (koGeom::TopoMeshEdge e = mesh.firstEdge(); e; e = e.nextInMesh()) {
        if (e.twin()) {
            continue;
        }
        auto found = open.find({e.v2().data(), e.v1().data()});
        if (found != open.end()) {
            mesh.setTwins(e, found->second);
            open.erase(found);
        } else {
            open.emplace(std::make_pair(e.v1().data(), e.v2().data()), e);
        }
    }
    return vertices;
}

TopoMeshShape tetrahedron() {
    return {"tetrahedron",
            {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
            {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}}};
}

TopoMeshShape fan(int n, bool closed) {
    TopoMeshShape shape{closed ? "closedFan" : "openFan", {{0, 0, 0}}, {}};
    const int rim = closed ? n : n + 1;
    for (int i = 0; i < rim; ++i) {
        const double angle = 2 * std::numbers::pi * i / (closed ? n : 2 * n);
        shape.points.emplace_back(std::cos(angle), std::sin(angle), 0.0);
    }
    for (int i = 0; i < n; ++i) {
        shape.faces.push_back({0, 1 + i, 1 + (i + 1) % rim});
    }
    return shape;
}

TopoMeshShape quadGrid(int nx, int ny, bool triangles) {
    TopoMeshShape shape{triangles ? "triangleGrid" : "quadGrid", {}, {}};
    for (int j = 0; j <= ny; ++j) {
        for (int i = 0; i <= nx; ++i) {
            shape.points.emplace_back(i, j, 0.0);
        }
    }
    for (int j = 0; j < ny; ++j) {
        for (int i = 0; i < nx; ++i) {
            const int a = j * (nx + 1) + i;
            const int b = a + 1;
            const int c = a + nx + 2;
            const int d = a + nx + 1;
            if (triangles) {
                shape.faces.push_back({a, b, c});
                shape.faces.push_back({a, c, d});
            } else {
                shape.faces.push_back({a, b, c, d});
            }
        }
    }
    return shape;
}

TopoMeshShape torus(int nu, int nv) {
    TopoMeshShape shape{"torus", {}, {}};
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            const double u = 2 * std::numbers::pi * i / nu;
            const double v = 2 * std::numbers::pi * j / nv;
            shape.points.emplace_back((2 + std::cos(v)) * std::cos(u),
                                      (2 + std::cos(v)) * std::sin(u), std::sin(v));
        }
    }
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            const int a = j * nu + i;
            const int b = j * nu + (i + 1) % nu;
            const int c = ((j + 1) % nv) * nu + (i + 1) % nu;
            const int d = ((j + 1) % nv) * nu + i;
            shape.faces.push_back({a, b, c});
            shape.faces.push_back({a, c, d});
        }
    }
    return shape;
}

TopoMeshShape sphere(int levels) {
    TopoMeshShape shape{
        "sphere",
        {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}},
        {{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4}, {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}}};
    for (int level = 0; level < levels; ++level) {
        std::map<std::pair<int, int>, int> middles;
        auto middle = [&](int a, int b) {
            const auto key = std::minmax(a, b);
            auto found = middles.find(key);
            if (found != middles.end()) {
                return found->second;
            }
            const Point& p = shape.points[static_cast<std::size_t>(a)];
            const Point& q = shape.points[static_cast<std::size_t>(b)];
            koLinear::Vector m((p.x + q.x) / 2, (p.y + q.y) / 2, (p.z + q.z) / 2);
            m = m / m.length();
            shape.points.emplace_back(m);
            const int index = static_cast<int>(shape.points.size()) - 1;
            middles.emplace(key, index);
            return index;
        };
        std::vector<std::vector<int>> faces;
        for (const std::vector<int>& f : shape.faces) {
            const int ab = middle(f[0], f[1]);
            const int bc = middle(f[1], f[2]);
            const int ca = middle(f[2], f[0]);
            faces.push_back({f[0], ab, ca});
            faces.push_back({ab, f[1], bc});
            faces.push_back({ca, bc, f[2]});
            faces.push_back({ab, bc, ca});
        }
        shape.faces = std::move(faces);
    }
    return shape;
}

TopoMeshShape bowtie() {
    return {"bowtie",
            {{0, 0, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}, {-1, -1, 0}},
            {{0, 1, 2}, {0, 3, 4}}};
}

} // namespace koGeomTest
