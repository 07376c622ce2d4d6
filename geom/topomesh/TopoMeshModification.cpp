#include "geom/topomesh/TopoMeshModification.h"

#include "geom/topomesh/TopoMesh.h"

namespace koGeom {

TopoMeshModification::TopoMeshModification(const TopoMesh* mesh, Type type) noexcept
    : EntityModification(mesh, EntityModificationType::Mesh), type_(type) {}

TopoMeshModification::~TopoMeshModification() = default;

} // namespace koGeom
