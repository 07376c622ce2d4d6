#include "geom/topomesh/TopoMesh.h"

#include <utility>

#include "geom/topomesh/detail/TopoMeshImplAlloc.h"

namespace koGeom {

namespace {

template <class Handle>
Handle mapped(const std::map<Handle, Handle>& map, Handle source) {
    if (!source) {
        return Handle();
    }
    return map.find(source)->second;
}

// Fills the empty body `target` with a copy of `source`: new edges, then vertices, then faces
// in list order, so the new lists keep the source's order; then the edge links through the
// maps.
void copyRecords(const TopoMeshImpl& source, TopoMeshImpl& target, TopoMesh::CopyData& maps) {
    maps.vertices.clear();
    maps.edges.clear();
    maps.faces.clear();
    for (TopoMeshEdge e = source.firstEdge(); e; e = e.nextInMesh()) {
        maps.edges.emplace(e, target.allocEdgeRecord());
    }
    for (TopoMeshVertex v = source.firstVertex(); v; v = v.nextInMesh()) {
        TopoMeshVertex copy = target.allocVertex(v.point());
        maps.vertices.emplace(v, copy);
        copy.data()->firstEdge = mapped(maps.edges, v.firstEdge());
    }
    for (TopoMeshFace f = source.firstFace(); f; f = f.nextInMesh()) {
        TopoMeshFace copy = target.allocFaceRecord();
        maps.faces.emplace(f, copy);
        copy.data()->firstEdge = mapped(maps.edges, f.firstEdge());
    }
    for (const auto& [from, to] : maps.edges) {
        TopoMeshEdgeData* record = to.data();
        record->vertex = mapped(maps.vertices, from.firstVertex());
        record->next = mapped(maps.edges, from.next());
        record->prev = mapped(maps.edges, from.prev());
        record->twin = mapped(maps.edges, from.twin());
        record->face = mapped(maps.faces, from.face());
    }
}

// A body over `allocator`, which is deleted if the body cannot be made.
std::unique_ptr<TopoMeshImpl> makeBody(TopoMeshAlloc* allocator) {
    std::unique_ptr<TopoMeshAlloc> owned(allocator);
    auto body = std::make_unique<TopoMeshImpl>(owned.get());
    owned.release();
    return body;
}

} // namespace

TopoMesh::TopoMesh() : TopoMesh(new detail::TopoMeshImplAlloc) {}

TopoMesh::TopoMesh(TopoMeshAlloc* allocator) : impl_(makeBody(allocator)) {}

TopoMesh::TopoMesh(const TopoMesh& other)
    : Entity(other), impl_(makeBody(other.impl_->allocator()->create())) {
    CopyData maps;
    copyRecords(*other.impl_, *impl_, maps);
}

TopoMesh& TopoMesh::operator=(const TopoMesh& other) {
    TopoMesh copy(other);
    swap(copy);
    return *this;
}

TopoMesh::~TopoMesh() = default;

void TopoMesh::copy(const TopoMesh& source, CopyData& copyData) {
    // Deliberate: the copy takes a default-made mesh's body, so it always gets a new default
    // allocator; callers that need their own record types copy with the copy constructor.
    TopoMesh old;
    swap(old);
    copyRecords(&source == this ? *old.impl_ : *source.impl_, *impl_, copyData);
}

void TopoMesh::swap(TopoMesh& other) noexcept { impl_.swap(other.impl_); }

std::uint64_t TopoMesh::getSizeInBytes() const noexcept {
    return 152u + 48u * static_cast<std::uint64_t>(impl_->numVertices()) +
           56u * static_cast<std::uint64_t>(impl_->numEdges()) +
           24u * static_cast<std::uint64_t>(impl_->numFaces());
}

} // namespace koGeom
