#include "geom/topomesh/TopoMeshImpl.h"

#include "geom/topomesh/detail/TopoMeshRecorder.h"
#include "geom/topomesh/detail/TopoMeshStateImpl.h"

namespace koGeom {

TopoMeshImpl::~TopoMeshImpl() {
    delete recorder_;
    recorder_ = nullptr;
    header_ = TopoMeshHeader();
    delete allocator_;
}

void TopoMeshImpl::recordChange(TopoMeshEntity entity, BulletinType bulletin) {
    recorder_->record(entity.data(), entity.getType(), bulletin);
}

// Appends a new record at the tail of its list. The new record is reported before its links
// are set and the old tail before its next link is.
template <class Data>
void TopoMeshImpl::append(Data* record, Data*& head, Data*& tail, EntityType type) {
    recordModified(TopoMeshEntity(record, type));
    record->nextInMesh = nullptr;
    record->prevInMesh = tail;
    if (tail != nullptr) {
        recordModified(TopoMeshEntity(tail, type));
        tail->nextInMesh = record;
    } else {
        head = record;
    }
    tail = record;
}

// Takes a record out of its list, reporting the neighbours whose links change; the record's
// own links are left as they were, so a saved state that still holds it finds them intact.
template <class Data>
void TopoMeshImpl::unlink(Data* record, Data*& head, Data*& tail, EntityType type) {
    Data* prev = record->prevInMesh;
    Data* next = record->nextInMesh;
    if (prev != nullptr) {
        recordModified(TopoMeshEntity(prev, type));
        prev->nextInMesh = next;
    } else {
        head = next;
    }
    if (next != nullptr) {
        recordModified(TopoMeshEntity(next, type));
        next->prevInMesh = prev;
    } else {
        tail = prev;
    }
}

TopoMeshVertex TopoMeshImpl::allocVertex() {
    TopoMeshVertexData* vertex = allocator_->allocVertex();
    recordCreated(TopoMeshVertex(vertex));
    ++header_.numVertices;
    vertex->firstEdge = nullptr;
    vertex->nextInMesh = nullptr;
    append(vertex, header_.firstVertex, header_.lastVertex, EntityType::Vertex);
    recordModified(TopoMeshVertex(vertex));
    return vertex;
}

TopoMeshVertex TopoMeshImpl::allocVertex(const koLinear::Point& point) {
    TopoMeshVertex vertex = allocVertex();
    vertex.data()->point = point;
    return vertex;
}

TopoMeshEdge TopoMeshImpl::allocEdgeRecord() {
    TopoMeshEdgeData* edge = allocator_->allocEdge();
    recordCreated(TopoMeshEdge(edge));
    ++header_.numEdges;
    append(edge, header_.firstEdge, header_.lastEdge, EntityType::Edge);
    return edge;
}

TopoMeshFace TopoMeshImpl::allocFaceRecord() {
    TopoMeshFaceData* face = allocator_->allocFace();
    recordCreated(TopoMeshFace(face));
    ++header_.numFaces;
    append(face, header_.firstFace, header_.lastFace, EntityType::Face);
    return face;
}

void TopoMeshImpl::freeVertexRecord(TopoMeshVertex vertex) {
    unlink(vertex.data(), header_.firstVertex, header_.lastVertex, EntityType::Vertex);
    recordDeleted(vertex);
    if (recorder_ == nullptr) {
        allocator_->freeVertex(vertex);
    }
    --header_.numVertices;
}

void TopoMeshImpl::freeEdgeRecord(TopoMeshEdge edge) {
    unlink(edge.data(), header_.firstEdge, header_.lastEdge, EntityType::Edge);
    recordDeleted(edge);
    if (recorder_ == nullptr) {
        allocator_->freeEdge(edge);
    }
    --header_.numEdges;
}

void TopoMeshImpl::freeFaceRecord(TopoMeshFace face) {
    unlink(face.data(), header_.firstFace, header_.lastFace, EntityType::Face);
    recordDeleted(face);
    if (recorder_ == nullptr) {
        allocator_->freeFace(face);
    }
    --header_.numFaces;
}

void TopoMeshImpl::enableTransactions() {
    if (recorder_ == nullptr) {
        recorder_ = new detail::TopoMeshRecorder(allocator_, &header_);
    }
}

ko::Reference<TopoMeshState> TopoMeshImpl::createState() {
    if (recorder_ == nullptr) {
        return nullptr;
    }
    return ko::Reference<TopoMeshState>(recorder_->createState());
}

void TopoMeshImpl::setState(const ko::Reference<TopoMeshState>& state) {
    // A state of another mesh, or of no mesh any longer, is not a place this mesh can go.
    if (recorder_ == nullptr || !state || state->recorder_ != recorder_) {
        return;
    }
    recorder_->setState(static_cast<detail::TopoMeshStateImpl*>(state.get()));
}

int TopoMeshImpl::getChanges(ko::unordered_map<TopoMeshEntity, BulletinType>& changes) const {
    if (recorder_ == nullptr) {
        changes.clear();
        return 0;
    }
    return recorder_->getChanges(changes);
}

} // namespace koGeom
