#pragma once

#include "geom/FormworkExport.h"
#include "geom/mesh/MeshPlacement.h"
#include "tessar/core/Containers.h"
#include "tessar/linear/AffineMatrix.h"

namespace koGeom {

class CompactMesh;

/// \name Arrangements
/// An arrangement is a list of meshes, each with its placement transform. Adding a mesh
/// neither copies nor references it: the meshes belong to the code that eventually calls
/// `deleteMeshesInArrangement`.
/// @{

/// Appends `mesh` with the identity placement.
FORMWORK_EXPORT void addMeshToArrangement(ko::list<MeshPlacement>& arrangement, CompactMesh& mesh);

/// Appends `mesh` with a copy of `transform` as its placement.
FORMWORK_EXPORT void addMeshToArrangement(ko::list<MeshPlacement>& arrangement, CompactMesh& mesh,
                                          koLinear::AffineMatrixFlt& transform);

/// Deletes every mesh of the arrangement, first to last, and sets its pointer to null. The
/// placements stay in the list, so a second call finds only null meshes and deletes nothing.
/// O(placements).
FORMWORK_EXPORT void deleteMeshesInArrangement(ko::list<MeshPlacement>& arrangement);

/// @}

} // namespace koGeom
