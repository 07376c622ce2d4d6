#include "tests/support/MeshShapes.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace koGeomTest {

void makeTorus(koGeom::CompactMesh& mesh, int nu, int nv) {
    std::vector<koGeom::MeshVertex> vertices;
    vertices.reserve(static_cast<std::size_t>(nu) * static_cast<std::size_t>(nv));
    for (int j = 0; j < nv; ++j) {
        const double around = 2.0 * std::numbers::pi * j / nv;
        for (int i = 0; i < nu; ++i) {
            const double along = 2.0 * std::numbers::pi * i / nu;
            const double ring = 2.0 + std::cos(around);
            const double position[3] = {ring * std::cos(along), ring * std::sin(along),
                                        std::sin(around)};
            koGeom::MeshVertex vertex;
            vertex.set(position);
            vertices.push_back(vertex);
        }
    }
    std::vector<int> indices;
    indices.reserve(6 * vertices.size());
    for (int j = 0; j < nv; ++j) {
        for (int i = 0; i < nu; ++i) {
            const int a = j * nu + i;
            const int b = j * nu + (i + 1) % nu;
            const int c = ((j + 1) % nv) * nu + (i + 1) % nu;
            const int d = ((j + 1) % nv) * nu + i;
            indices.insert(indices.end(), {a, b, c, a, c, d});
        }
    }
    mesh.copyVertices(static_cast<int>(vertices.size()), vertices.data());
    mesh.copyTriangles(static_cast<int>(indices.size() / 3), indices.data());
}

void makeCube(koGeom::CompactMesh& mesh) {
    koGeom::MeshVertex vertices[8];
    for (int i = 0; i < 8; ++i) {
        vertices[i].set(static_cast<float>(i & 1), static_cast<float>((i >> 1) & 1),
                        static_cast<float>((i >> 2) & 1));
    }
    // Two triangles per face, counter-clockwise seen from outside.
    const int indices[36] = {0, 2, 3, 0, 3, 1,  // z = 0
                             4, 5, 7, 4, 7, 6,  // z = 1
                             0, 1, 5, 0, 5, 4,  // y = 0
                             2, 6, 7, 2, 7, 3,  // y = 1
                             0, 4, 6, 0, 6, 2,  // x = 0
                             1, 3, 7, 1, 7, 5}; // x = 1
    mesh.copyVertices(8, vertices);
    mesh.copyTriangles(12, indices);
}

} // namespace koGeomTest
