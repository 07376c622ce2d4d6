#pragma once

#include "tessar/core/Reference.h"

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshIndexRecords.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/mesh/MeshSequence.h"
#include "geom/mesh/PointMesh.h"
#include "geom/storage/Array.h"
#include "geom/storage/ArrayAllocator.h"
#include "geom/storage/BitVector.h"

namespace koGeom {

class MeshModification;

/// The general polygonal mesh: a point mesh with vertex-indexed primitives on top of its
/// vertices. It holds independent triangles with optional per-triangle normals, independent
/// line segments, and four kinds of variable-length index sequences (triangle strips,
/// triangle fans, line strips, polygons), each a `MeshSequence`. Beside them it keeps a
/// triangle selection and drawing hints for a renderer.
///
/// Every primitive array and sequence of a mesh made with an allocator lives in that
/// allocator; set an allocator while the arrays are empty (see `setArrayAllocator`). The
/// triangle normals are either empty or exactly as many as the triangles. Indices are never
/// compared with the vertex count, and counts are not range-checked: a count of 0 deletes, a
/// negative count behaves as 0.
///
/// As with the point mesh, nothing here sends a notice by itself: the editor describes its
/// change in a `MeshModification` and passes it to `modified`. Pointers into the arrays stay
/// valid until the array is resized (and, in a moveable allocator, until the next unmap). A
/// mesh is used from one thread at a time, its const queries included, since the sequences'
/// starts are built on demand.
class FORMWORK_EXPORT CompactMesh : public PointMesh {
public:
    /// \name Construction and assignment
    /// @{
    /// No allocator, no vertices, no primitives.
    CompactMesh();
    /// As the default, with `allocator` for every channel, primitive array and sequence.
    explicit CompactMesh(ko::Reference<ArrayAllocator> allocator);
    /// The point mesh of `n` vertices made from the given arrays (see `PointMesh`), without
    /// primitives or allocator. O(n).
    CompactMesh(int n, const MeshVertex* vertices, const MeshNormal* normals, const MeshUV* uvs,
                const MeshColour* colours);
    /// A mesh is an entity held by reference: make a new one and assign to it.
    CompactMesh(const CompactMesh&) = delete;
    /// Point mesh assignment, then copies of the triangles, lines, triangle normals, the four
    /// sequences, the triangle selection, the render information pointer, the draw flags and
    /// the three shading flags. Each primitive array keeps its own allocator; the sequences'
    /// points, lengths and starts end on the heap, as `MeshSequence` assignment leaves them.
    /// No notice is sent. O(elements). Throws `std::bad_alloc` when storage cannot be had:
    /// a mesh whose arrays are on the heap is then left unchanged; one in an allocator may be
    /// left with its channels and sequences copied and a primitive array empty.
    CompactMesh& operator=(const CompactMesh& other);
    /// Destroys the sequences (polygons, line strips, fans, strips), the triangle selection,
    /// the triangle normals, the lines and the triangles, then the point mesh.
    ~CompactMesh() override;

    /// `PointMesh::swap`, then, when neither mesh has an allocator, exchanges every primitive
    /// array, sequence (points, lengths and starts, not the auxiliary cache), the triangle
    /// selection and the hints. When either mesh has an allocator it does nothing at all and
    /// reports nothing.
    void swap(CompactMesh& other) noexcept;
    /// @}

    /// \name Triangles and lines
    /// @{
    int getNumTriangles() const noexcept { return triangles_.count(); }
    int getNumLines() const noexcept { return lines_.count(); }

    /// The first triangle, line or triangle normal; null when there is none.
    MeshTriangle* getTriangles() noexcept { return triangles_.elements(); }
    const MeshTriangle* getTriangles() const noexcept { return triangles_.elements(); }
    int* getTrianglesRaw() noexcept;
    const int* getTrianglesRaw() const noexcept;
    MeshLine* getLines() noexcept { return lines_.elements(); }
    const MeshLine* getLines() const noexcept { return lines_.elements(); }
    MeshNormal* getTriangleNormals() noexcept { return triangleNormals_.elements(); }
    const MeshNormal* getTriangleNormals() const noexcept { return triangleNormals_.elements(); }
    float* getTriangleNormalsRaw() noexcept;
    const float* getTriangleNormalsRaw() const noexcept;

    /// Sets the triangle count to n, and the triangle normals' count too when there are any;
    /// each keeps its first min(old, n) elements, new ones uninitialised. 0 is
    /// `deleteTriangles()`. O(elements kept). Throws `std::bad_alloc` when storage cannot be
    /// had; the triangles may then have their new count and the normals their old one.
    void resizeTriangleArray(int n);
    /// `resizeTriangleArray(n)`, then copies 3 × n indices from `indices` when n > 0. O(n).
    void copyTriangles(int n, const int* indices);
    /// Empties the triangles and their normals; nothing when there are no triangles.
    void deleteTriangles();
    /// Gives the triangle normals one uninitialised element per triangle, when there are
    /// triangles and no normals yet.
    void allocTriangleNormalArray();
    void deleteTriangleNormals();

