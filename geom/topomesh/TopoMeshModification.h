#pragma once

#include <cstdint>

#include "geom/FormworkExport.h"
#include "geom/entity/EntityModification.h"

namespace koGeom {

class TopoMesh;

/// The notice a `TopoMesh` sends through `TopoMesh::modified`. No operation of the mesh sends
/// one by itself: the code that edits a mesh, or switches it between saved states, builds the
/// notice on its stack when it is done and passes it to `modified`. Its entity notice type is
/// `Mesh`.
class FORMWORK_EXPORT TopoMeshModification : public EntityModification {
public:
    /// What the sender changed, and so what a listener's derived data must follow.
    enum class Type : std::int32_t {
        /// Only vertex points moved (point edits, a transformation); every record and link
        /// stands, so data keyed by records stays valid and only geometry is stale.
        Transformed = 0,
        /// Records were created, deleted or relinked by editing operations (points may have
        /// moved too): handles held by listeners may dangle.
        TopologyModified = 1,
        /// `setState` moved the mesh to another saved state: anything may differ, and
        /// records may have come back that a listener saw deleted.
        StateChanged = 2,
    };

    TopoMeshModification(const TopoMesh* mesh, Type type) noexcept;
    ~TopoMeshModification() override;

    /// Hides the entity notice's `getType()`, which is always `Mesh` here.
    Type getType() const noexcept { return type_; }
    /// True for `TopologyModified` and for `StateChanged`, which may change the topology.
    bool topologyModified() const noexcept { return type_ != Type::Transformed; }
    /// True for `Transformed` only.
    bool transformed() const noexcept { return type_ == Type::Transformed; }

private:
    Type type_;
};

} // namespace koGeom
