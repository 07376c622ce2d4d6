#include "geom/entity/Entity.h"

#include "geom/entity/detail/ActiveEntityCount.h"

namespace koGeom {

Entity::Entity() { detail::countEntityIn(); }

Entity::Entity(const Entity& /*other*/) : ko::ReferenceCount() { detail::countEntityIn(); }

Entity::~Entity() {
    deletedSignal.emit(this);
    detail::countEntityOut();
    // The members then go in reverse order: the client, the modified signal, the deleted
    // signal.
}

void Entity::sendMessage(EntityModification& mod) const { modifiedSignal.emit(mod); }

void Entity::resendMessage(EntityModification& mod) const {
    EntityModification forwarded(this, mod, EntityModificationType::General);
    modifiedSignal.emit(forwarded);
}

} // namespace koGeom
