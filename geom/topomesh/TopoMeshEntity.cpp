#include "geom/topomesh/TopoMeshEntity.h"

namespace koGeom {

const char* TopoMeshEntity::typeName(EntityType type) noexcept {
    switch (type) {
        case EntityType::Vertex:
            return "Vertex";
        case EntityType::Edge:
            return "Edge";
        case EntityType::Face:
            return "Face";
    }
    return "Unknown";
}

} // namespace koGeom
