#pragma once

#include <cstdint>

namespace koGeom {

/// The enumerations shared by the half-edge mesh, its recorder and its files.
struct TopoMeshTypedefs {
    /// Which of the three records an entity or change refers to.
    enum class EntityType : std::int32_t {
        Vertex = 0,
        Edge = 1,
        Face = 2,
    };

    /// What happened to one record since the last saved state.
    enum class BulletinType : std::int32_t {
        Created = 0,
        Modified = 1,
        Deleted = 2,
    };
};

} // namespace koGeom
