#include "geom/mesh/CompactMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <string>
#include <vector>

#include "geom/mesh/MeshModification.h"
#include "tests/support/HeapProbe.h"
#include "tests/support/MeshBuilders.h"
#include "tests/support/RecordingAllocator.h"

namespace koGeom {
namespace {

using koGeomTest::fillVertices;
using koGeomTest::NoticeRecorder;
using koGeomTest::RecordingAllocator;
using Type = MeshModification::Type;

// Gives a sequence the given runs of indices, with its starts emptied.
void fill(MeshSequence& sequence, const std::vector<std::vector<int>>& runs) {
    std::vector<int> points;
    sequence.lengths().setCount(static_cast<int>(runs.size()));
    for (std::size_t i = 0; i < runs.size(); ++i) {
        points.insert(points.end(), runs[i].begin(), runs[i].end());
        sequence.lengths().elements()[i] = static_cast<int>(runs[i].size());
    }
    sequence.points().setCount(static_cast<int>(points.size()));
    std::copy(points.begin(), points.end(), sequence.points().elements());
    sequence.invalidate();
}

std::vector<MeshTriangle> triangles(const CompactMesh& mesh) {
    return {mesh.getTriangles(), mesh.getTriangles() + mesh.getNumTriangles()};
}

TEST(CompactMesh, ExpandsStripsFansAndLineStripsByHand) {
    CompactMesh mesh;
    const int existing[] = {9, 9, 9};
    mesh.copyTriangles(1, existing);
    mesh.allocTriangleNormalArray();
    fill(mesh.getTriStrips(), {{0, 1, 2, 3, 4}, {5, 6}, {10, 11, 12, 13}});
    fill(mesh.getTriFans(), {{7, 1, 2, 3}});
    const int sizeBefore = mesh.getSizeInBytes();
    mesh.fullyPopulateTriangleArray();
    const std::vector<MeshTriangle> once = {{{9, 9, 9}}, {{0, 1, 2}},    {{2, 1, 3}},
                                            {{2, 3, 4}}, {{10, 11, 12}}, {{12, 11, 13}},
                                            {{7, 1, 2}}, {{7, 2, 3}}};
    EXPECT_EQ(triangles(mesh), once);
    // The triangle normals grew with the triangles: 12 bytes each in the estimate.
    EXPECT_EQ(mesh.getSizeInBytes() - sizeBefore, 2 * 12 * 7);
    // The strips and fans stay, so a second call appends the same triangles again.
    mesh.fullyPopulateTriangleArray();
    ASSERT_EQ(mesh.getNumTriangles(), 15);
    EXPECT_EQ(triangles(mesh)[14], (MeshTriangle{{7, 2, 3}}));

    const MeshLine existingLine{{8, 8}};
    mesh.resizeLineArray(1);
    mesh.getLines()[0] = existingLine;
    fill(mesh.getLineStrips(), {{5, 6, 7}, {1}, {3, 4}});
    mesh.fullyPopulateLineArray();
    EXPECT_EQ(std::vector<MeshLine>(mesh.getLines(), mesh.getLines() + mesh.getNumLines()),
              (std::vector<MeshLine>{existingLine, {{5, 6}}, {{6, 7}}, {{3, 4}}}));
}

TEST(CompactMesh, ExpansionCountsShortSequencesAndSkipsOnesPastThePoints) {
    // Deliberate: strips too short to yield a triangle subtract from the count that decides
    // whether anything is appended, so here the three-index strip is not expanded.
    CompactMesh mesh;
    fill(mesh.getTriStrips(), {{}, {}, {0, 1, 2}});
    mesh.fullyPopulateTriangleArray();
    EXPECT_EQ(mesh.getNumTriangles(), 0);
    // Once the sum reaches one, every triangle is appended: one for the strip, four for the
    // fan, though the sum counts only one.
    fill(mesh.getTriFans(), {{0, 1, 2, 3, 4, 5}});
    mesh.fullyPopulateTriangleArray();
    EXPECT_EQ(triangles(mesh),
              (std::vector<MeshTriangle>{
                  {{0, 1, 2}}, {{0, 1, 2}}, {{0, 2, 3}}, {{0, 3, 4}}, {{0, 4, 5}}}));

    // Deliberate: the line count is the old one plus the sum of (length − 1), so a line strip
    // of length 0 shortens the existing lines by one.
    mesh.resizeLineArray(3);
    fill(mesh.getLineStrips(), {{}});
    mesh.fullyPopulateLineArray();
    EXPECT_EQ(mesh.getNumLines(), 2);
    fill(mesh.getLineStrips(), {{}, {}, {}});
    mesh.fullyPopulateLineArray();
    EXPECT_EQ(mesh.getNumLines(), 0);

    // Lengths that run past the points: the sequence that would read past them gives nothing.
    CompactMesh broken;
    fill(broken.getTriStrips(), {{20, 21, 22}, {23}});
    broken.getTriStripLengths()[1] = 5;
    broken.fullyPopulateTriangleArray();
    EXPECT_EQ(triangles(broken), (std::vector<MeshTriangle>{{{20, 21, 22}}}));
}

TEST(CompactMesh, TriangleNormalsFollowTheTriangles) {
    CompactMesh mesh;
    mesh.allocTriangleNormalArray(); // no triangles: nothing to give normals to
    const int indices[] = {0, 1, 2, 1, 2, 3, 2, 3, 4, 3, 4, 5};
    mesh.copyTriangles(4, indices);
    EXPECT_EQ(mesh.getTriangleNormals(), nullptr);
    EXPECT_FALSE(mesh.getFlatShaded());
    mesh.allocTriangleNormalArray();
    EXPECT_TRUE(mesh.getFlatShaded());
    mesh.getTriangleNormals()[3].set(0, 0, 1);
    mesh.resizeTriangleArray(10); // the normals grow with the triangles, keeping theirs
    EXPECT_EQ(mesh.getTriangleNormalsRaw()[11], 1.0f);
    // Once chosen, the shading no longer follows the triangle normals.
    mesh.setFlatShaded(false);
    EXPECT_FALSE(mesh.getFlatShaded());
    mesh.resizeTriangleArray(0);
    mesh.copyTriangles(1, indices);
    EXPECT_EQ(mesh.getTriangleNormals(), nullptr);
}

TEST(CompactMesh, DataQueriesAndSequenceStarts) {
    CompactMesh polygons;
    polygons.resizePolyArrays(12, 3);
    EXPECT_TRUE(polygons.hasSurfaceData() && !polygons.hasCurveData());
    std::copy_n(std::vector<int>{3, 4, 5}.begin(), 3, polygons.getPolyLengths());
    polygons.getPolyStarts();
    // The same counts leave the cache alone; other counts empty it before it is rebuilt.
    polygons.resizePolyArrays(12, 3);
    EXPECT_EQ(polygons.getPolys().numStarts(), 3);
    polygons.resizePolyArrays(20, 2);
    EXPECT_EQ(polygons.getPolys().numStarts(), 0);
    polygons.getPolyLengths()[0] = 10;
    EXPECT_EQ(polygons.getPolyStarts()[1], polygons.getPolyPoints() + 10);

    // Clearing the selection empties both bit sets, not just their bits.
    polygons.getSelectedVertices().resize(5);
    polygons.getSelectedTriangles().resize(3);
    polygons.clearSelection();
    EXPECT_EQ(polygons.getSelectedVertices().size() + polygons.getSelectedTriangles().size(), 0);
}

TEST(CompactMesh, SizeInBytesByHand) {
    CompactMesh mesh;
    fillVertices(mesh, std::vector<MeshVertex>(10, MeshVertex{1, 2, 3}));
    mesh.resizeTriangleArray(4);
    mesh.allocTriangleNormalArray();
    mesh.getSelectedTriangles().resize(40);
    fill(mesh.getTriStrips(), {{0, 1, 2}, {1, 2, 3}});
    mesh.getTriStripStarts();
    mesh.resizeLineStripArrays(5, 1);
    // The point mesh (160, a 20-byte selection, 30 floats and 88 for the vertices), 520,
    // 12 per triangle and triangle normal, a two-word selection, 6 + 2 + 2 × 2 strip integers
    // and 5 + 1 line strip integers.
    const int expected = 160 + 20 + 120 + 88 + 520 + 12 * 8 + 24 + 4 * 12 + 4 * 6;
    EXPECT_EQ(mesh.getSizeInBytes(), expected);
    // Deliberate: lines are not part of the estimate.
    mesh.resizeLineArray(1000);
    EXPECT_EQ(mesh.getSizeInBytes(), expected);
}

TEST(CompactMesh, SwapExchangesOnlyMeshesWithoutAllocators) {
    CompactMesh a;
    fillVertices(a, {{1, 1, 1}, {2, 2, 2}});
    a.getSelectedVertices().resize(5);
    a.resizeTriangleArray(3);
    a.resizeTriStripArrays(4, 1);
    a.getTriStrips().auxiliary().setCount(2);
    a.setDrawFlags(5);
    a.allocTriangleNormalArray();
    a.setFlatShaded(false);
    a.setTriNormalsComputed(false);
    CompactMesh b;
    fillVertices(b, {{3, 3, 3}});
    b.allocColourArray();
    b.resizeLineArray(2);
    const MeshTriangle* aTriangles = a.getTriangles();
    const MeshAttributes* bColours = b.getColoursAttr();
    a.swap(b);
    EXPECT_TRUE(b.getTriangles() == aTriangles && b.getNumTriStripPoints() == 4 &&
                b.getDrawFlags() == 5 && b.getTriangleNormals() != nullptr);
    EXPECT_TRUE(a.getColoursAttr() == bColours && b.getColoursAttr() == nullptr);
    EXPECT_EQ(b.getSelectedVertices().size(), 5);
    EXPECT_EQ(a.getTriStrips().auxiliary().count(), 2); // the auxiliary cache stays
    EXPECT_FALSE(b.getFlatShaded()); // chosen, although b has triangle normals now
    EXPECT_FALSE(b.getTriNormalsComputed());
    EXPECT_TRUE(a.getNumLines() == 2 && a.getTriNormalsComputed());
    // Deliberate: with an allocator on either side, swap does nothing and says nothing, for
    // the point mesh part as for the rest.
    CompactMesh keyed(ko::Reference<ArrayAllocator>(new RecordingAllocator));
    fillVertices(keyed, {{4, 4, 4}, {5, 5, 5}, {6, 6, 6}});
    keyed.resizeTriangleArray(7);
    NoticeRecorder heard(keyed);
    for (int direction = 0; direction < 2; ++direction) {
        direction == 0 ? keyed.swap(b) : b.swap(keyed);
        EXPECT_TRUE(keyed.getNumTriangles() == 7 && keyed.getNumVertices() == 3);
        EXPECT_TRUE(b.getTriangles() == aTriangles && b.getNumVertices() == 2);
    }
    EXPECT_TRUE(heard.seen.empty());
}

TEST(CompactMesh, AssignmentKeepsEachArraysOwnAllocator) {
    CompactMesh source;
    fillVertices(source, {{1, 1, 1}, {2, 2, 2}, {3, 3, 3}});
    const int indices[] = {0, 1, 2, 2, 1, 0};
    source.copyTriangles(2, indices);
    source.allocTriangleNormalArray();
    source.resizeLineArray(1);
    source.getLines()[0].set(0, 2);
    fill(source.getTriStrips(), {{0, 1, 2}});
    int renderer = 0;
    source.setRenderInfo(&renderer);
    source.setDrawFlags(3);
    source.setTriNormalsComputed(false);
    source.setFlatShaded(false);
    source.getSelectedTriangles().resize(2);
    source.getSelectedTriangles().setBit(1);

    ko::Reference<RecordingAllocator> allocator(new RecordingAllocator);
    CompactMesh target(allocator);
    NoticeRecorder heard(target);
    target = source;
    EXPECT_TRUE(heard.seen.empty());
    EXPECT_EQ(triangles(target), triangles(source));
    EXPECT_EQ(target.getLines()[0], (MeshLine{{0, 2}}));
    EXPECT_TRUE(target.getRenderInfo() == &renderer && target.getDrawFlags() == 3);
    EXPECT_FALSE(target.getTriNormalsComputed());
    EXPECT_FALSE(target.getFlatShaded()); // the choice travels, not just the normals
    EXPECT_NE(target.getSelectedTriangles().isBitSet(1), 0u);
    // The primitive arrays are in the target's allocator, under their own keys: two
    // triangles, two normals and one line, each with two guards.
    EXPECT_EQ(allocator->get(allocator->requests[0].key),
              static_cast<const void*>(target.getTriangles() - 1));
    std::vector<std::size_t> bytes;
    for (const RecordingAllocator::Request& request : allocator->requests) {
        if (request.operation == RecordingAllocator::Operation::Resize) {
            bytes.push_back(request.bytes);
        }
    }
    EXPECT_EQ(bytes, (std::vector<std::size_t>{4 * 12, 3 * 8, 4 * 12}));
    // The sequences end on the heap, as sequence assignment leaves them.
    EXPECT_FALSE(target.getTriStrips().points().allocator());
    EXPECT_EQ(target.getTriStripPoints()[2], 2);

    // Assignment copies everything aside before it touches the target, so a target on the
    // heap is left as it was when any request fails.
    source.allocAttributes("weights", 2);
    source.allocColourArray();
    source.getSelectedVertices().resize(40);
    CompactMesh heapTarget;
    fillVertices(heapTarget, {{5, 5, 5}, {6, 6, 6}});
    heapTarget.allocNormalArray();
    heapTarget.getSelectedVertices().resize(3);
    heapTarget.getSelectedVertices().setBit(2);
    heapTarget.resizeTriangleArray(5);
    heapTarget.resizeLineArray(4);
    const MeshTriangle* kept = heapTarget.getTriangles();
    const MeshAttributes* vertices = heapTarget.getVerticesAttr();
    int failures = 0;
    for (std::size_t allowed = 0;; ++allowed, ++failures) {
        try {
            heapProbe::FailureScope scope(allowed);
            heapTarget = source;
            break;
        } catch (const std::bad_alloc&) {
        }
        ASSERT_EQ(koGeomTest::channelNames(heapTarget), "vertices,normals");
        EXPECT_TRUE(heapTarget.getVerticesAttr() == vertices && heapTarget.getNumVertices() == 2);
        EXPECT_EQ(heapTarget.getVertices()[1], (MeshVertex{6, 6, 6}));
        EXPECT_TRUE(heapTarget.getSelectedVertices().size() == 3 &&
                    heapTarget.getSelectedVertices().numSet() == 1);
        ASSERT_EQ(heapTarget.getTriangles(), kept);
        EXPECT_EQ(heapTarget.getNumLines() + heapTarget.getNumTriStrips(), 4);
    }
    EXPECT_GE(failures, 8); // channels, selections, primitives and sequences each need storage
    EXPECT_EQ(triangles(heapTarget), triangles(source));
    EXPECT_EQ(koGeomTest::channelNames(heapTarget), "vertices,weights,colours");
}

TEST(CompactMesh, SetArrayAllocatorMovesTheArraysInOrder) {
    CompactMesh mesh;
    fillVertices(mesh, {{0, 0, 0}});
    mesh.resizeTriangleArray(3);
    mesh.allocTriangleNormalArray();
    mesh.resizeLineArray(2);
    mesh.resizeTriStripArrays(3, 1);
    mesh.resizePolyArrays(5, 2);
    ko::Reference<RecordingAllocator> allocator(new RecordingAllocator);
    mesh.setArrayAllocator(allocator);
    mesh.allocColourArray(); // channels made later go there too
    // Each array with contents is copied into the allocator, guards included: the vertices,
    // then the triangles, lines, triangle normals, strip points and lengths, polygon points
    // and lengths; then the colours.
    std::vector<std::size_t> bytes;
    for (const RecordingAllocator::Request& request : allocator->requests) {
        bytes.push_back(request.bytes);
    }
    EXPECT_EQ(bytes, (std::vector<std::size_t>{20, 60, 32, 60, 20, 12, 28, 16, 24}));
}

} // namespace
} // namespace koGeom