    /// Sets the line count to n, keeping the first min(old, n) lines; 0 is `deleteLines()`.
    void resizeLineArray(int n);
    void deleteLines();
    /// @}

    /// \name Sequences
    /// The same operations for each of triangle strips, triangle fans, line strips and
    /// polygons. The points are the vertex indices of all sequences of the kind, one after
    /// another; the lengths give the number of indices of each, to be kept non-negative and
    /// summing to the points count by whoever fills them.
    /// - `getNum…s()`: the number of sequences (the lengths count); `getNum…Points()`: the
    ///   number of indices (the points count).
    /// - `get…Points()`, `get…Lengths()`: the first index or length, or null when empty.
    /// - `get…Starts()`: the address of each sequence's first index, or null when there are
    ///   no sequences; built on the first request after a change, in O(sequences).
    /// - `resize…Arrays(numPoints, numSequences)`: sets both counts (new entries
    ///   uninitialised) and empties the cached starts; nothing when both counts are already
    ///   as asked. Throws `std::bad_alloc` when storage cannot be had.
    /// - `delete…s()`: empties both arrays and the cached starts.
    /// @{
    int getNumTriStrips() const noexcept { return triStrips_.lengths().count(); }
    int getNumTriStripPoints() const noexcept { return triStrips_.points().count(); }
    int* getTriStripPoints() noexcept { return triStrips_.points().elements(); }
    const int* getTriStripPoints() const noexcept { return triStrips_.points().elements(); }
    int* getTriStripLengths() noexcept { return triStrips_.lengths().elements(); }
    const int* getTriStripLengths() const noexcept { return triStrips_.lengths().elements(); }
    const int* const* getTriStripStarts() const { return triStrips_.starts(); }
    MeshSequence& getTriStrips() noexcept { return triStrips_; }
    const MeshSequence& getTriStrips() const noexcept { return triStrips_; }
    void resizeTriStripArrays(int numPoints, int numStrips) {
        resizeSequence(triStrips_, numPoints, numStrips);
    }
    void deleteTriStrips() { deleteSequence(triStrips_); }

    int getNumTriFans() const noexcept { return triFans_.lengths().count(); }
    int getNumTriFanPoints() const noexcept { return triFans_.points().count(); }
    int* getTriFanPoints() noexcept { return triFans_.points().elements(); }
    const int* getTriFanPoints() const noexcept { return triFans_.points().elements(); }
    int* getTriFanLengths() noexcept { return triFans_.lengths().elements(); }
    const int* getTriFanLengths() const noexcept { return triFans_.lengths().elements(); }
    const int* const* getTriFanStarts() const { return triFans_.starts(); }
    MeshSequence& getTriFans() noexcept { return triFans_; }
    const MeshSequence& getTriFans() const noexcept { return triFans_; }
    void resizeTriFanArrays(int numPoints, int numFans) {
        resizeSequence(triFans_, numPoints, numFans);
    }
    void deleteTriFans() { deleteSequence(triFans_); }

    int getNumLineStrips() const noexcept { return lineStrips_.lengths().count(); }
    int getNumLineStripPoints() const noexcept { return lineStrips_.points().count(); }
    int* getLineStripPoints() noexcept { return lineStrips_.points().elements(); }
    const int* getLineStripPoints() const noexcept { return lineStrips_.points().elements(); }
    int* getLineStripLengths() noexcept { return lineStrips_.lengths().elements(); }
    const int* getLineStripLengths() const noexcept { return lineStrips_.lengths().elements(); }
    const int* const* getLineStripStarts() const { return lineStrips_.starts(); }
    MeshSequence& getLineStrips() noexcept { return lineStrips_; }
    const MeshSequence& getLineStrips() const noexcept { return lineStrips_; }
    void resizeLineStripArrays(int numPoints, int numLineStrips) {
        resizeSequence(lineStrips_, numPoints, numLineStrips);
    }
    void deleteLineStrips() { deleteSequence(lineStrips_); }

    int getNumPolys() const noexcept { return polys_.lengths().count(); }
    int getNumPolyPoints() const noexcept { return polys_.points().count(); }
    int* getPolyPoints() noexcept { return polys_.points().elements(); }
    const int* getPolyPoints() const noexcept { return polys_.points().elements(); }
    int* getPolyLengths() noexcept { return polys_.lengths().elements(); }
    const int* getPolyLengths() const noexcept { return polys_.lengths().elements(); }
    const int* const* getPolyStarts() const { return polys_.starts(); }
    MeshSequence& getPolys() noexcept { return polys_; }
    const MeshSequence& getPolys() const noexcept { return polys_; }
    void resizePolyArrays(int numPoints, int numPolys) {
        resizeSequence(polys_, numPoints, numPolys);
    }
    void deletePolys() { deleteSequence(polys_); }
    /// @}

