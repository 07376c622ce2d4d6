#pragma once

#include "geom/FormworkExport.h"
#include "geom/connectivity/TriangleSetTable.h"
#include "geom/storage/ArrayOfSets.h"

namespace koGeom {

/// For each triangle of a mesh, the triangles adjacent to it: a read-only table shared through
/// `ko::Reference`. Whether adjacent means sharing an edge or a vertex, and the order within
/// each set, are the builder's choice.
class FORMWORK_EXPORT MeshTriAdjTris : public TriangleSetTable<MeshTriAdjTris> {
public:
    /// No sets; `maxTris()` is 0.
    MeshTriAdjTris() noexcept = default;
    /// Takes `sets` (set t: the triangles next to triangle t) by swap, leaving the argument
    /// with no sets and no members, and records the largest set size in O(triangles).
    /// Allocates nothing.
    explicit MeshTriAdjTris(ArrayOfSets& sets) noexcept : TriangleSetTable(sets) {}

protected:
    ~MeshTriAdjTris() override;
};

} // namespace koGeom
