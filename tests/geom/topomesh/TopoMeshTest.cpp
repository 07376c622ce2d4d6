#include "geom/topomesh/TopoMesh.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <vector>

#include "geom/topomesh/TopoMeshAllocatorT.h"
#include "geom/topomesh/detail/TopoMeshImplAlloc.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshRecordFaces.h"

namespace koGeom {
namespace {

using koGeomTest::addFacesByRecords;
using koGeomTest::checkTopoMesh;
using koGeomTest::pictureOf;
using koLinear::Point;

const std::vector<Point> tetraPoints = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
const std::vector<std::vector<int>> tetraFaces = {{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {0, 3, 2}};
// A quad and a triangle sharing the edge 1-2, and a vertex of no face.
const std::vector<Point> openPoints = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0},
                                       {0, 1, 0}, {2, 1, 0}, {5, 5, 5}};
const std::vector<std::vector<int>> openFaces = {{0, 1, 2, 3}, {1, 4, 2}};

std::vector<TopoMeshVertex> vertexList(const TopoMesh& mesh) {
    std::vector<TopoMeshVertex> list;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        list.push_back(v);
    }
    return list;
}

TEST(TopoMesh, NewMeshIsEmpty) {
    TopoMesh mesh;
    EXPECT_FALSE(mesh.firstVertex());
    EXPECT_FALSE(mesh.firstEdge());
    EXPECT_FALSE(mesh.firstFace());
    EXPECT_EQ(mesh.numVertices() + mesh.numEdges() + mesh.numFaces(), 0);
    EXPECT_EQ(mesh.getSizeInBytes(), 152u);
    EXPECT_FALSE(mesh.getImpl()->isRecording());
    EXPECT_NE(dynamic_cast<detail::TopoMeshImplAlloc*>(mesh.getImpl()->allocator()), nullptr);
}

TEST(TopoMesh, VerticesAppendInOrderAndSizeFollowsTheFixedFormula) {
    TopoMesh mesh;
    addFacesByRecords(mesh, openPoints, openFaces);
    ASSERT_EQ(checkTopoMesh(mesh), "");
    const std::vector<TopoMeshVertex> list = vertexList(mesh);
    ASSERT_EQ(list.size(), openPoints.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_EQ(list[i].point().x, openPoints[i].x);
    }
    EXPECT_FALSE(list.back().firstEdge());
    EXPECT_EQ(mesh.getImpl()->lastVertex(), list.back());
    EXPECT_EQ(mesh.numEdges(), 7);
    EXPECT_EQ(mesh.numFaces(), 2);
    EXPECT_EQ(mesh.getSizeInBytes(), 152u + 48u * 6 + 56u * 7 + 24u * 2);
}

// Freeing from the head, the middle and the tail, down to an empty list.
TEST(TopoMesh, FreeingUnlinksFromEveryPosition) {
    TopoMesh mesh;
    for (int i = 0; i < 5; ++i) {
        mesh.allocVertex(Point(i, 0, 0));
    }
    for (int position : {0, 2, 2, 1, 0}) {
        std::vector<TopoMeshVertex> before = vertexList(mesh);
        mesh.getImpl()->freeVertexRecord(before[static_cast<std::size_t>(position)]);
        before.erase(before.begin() + position);
        EXPECT_EQ(vertexList(mesh), before);
        ASSERT_EQ(checkTopoMesh(mesh), "");
    }
    EXPECT_FALSE(mesh.getImpl()->lastVertex());
    auto* pools = dynamic_cast<detail::TopoMeshImplAlloc*>(mesh.getImpl()->allocator());
    EXPECT_EQ(pools->vertexPool().numAllocated(), 0u);
}

TEST(TopoMesh, FreeingEdgesAndFacesReturnsTheirRecords) {
    TopoMesh mesh;
    addFacesByRecords(mesh, tetraPoints, tetraFaces);
    while (mesh.firstFace()) {
        koGeomTest::deleteFaceByRecords(mesh, mesh.firstFace());
        ASSERT_EQ(checkTopoMesh(mesh), "");
    }
    auto* pools = dynamic_cast<detail::TopoMeshImplAlloc*>(mesh.getImpl()->allocator());
    EXPECT_EQ(pools->edgePool().numAllocated() + pools->facePool().numAllocated(), 0u);
    EXPECT_EQ(mesh.numVertices(), 4);
}

