#pragma once

#include <cstddef>
#include <functional>

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMeshHandles.h"
#include "geom/topomesh/TopoMeshTypedefs.h"

namespace koGeom {

/// A handle to any record of a `TopoMesh`: its entity type and an untyped record pointer.
/// Entities compare and hash by the pointer alone (they are the keys of change tables).
class FORMWORK_EXPORT TopoMeshEntity {
public:
    using EntityType = TopoMeshTypedefs::EntityType;

    /// An empty entity: a vertex type and a null pointer.
    constexpr TopoMeshEntity() noexcept = default;
    constexpr TopoMeshEntity(void* data, EntityType type) noexcept : type_(type), data_(data) {}
    constexpr TopoMeshEntity(TopoMeshVertex v) noexcept : type_(EntityType::Vertex), data_(v) {}
    constexpr TopoMeshEntity(TopoMeshEdge e) noexcept : type_(EntityType::Edge), data_(e) {}
    constexpr TopoMeshEntity(TopoMeshFace f) noexcept : type_(EntityType::Face), data_(f) {}

    EntityType getType() const noexcept { return type_; }
    void* data() const noexcept { return data_; }

    /// \name Typed handles
    /// The handle when the type matches, a null handle otherwise.
    /// @{
    TopoMeshVertex asVertex() const noexcept {
        return type_ == EntityType::Vertex ? static_cast<TopoMeshVertexData*>(data_) : nullptr;
    }
    TopoMeshEdge asEdge() const noexcept {
        return type_ == EntityType::Edge ? static_cast<TopoMeshEdgeData*>(data_) : nullptr;
    }
    TopoMeshFace asFace() const noexcept {
        return type_ == EntityType::Face ? static_cast<TopoMeshFaceData*>(data_) : nullptr;
    }
    /// @}

    /// "Vertex", "Edge" or "Face"; "Unknown" for any other type value.
    const char* getTypeName() const noexcept { return typeName(type_); }
    static const char* typeName(EntityType type) noexcept;

    friend bool operator==(const TopoMeshEntity& a, const TopoMeshEntity& b) noexcept {
        return a.data_ == b.data_;
    }
    /// By record address.
    friend bool operator<(const TopoMeshEntity& a, const TopoMeshEntity& b) noexcept {
        return std::less<const void*>()(a.data_, b.data_);
    }

private:
    EntityType type_ = EntityType::Vertex;
    void* data_ = nullptr;
};

} // namespace koGeom

/// \cond
template <>
struct std::hash<koGeom::TopoMeshEntity> {
    std::size_t operator()(const koGeom::TopoMeshEntity& entity) const noexcept {
        return koGeom::hashRecordAddress(entity.data());
    }
};
/// \endcond
