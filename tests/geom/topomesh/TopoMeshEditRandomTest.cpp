#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "geom/topomesh/TopoMesh.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::checkTopoMesh;
using koLinear::Point;

template <class Handle>
std::vector<Handle> listOf(Handle head) {
    std::vector<Handle> list;
    for (Handle h = head; h; h = h.nextInMesh()) {
        list.push_back(h);
    }
    return list;
}

int sharedEdges(TopoMeshFace f, TopoMeshFace g) {
    int count = 0;
    TopoMeshEdge e = f.firstEdge();
    do {
        count += e.twin() && e.twin().face() == g;
        e = e.next();
    } while (e != f.firstEdge());
    return count;
}

bool triangleFan(TopoMeshVertex v) {
    for (TopoMeshEdgeVertexIterator it(v); it.valid(); it.next()) {
        if (!it.edge().face().isTriangle() || !it.edge().twin()) {
            return false;
        }
    }
    return true;
}

// Applies one random edit whose preconditions hold and returns its name, or returns null
// when the drawn records do not fit the drawn edit.
const char* randomEdit(TopoMesh& mesh, std::mt19937& random) {
    const std::vector<TopoMeshEdge> edges = listOf(mesh.firstEdge());
    const std::vector<TopoMeshFace> faces = listOf(mesh.firstFace());
    const std::vector<TopoMeshVertex> vertices = listOf(mesh.firstVertex());
    auto pick = [&](const auto& list) { return list[random() % list.size()]; };
    const Point p(random() % 100, random() % 100, random() % 100);
    const TopoMeshEdge e = pick(edges);
    const TopoMeshFace f = pick(faces);
    const TopoMeshVertex v = pick(vertices);
    const TopoMeshEdge first = f.firstEdge();
    const bool big = f.numVertices() >= 4;
    const TopoMeshFace other = e.twin() ? e.twin().face() : TopoMeshFace();
    switch (random() % 9) {
        case 0:
            if (!other || !e.face().isTriangle() || !other.isTriangle() || other == e.face()) {
                return nullptr;
            }
            mesh.swapEdge(e);
            return "swapEdge";
        case 1:
            mesh.subdivideFace(f, p);
            return "subdivideFace(f, p)";
        case 2:
            mesh.subdivideEdge(e, p);
            return "subdivideEdge";
        case 3:
            if (!big) {
                return nullptr;
            }
            mesh.subdivideFace(f, first.firstVertex(), first.next().next().firstVertex());
            return "subdivideFace(f, s, u)";
        case 4:
            if (!big) {
                return nullptr;
            }
            mesh.splitFace(first, first.next().next());
            return "splitFace";
        case 5:
            if (!other || sharedEdges(e.face(), other) != 1 || e.v1().valence() < 4 ||
                e.v2().valence() < 4) {
                return nullptr;
            }
            mesh.deleteEdge(e);
            return "deleteEdge";
        case 6:
            if (v.valence() != 2 || v.onBoundary()) {
                return nullptr;
            }
            mesh.deleteValenceTwoVertex(v);
            return "deleteValenceTwoVertex";
        case 7:
            if (v.valence() != 3 || !triangleFan(v)) {
                return nullptr;
            }
            mesh.deleteVertex(v);
            return "deleteVertex";
        default: {
            const ko::vector<Point> points(random() % 3 + 1, p);
            const TopoMeshVertex to = (big ? first.next().next() : first.next()).firstVertex();
            mesh.subdivideFace(f, first.firstVertex(), to, points);
            return "subdivideFace(f, s, u, points)";
        }
    }
}

// Hundreds of random valid edits on shapes of a few hundred faces, the links checked after
// each; the Euler characteristic of a closed surface is kept by every edit used.
TEST(TopoMeshEditRandom, EverySequenceOfValidEditsKeepsTheLinksSound) {
    for (const koGeomTest::TopoMeshShape& shape :
         {koGeomTest::torus(12, 10), koGeomTest::sphere(2), koGeomTest::quadGrid(12, 12, false)}) {
        SCOPED_TRACE(shape.name);
        TopoMesh mesh;
        koGeomTest::buildTopoMesh(mesh, shape);
        ASSERT_EQ(checkTopoMesh(mesh), "");
        const int euler = mesh.numVertices() - mesh.numEdges() / 2 + mesh.numFaces();
        std::mt19937 random(7);
        int applied = 0;
        for (int step = 0; step < 1500 && applied < 400; ++step) {
            const char* edit = randomEdit(mesh, random);
            if (edit == nullptr) {
                continue;
            }
            ++applied;
            ASSERT_EQ(checkTopoMesh(mesh), "") << "after " << edit << " at step " << step;
            if (shape.name != "quadGrid") {
                ASSERT_EQ(mesh.numVertices() - mesh.numEdges() / 2 + mesh.numFaces(), euler)
                    << edit;
            }
        }
        EXPECT_EQ(applied, 400);
    }
}

// Grows a tree of states from random earlier ones with random valid edits, drops references at
// random (so states are joined, cut off as leaves and removed as roots on either side of the
// live records), and returns to random states, comparing every record each time: this holds
// only if every edit reported every record it touched. At the end only the current state is
// left, and every record out of the pools is a live one.
TEST(TopoMeshEditRandom, UndoAndRedoAcrossABranchingTreeRestoreEveryRecord) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        TopoMesh mesh;
        koGeomTest::buildTopoMesh(mesh, koGeomTest::torus(6, 5));
        mesh.enableTransactions();
        std::vector<std::pair<ko::Reference<TopoMeshState>, koGeomTest::TopoMeshPicture>> saved;
        saved.emplace_back(mesh.createState(), koGeomTest::pictureOf(mesh));
        for (int step = 0; step < 120; ++step) {
            const unsigned action = random() % 10;
            const std::size_t some = random() % saved.size();
            if (action < 4 && saved.size() < 14) {
                mesh.setState(saved[some].first);
                ASSERT_EQ(checkTopoMesh(mesh), "") << step;
                for (unsigned edits = 1 + random() % 6; edits > 0;) {
                    edits -= randomEdit(mesh, random) != nullptr ? 1 : 0;
                }
                saved.emplace_back(mesh.createState(), koGeomTest::pictureOf(mesh));
            } else if (action < 6 && saved.size() > 1) {
                saved.erase(saved.begin() + static_cast<std::ptrdiff_t>(some));
            } else {
                mesh.setState(saved[some].first);
                ASSERT_EQ(checkTopoMesh(mesh), "") << step;
                ASSERT_TRUE(koGeomTest::pictureOf(mesh) == saved[some].second) << step;
            }
        }
        const ko::Reference<TopoMeshState> current = mesh.createState();
        saved.clear();
        EXPECT_EQ(koGeomTest::recordsOut(mesh),
                  (std::vector<std::size_t>{static_cast<std::size_t>(mesh.numVertices()),
                                            static_cast<std::size_t>(mesh.numEdges()),
                                            static_cast<std::size_t>(mesh.numFaces())}));
        EXPECT_EQ(current->refs(), 1);
    }
}

} // namespace
} // namespace koGeom
