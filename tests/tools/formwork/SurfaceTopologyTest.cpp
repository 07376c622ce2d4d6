#include "tools/formwork/SurfaceTopology.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/MeshShapes.h"
#include "tests/support/TopoMeshChecker.h"
#include "tools/formwork/MeshArrays.h"
#include "tools/formwork/Torus.h"

namespace formworkTool {
namespace {

// Points and triangles of a small surface.
MeshArrays shape(std::vector<float> positions, std::vector<int> triangles) {
    MeshArrays arrays;
    arrays.positions = std::move(positions);
    arrays.triangles = std::move(triangles);
    return arrays;
}

MeshArrays twoCubes() {
    ko::Reference<koGeom::CompactMesh> cube(new koGeom::CompactMesh);
    koGeomTest::makeCube(*cube);
    MeshArrays arrays;
    for (int copy = 0; copy < 2; ++copy) {
        for (int v = 0; v < 8; ++v) {
            const float* p = cube->getVerticesRaw() + 3 * v;
            arrays.positions.insert(arrays.positions.end(), {p[0] + 2.0f * copy, p[1], p[2]});
        }
        for (int i = 0; i < 36; ++i) {
            arrays.triangles.push_back(cube->getTrianglesRaw()[i] + 8 * copy);
        }
    }
    return arrays;
}

struct Expected {
    int vertices, edges, faces, components, loops, euler, genus;
    int nonManifoldEdges, misorientedEdges, nonManifoldVertices, degenerate, unused;
};

struct Case {
    const char* name;
    MeshArrays arrays;
    Expected want;
};

// Square corners 0-3 at z = 0, apexes 4 and 5 off the plane, 6 repeats corner 0's point.
const std::vector<float> square{0, 0,    0,    1, 0,    0,    1,  1, 0, 0, 1,
                                0, 0.5f, 0.5f, 1, 0.5f, 0.5f, -1, 0, 0, 0};

TEST(SurfaceTopology, CountsAndCutsTableOfSurfaces) {
    // Columns: vertices, edges, faces, components, loops, euler, genus, non-manifold edges,
    // misoriented edges, non-manifold vertices, degenerate triangles, unused vertices.
    const Case cases[] = {
        // The demo torus welds its seams into a closed surface of genus 1.
        {"torus", makeTorus(8, 6, 1.0, 0.4), {48, 144, 96, 1, 0, 0, 1, 0, 0, 0, 0, 0}},
        {"two cubes", twoCubes(), {16, 36, 24, 2, 0, 4, 0, 0, 0, 0, 0, 0}},
        // Points 4 and 5 are in no triangle; 6 welds onto 0, which is.
        {"open square", shape(square, {0, 1, 2, 0, 2, 3}), {4, 5, 2, 1, 1, 1, 0, 0, 0, 0, 0, 2}},
        // Two triangles touching at corner 0 only: cut into two loops there.
        {"bowtie",
         shape({0, 0, 0, 1, 0, 0, 1, 1, 0, -1, 0, 0, -1, -1, 0}, {0, 1, 2, 0, 3, 4}),
         {5, 6, 2, 1, 2, 1, -1, 0, 0, 1, 0, 0}},
        // Three triangles on the edge 0-2: all cut apart, both ends non-manifold.
        {"book", shape(square, {0, 1, 2, 2, 3, 0, 0, 2, 4}), {5, 7, 3, 1, 3, 1, -1, 1, 0, 2, 0, 1}},
        // Both triangles run from 2 to 0: cut, though no vertex is non-manifold.
        {"misoriented", shape(square, {0, 1, 2, 2, 0, 3}), {4, 5, 2, 1, 2, 1, -1, 0, 1, 0, 0, 2}},
        // Vertex 6 sits on corner 0, so (6, 1, 0) collapses.
        {"degenerate", shape(square, {0, 1, 2, 6, 1, 0}), {3, 3, 1, 1, 1, 1, 0, 0, 0, 0, 1, 3}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Progress quiet(false);
        const SurfaceTopology t = buildSurfaceTopology(*c.arrays.toMesh(), quiet);
        ASSERT_EQ(koGeomTest::checkTopoMesh(*t.mesh), "");
        const int got[] = {t.vertices,
                           static_cast<int>(t.edges),
                           t.faces,
                           t.components,
                           t.boundaryLoops,
                           static_cast<int>(t.eulerCharacteristic()),
                           t.genus(),
                           t.nonManifoldEdges,
                           t.misorientedEdges,
                           t.nonManifoldVertices,
                           t.degenerateTriangles,
                           t.unusedVertices};
        EXPECT_EQ(std::vector<int>(std::begin(got), std::end(got)),
                  std::vector<int>(&c.want.vertices, &c.want.unused + 1));
    }
}

TEST(SurfaceTopology, CompactMeshOfRoundTripsTheWeldedTorus) {
    Progress quiet(false);
    const SurfaceTopology t = buildSurfaceTopology(*makeTorus(8, 6, 1.0, 0.4).toMesh(), quiet);
    const ko::Reference<koGeom::CompactMesh> back = compactMeshOf(*t.mesh);
    ASSERT_EQ(back->getNumVertices(), 48);
    ASSERT_EQ(back->getNumTriangles(), 96);
    const SurfaceTopology again = buildSurfaceTopology(*back, quiet);
    EXPECT_EQ(again.genus(), 1);
    EXPECT_EQ(again.unusedVertices, 0);
}

} // namespace
} // namespace formworkTool