// The checker must see each kind of fault, each made in a fresh sound mesh.
TEST(TopoMesh, CheckerReportsEachBrokenLink) {
    using Corruption = std::function<void(TopoMeshHeader&)>;
    const std::vector<Corruption> corruptions = {
        [](TopoMeshHeader& h) { h.firstEdge->twin = h.firstEdge->next; },
        [](TopoMeshHeader& h) { h.firstEdge->next = h.lastEdge; },
        [](TopoMeshHeader& h) { h.firstEdge->face = h.lastFace; },
        [](TopoMeshHeader& h) { h.numEdges += 1; },
        [](TopoMeshHeader& h) { h.lastVertex = h.firstVertex; },
        [](TopoMeshHeader& h) { h.firstVertex->nextInMesh->prevInMesh = nullptr; },
        [](TopoMeshHeader& h) { h.firstVertex->firstEdge = h.firstVertex->firstEdge->next; },
        [](TopoMeshHeader& h) { h.firstFace->firstEdge = nullptr; },
    };
    for (std::size_t i = 0; i < corruptions.size(); ++i) {
        TopoMesh mesh;
        addFacesByRecords(mesh, tetraPoints, tetraFaces);
        ASSERT_EQ(checkTopoMesh(mesh), "");
        corruptions[i](mesh.getImpl()->header());
        EXPECT_NE(checkTopoMesh(mesh), "") << "corruption " << i;
    }
}

class CountingAlloc
    : public TopoMeshAllocatorT<TopoMeshVertexData, TopoMeshEdgeData, TopoMeshFaceData> {
public:
    static inline int made = 0;
    TopoMeshAlloc* create() const override {
        ++made;
        return new CountingAlloc;
    }
};

TEST(TopoMesh, CopyKeepsOrderAndLinksInPoolsFromTheSourceAllocator) {
    for (const auto* faces : {&tetraFaces, &openFaces}) {
        TopoMesh source(new CountingAlloc);
        addFacesByRecords(source, faces == &tetraFaces ? tetraPoints : openPoints, *faces);
        CountingAlloc::made = 0;
        TopoMesh copy(source);
        EXPECT_EQ(CountingAlloc::made, 1);
        EXPECT_NE(dynamic_cast<CountingAlloc*>(copy.getImpl()->allocator()), nullptr);
        EXPECT_EQ(checkTopoMesh(copy), "");
        EXPECT_EQ(pictureOf(copy), pictureOf(source));
        EXPECT_NE(copy.firstEdge(), source.firstEdge());
        EXPECT_EQ(checkTopoMesh(source), ""); // the links lent during the copy are back
    }
}

TEST(TopoMesh, CopyAlwaysTakesADefaultAllocatorDeliberate) {
    TopoMesh source(new CountingAlloc);
    addFacesByRecords(source, openPoints, openFaces);
    TopoMesh target(new CountingAlloc);
    TopoMesh::CopyData maps;
    target.copy(source, maps);
    EXPECT_NE(dynamic_cast<detail::TopoMeshImplAlloc*>(target.getImpl()->allocator()), nullptr);
    EXPECT_EQ(pictureOf(target), pictureOf(source));
    ASSERT_EQ(maps.edges.size(), 7u);
    for (const auto& [from, to] : maps.edges) {
        EXPECT_EQ(maps.vertices.at(from.firstVertex()), to.firstVertex());
        EXPECT_EQ(maps.faces.at(from.face()), to.face());
    }
    // Into itself: the old contents are copied before they go.
    const koGeomTest::TopoMeshPicture before = pictureOf(target);
    target.copy(target, maps);
    EXPECT_EQ(pictureOf(target), before);
}

TEST(TopoMesh, FailedAssignmentLeavesTheTargetAsItWas) {
    TopoMesh source;
    addFacesByRecords(source, tetraPoints, tetraFaces);
    TopoMesh target;
    addFacesByRecords(target, openPoints, openFaces);
    const koGeomTest::TopoMeshPicture kept = pictureOf(target);
    for (std::size_t allowed = 0;; ++allowed) {
        try {
            heapProbe::FailureScope scope(allowed);
            target = source;
            break;
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(pictureOf(target), kept) << allowed;
        ASSERT_EQ(checkTopoMesh(source), "") << allowed;
    }
    EXPECT_EQ(pictureOf(target), pictureOf(source));
}

TEST(TopoMesh, SwapExchangesBodies) {
    TopoMesh a;
    TopoMesh b(new CountingAlloc);
    addFacesByRecords(a, tetraPoints, tetraFaces);
    const TopoMeshImpl* bodyOfA = a.getImpl();
    const TopoMeshEdge edgeOfA = a.firstEdge();
    a.swap(b);
    EXPECT_EQ(b.getImpl(), bodyOfA);
    EXPECT_EQ(b.firstEdge(), edgeOfA);
    EXPECT_EQ(a.numEdges(), 0);
    EXPECT_NE(dynamic_cast<CountingAlloc*>(a.getImpl()->allocator()), nullptr);
}

} // namespace
} // namespace koGeom
