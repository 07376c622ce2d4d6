#include "geom/mesh/MoveableMesh.h"

#include "geom/storage/MoveableArrayAllocator.h"

namespace koGeom {

MoveableMesh::MoveableMesh(CompactMesh& mesh) : mesh_(mesh) {
    if (MoveableArrayAllocator* allocator = getAllocator()) {
        allocator->map();
    }
}

MoveableMesh::~MoveableMesh() {
    // Deliberate: no count of handles is kept; the first handle to go unmaps the arrays for
    // every other, which hosts rely on to free a mesh's memory at once.
    if (MoveableArrayAllocator* allocator = getAllocator()) {
        allocator->unmap();
    }
}

MoveableArrayAllocator* MoveableMesh::getAllocator() const noexcept {
    // The reference taken to look is dropped on return; the mesh keeps the allocator alive.
    return dynamic_cast<MoveableArrayAllocator*>(mesh_.getArrayAllocator().get());
}

} // namespace koGeom
