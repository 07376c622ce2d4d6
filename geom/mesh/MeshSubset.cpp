#include "geom/mesh/MeshSubset.h"

#include <algorithm>
#include <new>

namespace koGeom {

namespace {

std::unique_ptr<int[]> copyIndices(int count, const int* indices) {
    if (count < 0) {
        throw std::bad_alloc();
    }
    auto copy = std::make_unique_for_overwrite<int[]>(static_cast<std::size_t>(count));
    std::copy_n(indices, count, copy.get());
    return copy;
}

} // namespace

MeshSubset::MeshSubset(int numVertices, const int* vertexRefs, int numTriangles,
                       const int* triangleRefs)
    : numVertices_(numVertices),
      numTriangles_(numTriangles),
      vertexRefs_(copyIndices(numVertices, vertexRefs)),
      triangleRefs_(copyIndices(numTriangles, triangleRefs)) {}

MeshSubset::~MeshSubset() = default;

} // namespace koGeom
