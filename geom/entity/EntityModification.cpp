#include "geom/entity/EntityModification.h"

namespace koGeom {

EntityModification::~EntityModification() = default;

const EntityModification* EntityModification::getRoot() const noexcept {
    const EntityModification* notice = this;
    while (notice->causedBy_ != nullptr) {
        notice = notice->causedBy_;
    }
    return notice;
}

bool EntityModification::entityPresent(const EntityModification* notice,
                                       const Entity* entity) noexcept {
    for (; notice != nullptr; notice = notice->causedBy_) {
        if (notice->entity_ == entity) {
            return true;
        }
    }
    return false;
}

} // namespace koGeom
