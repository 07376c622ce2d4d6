#pragma once

#include <memory>

#include "geom/FormworkExport.h"
#include "tessar/core/ReferenceCount.h"

namespace koGeom {

/// A part of a mesh picked by a list of vertex indices and a list of triangle indices, which
/// it owns. The indices are not validated. Shared through `ko::Reference<MeshSubset>`.
class FORMWORK_EXPORT MeshSubset : public ko::ReferenceCount {
public:
    /// Copies both lists. A negative count fails as an allocation failure
    /// (`std::bad_alloc`).
    MeshSubset(int numVertices, const int* vertexRefs, int numTriangles, const int* triangleRefs);
    MeshSubset(const MeshSubset&) = delete;
    MeshSubset& operator=(const MeshSubset&) = delete;
    ~MeshSubset() override;

    int getNumVertices() const noexcept { return numVertices_; }
    int getNumTriangles() const noexcept { return numTriangles_; }
    const int* getVertexRefs() const noexcept { return vertexRefs_.get(); }
    const int* getTriangleRefs() const noexcept { return triangleRefs_.get(); }

private:
    int numVertices_;
    int numTriangles_;
    std::unique_ptr<int[]> vertexRefs_;
    std::unique_ptr<int[]> triangleRefs_;
};

} // namespace koGeom
