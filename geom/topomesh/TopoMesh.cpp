#include "geom/topomesh/TopoMesh.h"

#include <utility>

#include "tessar/core/Containers.h"

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

// For the time of a copy, each source record's previous-in-mesh link is lent to point at the
// record's copy, so that a link is mapped by one read of the record it names instead of a
// map look-up. The lent links are given back when the copy ends or an allocation fails. The
// source's lists are walked by their next links, which stay untouched.
template <class Data>
class LentLinks {
public:
    LentLinks(Data* first, int count) : first_(first) {
        saved_.reserve(static_cast<std::size_t>(count));
    }
    LentLinks(const LentLinks&) = delete;
    LentLinks& operator=(const LentLinks&) = delete;
    ~LentLinks() {
        Data* record = first_;
        for (Data* saved : saved_) {
            record->prevInMesh = saved;
            record = record->nextInMesh;
        }
    }

    // Lends the link of `record`, the next record of its list, to `copy`.
    void lend(Data* record, Data* copy) {
        saved_.push_back(record->prevInMesh);
        record->prevInMesh = copy;
    }
    static Data* copyOf(const Data* record) noexcept {
        return record != nullptr ? record->prevInMesh : nullptr;
    }

private:
    Data* first_;
    ko::vector<Data*> saved_;
};

// The copy constructor's copy: the same records, links and list order as `copyRecords`, in
// O(n) without maps.
void copyRecordsLending(const TopoMeshImpl& source, TopoMeshImpl& target) {
    using V = TopoMeshVertexData;
    using E = TopoMeshEdgeData;
    using F = TopoMeshFaceData;
    LentLinks<E> edges(source.firstEdge(), source.numEdges());
    LentLinks<V> vertices(source.firstVertex(), source.numVertices());
    LentLinks<F> faces(source.firstFace(), source.numFaces());
    for (E* e = source.firstEdge(); e != nullptr; e = e->nextInMesh) {
        edges.lend(e, target.allocEdgeRecord());
    }
    for (V* v = source.firstVertex(); v != nullptr; v = v->nextInMesh) {
        V* copy = target.allocVertex(v->point);
        vertices.lend(v, copy);
        copy->firstEdge = LentLinks<E>::copyOf(v->firstEdge);
    }
    for (F* f = source.firstFace(); f != nullptr; f = f->nextInMesh) {
        F* copy = target.allocFaceRecord();
        faces.lend(f, copy);
        copy->firstEdge = LentLinks<E>::copyOf(f->firstEdge);
    }
    for (const E* e = source.firstEdge(); e != nullptr; e = e->nextInMesh) {
        E* copy = LentLinks<E>::copyOf(e);
        copy->vertex = LentLinks<V>::copyOf(e->vertex);
        copy->next = LentLinks<E>::copyOf(e->next);
        copy->prev = LentLinks<E>::copyOf(e->prev);
        copy->twin = LentLinks<E>::copyOf(e->twin);
        copy->face = LentLinks<F>::copyOf(e->face);
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
    copyRecordsLending(*other.impl_, *impl_);
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
