#include "geom/mesh/CompactMesh.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "geom/mesh/MeshModification.h"

namespace koGeom {

namespace {

// What the memory estimate counts for the part of the mesh object beyond the point mesh.
constexpr std::uint32_t compactObjectBytes = 520;

constexpr int triangleCorners = 3;
constexpr int lineEnds = 2;

// Calls visit(first, length) for each sequence, in order, that yields at least one primitive
// of `corners` indices, with the address of its first index. The walk steps by the lengths as
// they are, so each sequence starts after the previous one's indices. A yielding sequence whose
// indices do not all lie within the points array is passed over, and the result is then false.
template <class Visit>
bool forEachYieldingSequence(const MeshSequence& sequence, int corners, Visit visit) {
    const int numSequences = sequence.lengths().count();
    const int* lengths = sequence.lengths().elements();
    const int* points = sequence.points().elements();
    const std::int64_t numPoints = sequence.points().count();
    bool allInside = true;
    std::int64_t offset = 0;
    for (int i = 0; i < numSequences; ++i) {
        const int length = lengths[i];
        if (length >= corners) {
            if (offset >= 0 && offset + length <= numPoints) {
                visit(points + offset, length);
            } else {
                allInside = false;
            }
        }
        offset += length;
    }
    return allInside;
}

// The primitives that expanding sequences gives. `specified` is the sum of
// (length − corners + 1) over every sequence, shorter ones subtracting, which is how the
// expansions size their output; `yielded` is the number of primitives really written.
struct ExpansionCount {
    std::int64_t specified = 0;
    std::int64_t yielded = 0;
    bool allInside = true;
};

void countExpansion(const MeshSequence& sequence, int corners, ExpansionCount& count) {
    const int numSequences = sequence.lengths().count();
    const int* lengths = sequence.lengths().elements();
    for (int i = 0; i < numSequences; ++i) {
        count.specified += lengths[i] - (corners - 1);
    }
    std::int64_t yielded = 0;
    count.allInside &= forEachYieldingSequence(
        sequence, corners,
        [&yielded, corners](const int*, int length) { yielded += length - (corners - 1); });
    count.yielded += yielded;
}

// An element count for an array; one that an int cannot hold cannot be stored either.
int arrayCount(std::int64_t count) {
    if (count > std::numeric_limits<int>::max()) {
        throw std::bad_alloc();
    }
    return count < 0 ? 0 : static_cast<int>(count);
}

// Assignment stages a heap copy of each primitive array whose target is on the heap, so that
// nothing in the mesh changes before every copy that can fail has been made.
template <class T>
void stageCopy(Array<T>& staged, const Array<T>& target, const Array<T>& source) {
    if (!target.allocator()) {
        staged = source;
    }
}

// A heap target takes its staged copy; one in an allocator is filled in place under its own
// key, which is the only place that allocator can find it.
template <class T>
void installCopy(Array<T>& target, Array<T>& staged, const Array<T>& source) {
    if (!target.allocator()) {
        target.swap(staged);
    } else {
        target = source;
    }
}

} // namespace

CompactMesh::CompactMesh() = default;

CompactMesh::CompactMesh(ko::Reference<ArrayAllocator> allocator)
    : PointMesh(allocator),
      triStrips_(allocator),
      triFans_(allocator),
      lineStrips_(allocator),
      polys_(allocator) {
    // The arrays are empty, so taking the allocator moves nothing.
    triangles_.setAllocator(allocator);
    lines_.setAllocator(allocator);
    triangleNormals_.setAllocator(std::move(allocator));
}

CompactMesh::CompactMesh(int n, const MeshVertex* vertices, const MeshNormal* normals,
                         const MeshUV* uvs, const MeshColour* colours)
    : PointMesh(n, vertices, normals, uvs, colours) {}

CompactMesh& CompactMesh::operator=(const CompactMesh& other) {
    if (this == &other) {
        return *this;
    }
    Array<MeshTriangle> triangles;
    Array<MeshLine> lines;
    Array<MeshNormal> triangleNormals;
    stageCopy(triangles, triangles_, other.triangles_);
    stageCopy(lines, lines_, other.lines_);
    stageCopy(triangleNormals, triangleNormals_, other.triangleNormals_);
    // Sequence copies live on the heap whatever the source uses.
    MeshSequence triStrips(other.triStrips_);
    MeshSequence triFans(other.triFans_);
    MeshSequence lineStrips(other.lineStrips_);
    MeshSequence polys(other.polys_);
    BitVector selection(other.selectedTriangles_);

    PointMesh::operator=(other);
    installCopy(triangles_, triangles, other.triangles_);
    installCopy(lines_, lines, other.lines_);
    installCopy(triangleNormals_, triangleNormals, other.triangleNormals_);
    // As sequence assignment does: the copies take the old points, lengths and starts and
    // release them under their own keys when they go; the auxiliary caches stay.
    triStrips_.swap(triStrips);
    triFans_.swap(triFans);
    lineStrips_.swap(lineStrips);
    polys_.swap(polys);
    selectedTriangles_.swap(selection);
    renderInfo_ = other.renderInfo_;
    drawFlags_ = other.drawFlags_;
    flatShaded_ = other.flatShaded_;
    flatShadedSet_ = other.flatShadedSet_;
    triNormalsComputed_ = other.triNormalsComputed_;
    return *this;
}

// The members go in reverse order of declaration: polygons, line strips, fans, strips, the
// triangle selection, triangle normals, lines, triangles; then the point mesh.
CompactMesh::~CompactMesh() = default;

void CompactMesh::swap(CompactMesh& other) noexcept {
    PointMesh::swap(other);
    // Deliberate: arrays in an allocator are found by their own address, so meshes that use
    // one are never exchanged, silently, just as their point mesh parts are not.
    if (getArrayAllocator() || other.getArrayAllocator()) {
        return;
    }
    triangles_.swap(other.triangles_);
    lines_.swap(other.lines_);
    triangleNormals_.swap(other.triangleNormals_);
    selectedTriangles_.swap(other.selectedTriangles_);
    triStrips_.swap(other.triStrips_);
    triFans_.swap(other.triFans_);
    lineStrips_.swap(other.lineStrips_);
    polys_.swap(other.polys_);
    std::swap(renderInfo_, other.renderInfo_);
    std::swap(drawFlags_, other.drawFlags_);
    std::swap(flatShaded_, other.flatShaded_);
    std::swap(flatShadedSet_, other.flatShadedSet_);
    std::swap(triNormalsComputed_, other.triNormalsComputed_);
}

// The index records are plain, unpadded integers and floats, read as such.
int* CompactMesh::getTrianglesRaw() noexcept {
    return reinterpret_cast<int*>(triangles_.elements());
}

const int* CompactMesh::getTrianglesRaw() const noexcept {
    return reinterpret_cast<const int*>(triangles_.elements());
}

float* CompactMesh::getTriangleNormalsRaw() noexcept {
    return reinterpret_cast<float*>(triangleNormals_.elements());
}

const float* CompactMesh::getTriangleNormalsRaw() const noexcept {
    return reinterpret_cast<const float*>(triangleNormals_.elements());
}

void CompactMesh::resizeTriangleArray(int n) {
    if (n == 0) {
        deleteTriangles();
        return;
    }
    triangles_.setCount(n);
    if (triangleNormals_.count() != 0) {
        triangleNormals_.setCount(n);
    }
}

void CompactMesh::copyTriangles(int n, const int* indices) {
    resizeTriangleArray(n);
    if (n > 0) {
        std::memcpy(triangles_.elements(), indices, sizeof(MeshTriangle) * static_cast<size_t>(n));
    }
}

void CompactMesh::deleteTriangles() {
    if (triangles_.count() != 0) {
        triangles_.setCount(0);
        deleteTriangleNormals();
    }
}

void CompactMesh::allocTriangleNormalArray() {
    if (triangles_.count() != 0 && triangleNormals_.count() == 0) {
        triangleNormals_.setCount(triangles_.count());
    }
}

void CompactMesh::deleteTriangleNormals() {
    if (triangleNormals_.count() != 0) {
        triangleNormals_.setCount(0);
    }
}

void CompactMesh::resizeLineArray(int n) {
    if (n == 0) {
        deleteLines();
        return;
    }
    lines_.setCount(n);
}

void CompactMesh::deleteLines() {
    if (lines_.count() != 0) {
        lines_.setCount(0);
    }
}

void CompactMesh::resizeSequence(MeshSequence& sequence, int numPoints, int numSequences) {
    if (sequence.points().count() == numPoints && sequence.lengths().count() == numSequences) {
        return;
    }
    // The starts go first, so that none is left pointing into a block that a failed resize
    // may already have replaced.
    sequence.invalidate();
    sequence.points().setCount(numPoints);
    sequence.lengths().setCount(numSequences);
}

void CompactMesh::deleteSequence(MeshSequence& sequence) {
    sequence.points().setCount(0);
    sequence.lengths().setCount(0);
    sequence.invalidate();
}

void CompactMesh::fullyPopulateTriangleArray() {
    ExpansionCount count;
    countExpansion(triStrips_, triangleCorners, count);
    countExpansion(triFans_, triangleCorners, count);
    // Deliberate: strips and fans too short to yield a triangle subtract from the sum that
    // decides whether anything is appended, which is how clients have always sized this.
    if (count.specified < 1 || count.yielded == 0) {
        return;
    }
    // Every triangle yielded is written: it is the specified count when the lengths fit the
    // points and no sequence is shorter than two.
    const int oldCount = triangles_.count();
    resizeTriangleArray(arrayCount(oldCount + count.yielded));

    // The arrays are fetched once, after the resize, and written in one pass.
    MeshTriangle* out = triangles_.elements() + oldCount;
    forEachYieldingSequence(triStrips_, triangleCorners, [&out](const int* p, int length) {
        // Each pair of triangles turns over the shared edge (p[j+1], p[j+2]), so the second
        // lists it reversed to keep the strip's winding.
        MeshTriangle* o = out;
        const int k = length - 2;
        int j = 0;
        for (; j + 1 < k; j += 2) {
            o[0].set(p[j], p[j + 1], p[j + 2]);
            o[1].set(p[j + 2], p[j + 1], p[j + 3]);
            o += 2;
        }
        if (j < k) {
            (o++)->set(p[j], p[j + 1], p[j + 2]);
        }
        out = o;
    });
    forEachYieldingSequence(triFans_, triangleCorners, [&out](const int* p, int length) {
        MeshTriangle* o = out;
        for (int i = 1; i + 1 < length; ++i) {
            (o++)->set(p[0], p[i], p[i + 1]);
        }
        out = o;
    });
}

void CompactMesh::fullyPopulateLineArray() {
    ExpansionCount count;
    countExpansion(lineStrips_, lineEnds, count);
    const int oldCount = lines_.count();
    // Deliberate: the new count is the old one plus the sum of (length − 1), so line strips of
    // length 0 shorten the existing lines when nothing is appended; readers of the line
    // count rely on the formula. When segments are written, room is made for every one.
    const std::int64_t added =
        count.yielded == 0 && count.allInside ? count.specified : count.yielded;
    resizeLineArray(arrayCount(oldCount + added));
    if (count.yielded == 0) {
        return;
    }
    MeshLine* out = lines_.elements() + oldCount;
    forEachYieldingSequence(lineStrips_, lineEnds, [&out](const int* p, int length) {
        MeshLine* o = out;
        for (int i = 0; i + 1 < length; ++i) {
            (o++)->set(p[i], p[i + 1]);
        }
        out = o;
    });
}

bool CompactMesh::hasCurveData() const noexcept {
    return getNumLineStrips() > 0 || getNumLines() > 0;
}

bool CompactMesh::hasSurfaceData() const noexcept {
    return getNumTriangles() > 0 || getNumTriStrips() > 0 || getNumTriFans() > 0 ||
           getNumPolys() > 0;
}

void CompactMesh::clearSelection() {
    getSelectedVertices().resize(0);
    selectedTriangles_.resize(0);
}

bool CompactMesh::getFlatShaded() const noexcept {
    return flatShadedSet_ ? flatShaded_ : triangleNormals_.count() != 0;
}

void CompactMesh::setFlatShaded(bool flatShaded) noexcept {
    flatShaded_ = flatShaded;
    flatShadedSet_ = true;
}

void CompactMesh::setArrayAllocator(ko::Reference<ArrayAllocator> allocator) {
    PointMesh::setArrayAllocator(allocator);
    triangles_.setAllocator(allocator);
    lines_.setAllocator(allocator);
    triangleNormals_.setAllocator(allocator);
    triStrips_.setArrayAllocator(allocator);
    triFans_.setArrayAllocator(allocator);
    lineStrips_.setArrayAllocator(allocator);
    polys_.setArrayAllocator(allocator);
}

int CompactMesh::getSizeInBytes() const noexcept {
    // Deliberate: the lines are left out of the estimate, as memory reports have always been
    // computed; it does not change when lines are added.
    std::uint32_t bytes = static_cast<std::uint32_t>(PointMesh::getSizeInBytes());
    bytes += compactObjectBytes;
    bytes += 12u * (static_cast<std::uint32_t>(triangles_.count()) +
                    static_cast<std::uint32_t>(triangleNormals_.count()));
    bytes += static_cast<std::uint32_t>(selectedTriangles_.getSizeInBytes());
    for (const MeshSequence* sequence : {&triStrips_, &triFans_, &lineStrips_, &polys_}) {
        bytes += static_cast<std::uint32_t>(sequence->getSizeInBytes());
    }
    return static_cast<int>(bytes);
}

void CompactMesh::modified(MeshModification& mod) {
    // The derived data goes before any listener hears, so what they find agrees with the
    // notice.
    if (mod.topologyModified()) {
        for (MeshSequence* sequence : {&triFans_, &triStrips_, &polys_, &lineStrips_}) {
            if (sequence->lengths().count() > 0) {
                sequence->invalidate();
            }
        }
        if (!mod.areTriangleNormalsValid()) {
            triangleNormals_.setCount(0);
        }
        if (!mod.areStripsAndFansValid()) {
            deleteTriStrips();
            deleteTriFans();
        }
        if (!mod.areLineStripsValid()) {
            deleteLineStrips();
        }
    }
    if (mod.transformed() && !mod.areTriangleNormalsValid()) {
        triangleNormals_.setCount(0);
    }
    PointMesh::modified(mod);
}

} // namespace koGeom
