#pragma once

#include "tessar/core/ReferenceCount.h"

#include "geom/FormworkExport.h"

namespace koGeom {

/// For each vertex of a mesh, the vertices adjacent to it: a read-only table shared through
/// `ko::Reference`, made from two integer arrays that the caller builds on the general heap
/// (`std::malloc`) and hands over.
///
/// `data` holds one record per vertex, a count n followed by n vertex indices; `offsets[v]` is
/// the position in `data` of vertex v's record. Indices are not checked.
class FORMWORK_EXPORT MeshAdjVertices : public ko::ReferenceCount {
public:
    /// No arrays; every count is 0.
    MeshAdjVertices() noexcept = default;
    /// Takes ownership of `offsets` and `data` as they are, with no copy and no check; both are
    /// released with `std::free`, so they must come from `std::malloc` (or be null).
    MeshAdjVertices(int numVertices, int maxVerts, int* offsets, int* data) noexcept;
    MeshAdjVertices(const MeshAdjVertices&) = delete;
    MeshAdjVertices& operator=(const MeshAdjVertices&) = delete;

    /// The number of vertices adjacent to vertex v.
    int numVertices(int v) const noexcept { return data_[offsets_[v]]; }
    /// The first vertex adjacent to vertex v.
    const int* vertexIndices(int v) const noexcept { return data_ + offsets_[v] + 1; }
    /// The largest count, as the builder supplied it.
    int maxVerts() const noexcept { return maxVerts_; }

    /// Exchanges both arrays and both counts.
    void swap(MeshAdjVertices& other) noexcept;

    /// 32 × vertices + 40, a fixed estimate that does not look at the records.
    int numBytesUsed() const noexcept;

protected:
    ~MeshAdjVertices() override;

private:
    int* offsets_ = nullptr; // owned, from the general heap
    int* data_ = nullptr;    // owned, from the general heap
    int vertexCount_ = 0;
    int maxVerts_ = 0;
};

} // namespace koGeom
