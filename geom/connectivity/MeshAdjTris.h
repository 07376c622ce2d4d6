#pragma once

#include "geom/FormworkExport.h"
#include "geom/connectivity/TriangleSetTable.h"
#include "geom/storage/ArrayOfSets.h"

namespace koGeom {

/// For each vertex of a triangle mesh, the triangles that use it: a read-only table shared
/// through `ko::Reference`. The caller builds the sets, for example with
/// `ArrayOfSets::assignFromPairs` over (vertex, triangle) pairs of the triangle list, and the
/// table keeps them in the order given.
class FORMWORK_EXPORT MeshAdjTris : public TriangleSetTable<MeshAdjTris> {
public:
    /// No sets; `maxTris()` is 0.
    MeshAdjTris() noexcept = default;
    /// Takes `sets` (set v: the triangles of vertex v) by swap, leaving the argument with no
    /// sets and no members, and records the largest set size in O(vertices). Allocates
    /// nothing.
    explicit MeshAdjTris(ArrayOfSets& sets) noexcept : TriangleSetTable(sets) {}

    /// Writes the three corners of each triangle of `vertex`, in set order, to `out`, which
    /// must hold 3 × `numTris(vertex)` integers. `triangles` is the mesh's triangle index list,
    /// three vertex indices per triangle.
    void copyTriangles(int vertex, int* out, const int* triangles) const noexcept;

protected:
    ~MeshAdjTris() override;
};

} // namespace koGeom
