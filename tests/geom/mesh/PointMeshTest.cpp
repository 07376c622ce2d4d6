#include "geom/mesh/PointMesh.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cstddef>
#include <new>
#include <string>
#include <vector>

#include "geom/mesh/MeshModification.h"
#include "geom/spatial/BoundingBox.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::channelNames;
using koGeomTest::fillVertices;
using koGeomTest::NoticeRecorder;
using koGeomTest::RecordingAllocator;
using Type = MeshModification::Type;

TEST(PointMesh, ConstructionFromArrays) {
    const MeshVertex vertices[] = {{1, 2, 3}, {4, 5, 6}};
    const MeshNormal normals[] = {{0, 0, 1}, {0, 1, 0}};
    const MeshColour colours[] = {{1, 0, 0, 1}, {0, 1, 0, 0.5f}};
    const PointMesh mesh(2, vertices, normals, nullptr, colours);
    EXPECT_EQ(channelNames(mesh), "vertices,normals,colours");
    EXPECT_EQ(mesh.getColoursRaw()[7], 0.5f);

    // Below one vertex there are no channels, but the count is kept as given; queries of
    // missing channels give empty ranges, in double.
    for (int n : {0, -2}) {
        PointMesh empty(n, vertices, normals, nullptr, colours);
        EXPECT_TRUE(empty.getNumVertices() == n && empty.getNumAttributes() == 0);
        BoundingBox box; // the zero box, which is valid
        empty.getBoundingBox(box);
        EXPECT_FALSE(box.isValid());
        koLinear::Range3d range({0, 0, 0}, {1, 1, 1});
        empty.getBoundingBox(range);
        EXPECT_EQ(range.max.z, -DBL_MAX);
        EXPECT_EQ(empty.getUVRange().min.y, DBL_MAX);
        empty.setNormalsComputed(true);
        EXPECT_FALSE(empty.getNormalsComputed());
    }
}

TEST(PointMesh, ChannelCreationRules) {
    PointMesh mesh;
    EXPECT_EQ(mesh.allocAttributes("weights", 1), nullptr); // no vertices yet
    fillVertices(mesh, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}});
    const std::pair<const char*, int> refused[] = {{"vertices", 3}, {"normals", 2}, {"uvs", 3},
                                                   {"sts", 1},      {"colours", 3}, {"weights", 0},
                                                   {"weights", 5}};
    for (auto [name, dimension] : refused) {
        EXPECT_EQ(mesh.allocAttributes(name, dimension), nullptr) << name << dimension;
    }
    MeshAttributes* normals = mesh.allocAttributes("normals", 3);
    EXPECT_EQ(mesh.allocAttributes("normals", 3), normals);
    EXPECT_EQ(mesh.allocAttributes("weights", 1)->getNumElements(), 3);
    EXPECT_EQ(mesh.allocAttributes("weights", 2), nullptr);
    // Names are exact: "Normals" is a client channel of any width.
    EXPECT_NE(mesh.allocAttributes("Normals", 2), nullptr);
    mesh.allocSTArray();
    const MeshAttributes* sts = mesh.getSTsAttr();
    mesh.allocUVArray();
    EXPECT_EQ(channelNames(mesh), "vertices,normals,weights,Normals,sts,uvs");
    EXPECT_EQ(mesh.getUVsAttr(), mesh.getAttributes(5));

    // Deleting keeps the order of the rest; "vertices" and unknown names are refused.
    mesh.deleteAttributes("vertices");
    mesh.deleteAttributes("missing");
    mesh.deleteNormals();
    EXPECT_EQ(channelNames(mesh), "vertices,weights,Normals,sts,uvs");
    EXPECT_TRUE(mesh.getNormals() == nullptr && mesh.getSTsAttr() == sts);

    // Names are added to what the caller's set already holds.
    ko::set<koString::CString> names{"kept"};
    mesh.getAttributeNames(names);
    EXPECT_EQ(names,
              (ko::set<koString::CString>{"kept", "vertices", "weights", "Normals", "sts", "uvs"}));
}

