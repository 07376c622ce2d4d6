#include "geom/io/detail/TopoMeshPacketType.h"

#include "crate/ioReadContext.h"

namespace koGeom::detail {

namespace {

using EntityType = TopoMeshTypedefs::EntityType;

constexpr const char* defaultHeaderName = "ko.geom.topomesh";

// Drops every record of `mesh` with its allocator's pools, following no link: the mesh gets
// a new empty body with a fresh allocator of the same kind.
void empty(TopoMesh& mesh) {
    TopoMesh fresh(mesh.getImpl()->allocator()->create());
    mesh.swap(fresh);
}

} // namespace

TopoMeshPacketNames::TopoMeshPacketNames(const char* base) {
    const bool named = base != nullptr && *base != '\0';
    header = named ? base : defaultHeaderName;
    // Deliberate: a derived mesh's record packets keep the whole default name behind its base
    // and a dot ("B.ko.geom.topomesh.vertex"), not only the last word; files rely on it.
    const std::string prefix = named ? header + "." + defaultHeaderName : header;
    vertex = prefix + ".vertex";
    edge = prefix + ".edge";
    face = prefix + ".face";
}

void TopoMeshReadState::begin(const ioReadContext& context, int reference, TopoMesh* mesh) {
    const Key key(&context, reference);
    const auto found = index_.find(key);
    if (found != index_.end()) {
        // A stale read of a context that never finished, at the same address.
        reading_[found->second] = MeshRead{mesh, &context, reference, {}};
        return;
    }
    index_.emplace(key, reading_.size());
    reading_.push_back(MeshRead{mesh, &context, reference, {}});
}

TopoMeshReadState::MeshRead* TopoMeshReadState::find(const ioReadContext& context, int reference) {
    if (last_ < reading_.size() && reading_[last_].reference == reference &&
        reading_[last_].context == &context) {
        return &reading_[last_];
    }
    const auto found = index_.find(Key(&context, reference));
    if (found == index_.end()) {
        return nullptr;
    }
    last_ = found->second;
    return &reading_[last_];
}

void TopoMeshReadState::linkToNothing(const ioReadContext& context) {
    linksToNothing_.insert(&context);
}

void TopoMeshReadState::finish(ioReadContext& context) {
    const bool linksToNothing = linksToNothing_.erase(&context) != 0;
    std::vector<MeshRead> unfinished;
    for (MeshRead& read : reading_) {
        if (read.context != &context) {
            unfinished.push_back(std::move(read));
            continue;
        }
        const std::string fault =
            !context.ok()    ? "the read stopped at an error"
            : linksToNothing ? "a link names no record of the file"
                             : checkReadTopoMesh(read.mesh->getImpl()->header(), read.records);
        if (!fault.empty()) {
            empty(*read.mesh);
            context.invalidPacket("half-edge mesh " + std::to_string(read.reference) +
                                  " dropped: " + fault);
        }
        read_.push_back(std::move(read.mesh));
    }
    reading_ = std::move(unfinished);
    index_.clear();
    for (std::size_t i = 0; i < reading_.size(); ++i) {
        index_.emplace(Key(reading_[i].context, reading_[i].reference), i);
    }
    last_ = 0;
}

ko::vector<ko::Reference<TopoMesh>> TopoMeshReadState::take() { return std::move(read_); }

TopoMeshPacketType::TopoMeshPacketType(std::string name, Role role, void (*reader)(ioReadContext&),
                                       std::shared_ptr<TopoMeshReadState> state)
    : ioPacketType(std::move(name)), role_(role), reader_(reader), state_(std::move(state)) {}

TopoMeshPacketType::~TopoMeshPacketType() = default;

bool TopoMeshPacketType::readPacket(ioReadContext& context) {
    switch (role_) {
        case Role::Header:
            return readHeader(context);
        case Role::Vertex:
            return readVertex(context);
        case Role::Edge:
            return readEdge(context);
        case Role::Face:
            return readFace(context);
    }
    return false;
}

void TopoMeshPacketType::hasUnresolvedPointer(ioReadContext& context, int /*reference*/) {
    state_->linkToNothing(context);
}

void TopoMeshPacketType::readFinished(ioReadContext& context) { state_->finish(context); }

void TopoMeshPacketType::readDefaultHeader(ioReadContext& context) {
    auto* mesh = new TopoMesh;
    if (!mesh->readPF(context)) {
        delete mesh;
    }
}

bool TopoMeshPacketType::readHeader(ioReadContext& context) {
    reader_(context);
    if (!context.ok() || context.isPacketInvalid()) {
        return false;
    }
    // The mesh that readPF defined as the packet's object, if the reader called it.
    const int reference = context.getPacketReference();
    if (context.getReferenceKind(reference) == TopoMesh::packetMeshKind) {
        state_->begin(context, reference,
                      static_cast<TopoMesh*>(context.getReferenceDefinition(reference)));
    }
    return true;
}

TopoMeshReadState::MeshRead* TopoMeshPacketType::readMesh(ioReadContext& context) {
    if (context.getPacketReference() == 0) {
        context.invalidPacket("half-edge mesh record packet defines no record");
        return nullptr;
    }
    const int reference = context.readReferenceId();
    // A mesh whose header has not been read: the record is skipped.
    if (!context.ok() || !context.isReferenceDefined(reference)) {
        return nullptr;
    }
    TopoMeshReadState::MeshRead* read = nullptr;
    if (context.getReferenceKind(reference) == TopoMesh::packetMeshKind) {
        read = state_->find(context, reference);
    }
    if (read == nullptr) {
        context.invalidPacket("reference " + std::to_string(reference) +
                              " is not a half-edge mesh read under these packet names");
    }
    return read;
}

template <class Hook, class Record>
bool TopoMeshPacketType::finishRecord(ioReadContext& context, TopoMeshReadState::MeshRead& read,
                                      Hook hook, Record* record, EntityType type,
                                      std::int64_t& count) {
    (read.mesh.get()->*hook)(record, context);
    if (!context.ok() || context.isPacketInvalid()) {
        return false;
    }
    context.defineReference(context.getPacketReference(), record,
                            TopoMesh::packetRecordKind(read.reference, type));
    if (!context.ok()) {
        return false;
    }
    ++count;
    return true;
}

bool TopoMeshPacketType::readVertex(ioReadContext& context) {
    TopoMeshReadState::MeshRead* read = readMesh(context);
    if (read == nullptr) {
        return false;
    }
    double point[3];
    if (context.readDoubleArray(point, 3) != 3) {
        if (context.ok()) {
            context.invalidPacket("vertex point is not three doubles");
        }
        return false;
    }
    TopoMeshVertexData* vertex = read->mesh->getImpl()->allocator()->allocVertex();
    vertex->point = koLinear::Point(point[0], point[1], point[2]);
    const int mesh = read->reference;
    context.readPointer(&vertex->firstEdge, TopoMesh::packetRecordKind(mesh, EntityType::Edge));
    context.readPointer(&vertex->nextInMesh, TopoMesh::packetRecordKind(mesh, EntityType::Vertex));
    context.readPointer(&vertex->prevInMesh, TopoMesh::packetRecordKind(mesh, EntityType::Vertex));
    return finishRecord(context, *read, &TopoMesh::onReadVertexPF, vertex, EntityType::Vertex,
                        read->records.vertices);
}

bool TopoMeshPacketType::readEdge(ioReadContext& context) {
    TopoMeshReadState::MeshRead* read = readMesh(context);
    if (read == nullptr) {
        return false;
    }
    TopoMeshEdgeData* edge = read->mesh->getImpl()->allocator()->allocEdge();
    const int edgeKind = TopoMesh::packetRecordKind(read->reference, EntityType::Edge);
    context.readPointer(&edge->vertex,
                        TopoMesh::packetRecordKind(read->reference, EntityType::Vertex));
    for (TopoMeshEdgeData** link : {&edge->next, &edge->prev, &edge->twin}) {
        context.readPointer(link, edgeKind);
    }
    context.readPointer(&edge->face, TopoMesh::packetRecordKind(read->reference, EntityType::Face));
    context.readPointer(&edge->nextInMesh, edgeKind);
    context.readPointer(&edge->prevInMesh, edgeKind);
    return finishRecord(context, *read, &TopoMesh::onReadEdgePF, edge, EntityType::Edge,
                        read->records.edges);
}

bool TopoMeshPacketType::readFace(ioReadContext& context) {
    TopoMeshReadState::MeshRead* read = readMesh(context);
    if (read == nullptr) {
        return false;
    }
    TopoMeshFaceData* face = read->mesh->getImpl()->allocator()->allocFace();
    const int faceKind = TopoMesh::packetRecordKind(read->reference, EntityType::Face);
    context.readPointer(&face->firstEdge,
                        TopoMesh::packetRecordKind(read->reference, EntityType::Edge));
    context.readPointer(&face->nextInMesh, faceKind);
    context.readPointer(&face->prevInMesh, faceKind);
    return finishRecord(context, *read, &TopoMesh::onReadFacePF, face, EntityType::Face,
                        read->records.faces);
}

} // namespace koGeom::detail
