#include "geom/topomesh/TopoMeshAllocatorT.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/detail/TopoMeshImplAlloc.h"

namespace koGeom {
namespace {

struct TaggedVertex : TopoMeshVertexData {
    double weight;
};
struct TaggedEdge : TopoMeshEdgeData {
    long long label;
};
struct TaggedFace : TopoMeshFaceData {
    double area[2];
};
using TaggedAlloc = TopoMeshAllocatorT<TaggedVertex, TaggedEdge, TaggedFace>;

bool allZero(const void* p, std::size_t n) {
    const auto* bytes = static_cast<const unsigned char*>(p);
    return std::all_of(bytes, bytes + n, [](unsigned char b) { return b == 0; });
}

// Reused records come back zeroed over the whole derived size, and pools are lazy.
template <class Alloc>
void checkPools(std::size_t vertex, std::size_t edge, std::size_t face) {
    Alloc alloc;
    EXPECT_EQ(alloc.vertexSize(), vertex);
    EXPECT_EQ(alloc.edgeSize(), edge);
    EXPECT_EQ(alloc.faceSize(), face);
    EXPECT_EQ(alloc.vertexPool().numBlocks() + alloc.edgePool().numBlocks() +
                  alloc.facePool().numBlocks(),
              0u);
    for (int round = 0; round < 2; ++round) {
        TopoMeshVertexData* v = alloc.allocVertex();
        TopoMeshEdgeData* e = alloc.allocEdge();
        TopoMeshFaceData* f = alloc.allocFace();
        EXPECT_TRUE(allZero(v, vertex) && allZero(e, edge) && allZero(f, face));
        std::memset(static_cast<void*>(v), 0xAB, vertex);
        std::memset(static_cast<void*>(e), 0xAB, edge);
        std::memset(static_cast<void*>(f), 0xAB, face);
        alloc.freeVertex(v);
        alloc.freeEdge(e);
        alloc.freeFace(f);
    }
    EXPECT_EQ(alloc.edgePool().slotSize(), edge); // packed: no padding after 8-byte links
    EXPECT_EQ(alloc.edgePool().numAllocated(), 0u);
    std::unique_ptr<TopoMeshAlloc> made(alloc.create());
    EXPECT_NE(dynamic_cast<Alloc*>(made.get()), nullptr);
}

TEST(TopoMeshAllocatorT, BaseAndDerivedRecords) {
    checkPools<TopoMeshAllocatorT<TopoMeshVertexData, TopoMeshEdgeData, TopoMeshFaceData>>(48, 56,
                                                                                           24);
    checkPools<detail::TopoMeshImplAlloc>(48, 56, 24);
    checkPools<TaggedAlloc>(56, 64, 40);
}

TEST(TopoMeshAllocatorT, SizeEstimateIgnoresDerivedRecordSizes) {
    TopoMesh mesh(new TaggedAlloc);
    mesh.allocVertex();
    mesh.getImpl()->allocEdgeRecord();
    mesh.getImpl()->allocFaceRecord();
    EXPECT_EQ(mesh.getSizeInBytes(), 152u + 48u + 56u + 24u);
}

} // namespace
} // namespace koGeom
