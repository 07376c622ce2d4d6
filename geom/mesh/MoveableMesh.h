#pragma once

#include "tessar/core/ReferenceCount.h"

#include "geom/FormworkExport.h"
#include "geom/mesh/CompactMesh.h"

namespace koGeom {

class MoveableArrayAllocator;

/// A reference-counted handle that keeps a compact mesh's arrays mapped while it lives, when
/// they are in a `MoveableArrayAllocator`: it maps the allocator when made and unmaps it when
/// destroyed. With any other allocator, or none, it does nothing.
///
/// Handles do not count nesting: two handles on one mesh both map it, and the first one
/// destroyed unmaps the arrays for both. The mesh is not owned and must outlive the handle.
class FORMWORK_EXPORT MoveableMesh : public ko::ReferenceCount {
public:
    /// Maps the mesh's moveable allocator, if it has one. Throws `std::bad_alloc` when the
    /// system refuses a mapping.
    explicit MoveableMesh(CompactMesh& mesh);
    MoveableMesh(const MoveableMesh&) = delete;
    MoveableMesh& operator=(const MoveableMesh&) = delete;
    /// Unmaps the mesh's moveable allocator, if it has one, whatever other handles remain.
    ~MoveableMesh() override;

    CompactMesh& get() noexcept { return mesh_; }

private:
    // The mesh's allocator when it is a moveable one, else null.
    MoveableArrayAllocator* getAllocator() const noexcept;

    CompactMesh& mesh_;
};

} // namespace koGeom
