#include "geom/topomesh/TopoMesh.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <typeinfo>
#include <vector>

#include "geom/topomesh/TopoMeshAllocatorT.h"
#include "geom/topomesh/detail/TopoMeshImplAlloc.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/TopoMeshChecker.h"
#include "tests/support/TopoMeshShapes.h"

namespace koGeom {
namespace {

using koGeomTest::buildTopoMesh;
using koGeomTest::checkTopoMesh;
using koGeomTest::pictureOf;

// A quad and a triangle sharing the edge 1-2, and a vertex of no face.
const koGeomTest::TopoMeshShape open{
    "open",
    {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 1, 0}, {5, 5, 5}},
    {{0, 1, 2, 3}, {1, 4, 2}}};

TEST(TopoMesh, VerticesAppendInOrderAndSizeFollowsTheFixedFormula) {
    TopoMesh mesh;
    EXPECT_FALSE(mesh.firstVertex() || mesh.firstEdge() || mesh.firstFace());
    EXPECT_EQ(mesh.getSizeInBytes(), 152u);
    const std::vector<TopoMeshVertex> made = buildTopoMesh(mesh, open);
    std::vector<TopoMeshVertex> list;
    for (TopoMeshVertex v = mesh.firstVertex(); v; v = v.nextInMesh()) {
        list.push_back(v);
    }
    EXPECT_EQ(list, made);
    EXPECT_EQ(mesh.getSizeInBytes(), 152u + 48u * 6 + 56u * 7 + 24u * 2);
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
        buildTopoMesh(mesh, koGeomTest::tetrahedron());
        ASSERT_EQ(checkTopoMesh(mesh), "");
        corruptions[i](mesh.getImpl()->header());
        EXPECT_NE(checkTopoMesh(mesh), "") << "corruption " << i;
    }
}

// An allocator of its own type, and one whose 64 KiB half-edges lie in separate chunks of the
// address space, so that a copy finds them through its hash table rather than its chunk tables.
class OwnAlloc : public TopoMeshAllocatorT<TopoMeshVertexData, TopoMeshEdgeData, TopoMeshFaceData> {
public:
    TopoMeshAlloc* create() const override { return new OwnAlloc; }
};
struct WideEdge : TopoMeshEdgeData {
    char extra[1 << 16];
};

// The copy constructor makes its pools with the source's allocator; copy() always takes a
// default allocator, even into a mesh that had its own.
TEST(TopoMesh, CopiesKeepOrderAndLinksAndCopyTakesADefaultAllocatorDeliberate) {
    for (TopoMeshAlloc* alloc :
         {static_cast<TopoMeshAlloc*>(new OwnAlloc),
          static_cast<TopoMeshAlloc*>(
              new TopoMeshAllocatorT<TopoMeshVertexData, WideEdge, TopoMeshFaceData>)}) {
        TopoMesh source(alloc);
        buildTopoMesh(source, open);
        const TopoMesh copy(source);
        const TopoMeshAlloc& copyAlloc = *copy.getImpl()->allocator();
        EXPECT_EQ(typeid(copyAlloc), typeid(*alloc));
        EXPECT_EQ(checkTopoMesh(copy), "");
        EXPECT_EQ(pictureOf(copy), pictureOf(source));
        TopoMesh target(new OwnAlloc);
        TopoMesh::CopyData maps;
        target.copy(source, maps);
        const TopoMeshAlloc& targetAlloc = *target.getImpl()->allocator();
        EXPECT_EQ(typeid(targetAlloc), typeid(detail::TopoMeshImplAlloc));
        EXPECT_EQ(pictureOf(target), pictureOf(source));
        ASSERT_EQ(maps.edges.size(), 7u);
        for (const auto& [from, to] : maps.edges) {
            EXPECT_EQ(maps.vertices.at(from.firstVertex()), to.firstVertex());
            EXPECT_EQ(maps.faces.at(from.face()), to.face());
            EXPECT_EQ(maps.edges.at(from.next()), to.next());
        }
        // Into itself: the old contents are copied before they go.
        target.copy(target, maps);
        EXPECT_EQ(pictureOf(target), pictureOf(source));
    }
}

TEST(TopoMesh, FailedAssignmentLeavesTheTargetAsItWas) {
    TopoMesh source;
    buildTopoMesh(source, koGeomTest::tetrahedron());
    TopoMesh target;
    buildTopoMesh(target, open);
    const koGeomTest::TopoMeshPicture kept = pictureOf(target);
    for (std::size_t allowed = 0;; ++allowed) {
        try {
            heapProbe::FailureScope scope(allowed);
            target = source;
            break;
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(pictureOf(target), kept) << allowed;
    }
    EXPECT_EQ(pictureOf(target), pictureOf(source));
}

} // namespace
} // namespace koGeom