    /// \name Expanding sequences
    /// @{
    /// Appends the triangles of every strip, then of every fan, after the existing triangles
    /// (the triangle normals grow with them, uninitialised); the strips and fans stay, so a
    /// second call appends them again. A strip p0 … pL-1 gives, for j = 0, 2, 4, …,
    /// (pj, pj+1, pj+2) and then (pj+2, pj+1, pj+3), while those corners lie in the strip; a
    /// fan gives (p0, pi, pi+1) for i = 1 … L − 2. Nothing is appended when the sum of
    /// (length − 2) over all strips and fans is below 1, even if some sequences are long
    /// enough. A sequence whose indices do not lie within its points array gives nothing.
    /// O(new triangles). Throws `std::bad_alloc` when storage cannot be had; nothing is then
    /// written, and the arrays are as a failed `resizeTriangleArray` leaves them.
    void fullyPopulateTriangleArray();
    /// Appends the segments (pi, pi+1) of every line strip after the existing lines. The line
    /// count becomes the old count plus the sum of (length − 1) over the line strips, so
    /// strips of length 0 that yield no segment shorten the existing lines by one each (to 0
    /// at least, which deletes them). A line strip whose indices do not lie within its points
    /// array gives nothing. O(new lines). Throws `std::bad_alloc` when storage cannot be had,
    /// before anything changes.
    void fullyPopulateLineArray();
    /// @}

    /// \name Queries, selection and hints
    /// @{
    /// True when there is at least one line strip or line.
    bool hasCurveData() const noexcept;
    /// True when there is at least one triangle, strip, fan or polygon.
    bool hasSurfaceData() const noexcept;

    /// Resizes the vertex and the triangle selections to 0 elements. Throws `std::bad_alloc`
    /// when a selection's word cannot be had.
    void clearSelection();
    /// One bit per triangle; the mesh never resizes it when the triangles change.
    BitVector& getSelectedTriangles() noexcept { return selectedTriangles_; }
    const BitVector& getSelectedTriangles() const noexcept { return selectedTriangles_; }

    /// An opaque pointer kept for a renderer; not owned, null on construction.
    void* getRenderInfo() const noexcept { return renderInfo_; }
    void setRenderInfo(void* renderInfo) noexcept { renderInfo_ = renderInfo; }
    /// Renderer hints, 0 on construction, never interpreted by the mesh.
    int getDrawFlags() const noexcept { return drawFlags_; }
    void setDrawFlags(int drawFlags) noexcept { drawFlags_ = drawFlags; }

    /// Until `setFlatShaded` is first called, true exactly when triangle normals exist;
    /// afterwards the value last set (the choice cannot be withdrawn).
    bool getFlatShaded() const noexcept;
    void setFlatShaded(bool flatShaded) noexcept;
    /// Whether the triangle normals were computed rather than supplied; true on construction.
    bool getTriNormalsComputed() const noexcept { return triNormalsComputed_; }
    void setTriNormalsComputed(bool computed) noexcept { triNormalsComputed_ = computed; }
    /// @}

    /// \name Allocator, memory and notices
    /// @{
    /// `PointMesh::setArrayAllocator`, then moves the triangles, lines, triangle normals and
    /// the four sequences to `allocator`, in that order. Only empty arrays keep their contents
    /// reachable (see `Array::setAllocator`). O(elements). Throws `std::bad_alloc` when
    /// storage cannot be had.
    void setArrayAllocator(ko::Reference<ArrayAllocator> allocator) override;

    /// The memory estimate: the point mesh's, plus 520 for the rest of the mesh object, 12
    /// per triangle and per triangle normal, the triangle selection's and the four sequences'
    /// sizes, summed in 32 bits. The lines are not counted. O(channels).
    int getSizeInBytes() const noexcept override;

    /// Drops the derived data that `mod` declares stale, then hands it to
    /// `PointMesh::modified`, which updates the channels and tells the listeners; so they see
    /// what remains consistent with the notice. After a topology change the cached starts of
    /// every kind of sequence that has sequences are emptied, the triangle normals emptied
    /// unless declared valid, the strips and fans deleted unless declared valid, the line
    /// strips deleted unless declared valid. After a transformation the triangle normals are
    /// emptied unless declared valid.
    void modified(MeshModification& mod) override;
    /// @}

private:
    static void resizeSequence(MeshSequence& sequence, int numPoints, int numSequences);
    static void deleteSequence(MeshSequence& sequence);

    Array<MeshTriangle> triangles_;
    Array<MeshLine> lines_;
    Array<MeshNormal> triangleNormals_;
    BitVector selectedTriangles_;
    MeshSequence triStrips_;
    MeshSequence triFans_;
    MeshSequence lineStrips_;
    MeshSequence polys_;
    void* renderInfo_ = nullptr;
    int drawFlags_ = 0;
    bool flatShaded_ = false;
    bool flatShadedSet_ = false;
    bool triNormalsComputed_ = true;
};

} // namespace koGeom
