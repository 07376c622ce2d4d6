#pragma once

#include "geom/FormworkExport.h"
#include "geom/entity/MeshDrawInterface.h"

namespace koDebugDraw {

/// \name Mesh debug-drawing hooks
/// Each hook forwards its mesh to the operation of the same name of the host's
/// `koGeom::MeshDrawInterface`.
///
/// The interface is looked up (`loadIFace(koGeom::meshDrawInterfaceName)`) on the first call
/// and kept for every later call, so one registered after that first successful lookup is not
/// seen. While no interface is registered the lookup is repeated on each call and nothing is
/// drawn: the hooks are diagnostics and never fail. The kept interface is a plain,
/// unsynchronised global: draw from one thread.
/// @{
FORMWORK_EXPORT void drawMesh(const koGeom::CompactMesh& mesh);
FORMWORK_EXPORT void drawAddMesh(const koGeom::CompactMesh& mesh);
FORMWORK_EXPORT void drawAddMeshPtr(const koGeom::CompactMesh* mesh);
FORMWORK_EXPORT void drawTopoMesh(const koGeom::TopoMesh& mesh);
FORMWORK_EXPORT void drawAddTopoMesh(const koGeom::TopoMesh& mesh);
FORMWORK_EXPORT void drawAddTopoMeshPtr(const koGeom::TopoMesh* mesh);
/// @}

} // namespace koDebugDraw
