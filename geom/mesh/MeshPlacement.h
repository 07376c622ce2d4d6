#pragma once

#include <type_traits>

#include "tessar/linear/AffineMatrixFlt.h"

namespace koGeom {

class CompactMesh;

/// One mesh placed in an arrangement (a `ko::list` of placements): a placement transform and
/// the mesh, which the placement does not own.
struct MeshPlacement {
    koLinear::AffineMatrixFlt transform;
    CompactMesh* mesh;
};

static_assert(sizeof(koLinear::AffineMatrixFlt) == 48);
static_assert(sizeof(MeshPlacement) == 56);
static_assert(std::is_standard_layout_v<MeshPlacement>);

} // namespace koGeom
