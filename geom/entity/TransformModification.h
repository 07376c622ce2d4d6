#pragma once

#include "geom/FormworkExport.h"
#include "geom/entity/EntityModification.h"

namespace koGeom {

/// The notice that an entity's placement (its transformation) changed. It is always a root
/// notice of type `Transform`.
class FORMWORK_EXPORT TransformModification : public EntityModification {
public:
    explicit TransformModification(const Entity* entity) noexcept
        : EntityModification(entity, EntityModificationType::Transform) {}
    TransformModification(const TransformModification&) noexcept = default;
    ~TransformModification() override;
};

} // namespace koGeom
