#include "geom/connectivity/MeshAdjVertices.h"

#include <cstdint>
#include <cstdlib>
#include <utility>

namespace koGeom {

MeshAdjVertices::MeshAdjVertices(int numVertices, int maxVerts, int* offsets, int* data) noexcept
    : offsets_(offsets), data_(data), vertexCount_(numVertices), maxVerts_(maxVerts) {}

MeshAdjVertices::~MeshAdjVertices() {
    std::free(offsets_);
    std::free(data_);
}

void MeshAdjVertices::swap(MeshAdjVertices& other) noexcept {
    std::swap(offsets_, other.offsets_);
    std::swap(data_, other.data_);
    std::swap(vertexCount_, other.vertexCount_);
    std::swap(maxVerts_, other.maxVerts_);
}

int MeshAdjVertices::numBytesUsed() const noexcept {
    // Deliberate: a flat per-vertex estimate that ignores the real record sizes; memory
    // figures are fixed formulas, known without walking the table.
    return static_cast<int>(32u * static_cast<std::uint32_t>(vertexCount_) + 40u);
}

} // namespace koGeom
