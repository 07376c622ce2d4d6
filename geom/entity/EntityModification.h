#pragma once

#include <cstdint>

#include "geom/FormworkExport.h"

namespace koGeom {

class Entity;

/// What kind of change a notice reports.
enum class EntityModificationType : std::int32_t {
    General = 0,   ///< a forwarded notice, built by `Entity::resendMessage` around its cause
    Transform = 1, ///< the entity's placement changed (`TransformModification`)
    Mesh = 2,      ///< a mesh changed (mesh and topological mesh notices)
};

/// A change notice, broadcast by an entity to the listeners of its `modifiedSignal`.
///
/// A notice is a short-lived value: the sender builds it on its own stack and it lives only
/// while it is broadcast. It may carry the notice that caused it (`causedBy`), forming a chain
/// back to a root notice through notices still being broadcast further up the call stack; a
/// listener that forwards changes uses the chain to detect loops (`entityPresent`). The chain
/// must be finite and acyclic, which forwarding through `resendMessage` guarantees.
class FORMWORK_EXPORT EntityModification {
public:
    /// A notice from `entity` caused by `causedBy`, whose address is kept.
    EntityModification(const Entity* entity, EntityModification& causedBy,
                       EntityModificationType type) noexcept
        : entity_(entity), causedBy_(&causedBy), type_(type) {}

    /// A root notice from `entity`.
    EntityModification(const Entity* entity, EntityModificationType type) noexcept
        : entity_(entity), type_(type) {}

    EntityModification(const EntityModification&) noexcept = default;
    EntityModification& operator=(const EntityModification&) = delete;
    virtual ~EntityModification();

    const Entity* getEntity() const noexcept { return entity_; }
    const EntityModification* causedBy() const noexcept { return causedBy_; }
    EntityModificationType getType() const noexcept { return type_; }

    /// True when no notice caused this one.
    bool isRoot() const noexcept { return causedBy_ == nullptr; }

    /// The notice at the start of the chain: this one when it is a root. O(chain length).
    const EntityModification* getRoot() const noexcept;

    /// True when `entity` sent this notice or any notice of its causedBy chain.
    /// O(chain length).
    bool entityPresent(const Entity* entity) const noexcept { return entityPresent(this, entity); }

    /// As the member form, for a notice that may be absent: false when `notice` is null.
    static bool entityPresent(const EntityModification* notice, const Entity* entity) noexcept;

private:
    const Entity* entity_;
    const EntityModification* causedBy_ = nullptr;
    EntityModificationType type_;
};

} // namespace koGeom