TEST(PointMesh, ResizingKeepsRangesUntilANoticeSaysOtherwise) {
    PointMesh mesh;
    fillVertices(mesh, {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}, {3, 3, 3}, {9, 8, 7}});
    mesh.allocColourArray();
    koLinear::Range3d range;
    mesh.getBoundingBox(range);
    mesh.resizeVertexArray(3);
    EXPECT_EQ(mesh.getColoursAttr()->getNumElements(), 3);
    EXPECT_EQ(mesh.getVertices()[2], (MeshVertex{2, 2, 2}));
    mesh.getBoundingBox(range); // still holds the vertex that was cut off
    EXPECT_EQ(range.max, koLinear::Point(9, 8, 7));

    mesh.resizeVertexArray(0);
    EXPECT_EQ(mesh.getNumAttributes(), 0);
    mesh.resizeVertexArray(4);
    EXPECT_EQ(channelNames(mesh), "vertices");
    const MeshVertex copied[] = {{-1, 0, 2}, {1, -3, 0}};
    mesh.copyVertices(2, copied);
    mesh.getBoundingBox(range);
    EXPECT_EQ(range.min, koLinear::Point(-1, -3, 0));

    // Attribute notices leave the vertices unmodified: only the uv range is rescanned.
    mesh.allocUVArray();
    mesh.getUVs()[0].set(0.0f, 0.0f);
    mesh.getUVs()[1].set(1.0f, 1.0f);
    ASSERT_EQ(mesh.getUVRange().max, koLinear::Point2(1, 1));
    mesh.getVertices()[1].set(5, 5, 5);
    mesh.getUVs()[1].set(2.0f, 2.0f);
    MeshModification uvs(&mesh, Type::AttributesModified, nullptr);
    uvs.uvsModified();
    mesh.modified(uvs);
    BoundingBox box;
    mesh.getBoundingBox(box);
    EXPECT_EQ(box.maxPt(), koLinear::PointFlt(1, 0, 2));
    EXPECT_EQ(mesh.getUVRange().max, koLinear::Point2(2, 2));
    MeshModification moved(&mesh, Type::Transformed, nullptr);
    mesh.modified(moved);
    mesh.getBoundingBox(box);
    EXPECT_EQ(box.maxPt(), koLinear::PointFlt(5, 5, 5));
    EXPECT_EQ(channelNames(mesh), "vertices,uvs");
}

TEST(PointMesh, AssignmentCopiesChannelsIntoTheirSourceAllocator) {
    ko::Reference<RecordingAllocator> allocator(new RecordingAllocator);
    PointMesh source(allocator);
    fillVertices(source, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    source.allocAttributes("weights", 1)->asFloat()[2] = 0.5f;
    source.getSelectedVertices().resize(3);
    source.getSelectedVertices().setBit(1);
    PointMesh target;
    fillVertices(target, {{0, 0, 0}});
    target.allocNormalArray();
    NoticeRecorder heard(target);
    const std::size_t before = allocator->requests.size();

    target = source;
    EXPECT_TRUE(heard.seen.empty());
    EXPECT_EQ(channelNames(target), "vertices,weights");
    EXPECT_EQ(target.getAttributes("weights")->asFloat()[2], 0.5f);
    EXPECT_NE(target.getSelectedVertices().isBitSet(1), 0u);
    // Each copy has a block of its own in the source's allocator: 9 and 3 floats, two guards.
    ASSERT_EQ(allocator->requests.size(), before + 2);
    EXPECT_EQ(allocator->requests[before].bytes, 11 * sizeof(float));
    EXPECT_EQ(allocator->requests[before + 1].bytes, 5 * sizeof(float));
    EXPECT_EQ(allocator->get(allocator->requests[before].key),
              static_cast<const void*>(target.getVerticesRaw() - 1));
    // Channels made later go where the target's own allocator puts them: on the heap.
    target.allocUVArray();
    EXPECT_EQ(allocator->requests.size(), before + 2);

    const MeshAttributes* vertices = target.getVerticesAttr();
    target = static_cast<const PointMesh&>(target);
    EXPECT_EQ(target.getVerticesAttr(), vertices);
}

} // namespace
} // namespace koGeom
