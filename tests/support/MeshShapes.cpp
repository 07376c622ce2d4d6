#include "tests/support/MeshShapes.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <numbers>
#include <random>
#include <vector>

#include "geom/mesh/MeshAttributes.h"

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

namespace {

// Fills `count` 32-bit values at `values` with random bits.
void fillBits(void* values, int count, std::mt19937& random) {
    for (int i = 0; i < count; ++i) {
        const std::uint32_t bits = random();
        std::memcpy(static_cast<char*>(values) + 4 * static_cast<std::size_t>(i), &bits, 4);
    }
}

} // namespace

void fillEveryArray(koGeom::CompactMesh& mesh, int numVertices, int numTriangles, unsigned seed) {
    std::mt19937 random(seed);
    mesh.resizeVertexArray(numVertices);
    mesh.allocNormalArray();
    mesh.allocUVArray();
    mesh.allocSTArray();
    mesh.allocColourArray();
    const char* names[] = {"weight", "offset", "tangent", "tint"};
    for (int size = 1; size <= 4; ++size) {
        mesh.allocAttributes(names[size - 1], size)->setStorageRequired(true);
    }
    for (int i = 0; i < mesh.getNumAttributes(); ++i) {
        koGeom::MeshAttributes* channel = mesh.getAttributes(i);
        fillBits(channel->asFloat(), channel->getNumElements() * channel->getDimension(), random);
    }
    mesh.resizeTriangleArray(numTriangles);
    mesh.allocTriangleNormalArray();
    mesh.setTriNormalsComputed(false);
    fillBits(mesh.getTrianglesRaw(), 3 * numTriangles, random);
    fillBits(mesh.getTriangleNormalsRaw(), 3 * numTriangles, random);
    mesh.resizeTriStripArrays(1000, 2);
    mesh.resizeTriFanArrays(3, 1);
    mesh.resizeLineStripArrays(1001, 2);
    mesh.resizePolyArrays(4, 1);
    for (koGeom::MeshSequence* sequence :
         {&mesh.getTriStrips(), &mesh.getTriFans(), &mesh.getLineStrips(), &mesh.getPolys()}) {
        fillBits(sequence->points().elements(), sequence->points().count(), random);
        fillBits(sequence->lengths().elements(), sequence->lengths().count(), random);
    }
    mesh.setDrawFlags(0x5a5a);
    mesh.setFlatShaded(false);
}

} // namespace koGeomTest
