// The packet-file members of TopoMesh, which live in this layer with the packet code.

#include <memory>

#include "crate/ioPacketRegistry.h"
#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"

#include "geom/io/detail/TopoMeshPacketType.h"
#include "geom/topomesh/TopoMesh.h"

namespace koGeom {

namespace {

using EntityType = TopoMeshTypedefs::EntityType;
using detail::TopoMeshPacketNames;
using detail::TopoMeshPacketType;

} // namespace

void TopoMesh::writePF(ioWriteContext& context) const {
    const TopoMeshPacketNames names(getPacketType());
    const TopoMeshHeader& h = impl_->header();
    context.startPacket(names.header, this);
    for (const void* end :
         {static_cast<const void*>(h.firstVertex), static_cast<const void*>(h.lastVertex),
          static_cast<const void*>(h.firstFace), static_cast<const void*>(h.lastFace),
          static_cast<const void*>(h.firstEdge), static_cast<const void*>(h.lastEdge)}) {
        context.writePointer(end);
    }
    context.writeInt(h.numVertices);
    context.writeInt(h.numFaces);
    context.writeInt(h.numEdges);
    onWritePF(context);
    context.endPacket();

    for (const TopoMeshVertexData* v = h.firstVertex; v != nullptr && context.ok();
         v = v->nextInMesh) {
        context.startPacket(names.vertex, v);
        context.writePointer(this);
        const double point[3] = {v->point.x, v->point.y, v->point.z};
        context.writeDoubleArray(point, 3);
        context.writePointer(v->firstEdge);
        context.writePointer(v->nextInMesh);
        context.writePointer(v->prevInMesh);
        onWriteVertexPF(const_cast<TopoMeshVertexData*>(v), context);
        context.endPacket();
    }
    for (const TopoMeshEdgeData* e = h.firstEdge; e != nullptr && context.ok(); e = e->nextInMesh) {
        context.startPacket(names.edge, e);
        context.writePointer(this);
        for (const void* link :
             {static_cast<const void*>(e->vertex), static_cast<const void*>(e->next),
              static_cast<const void*>(e->prev), static_cast<const void*>(e->twin),
              static_cast<const void*>(e->face), static_cast<const void*>(e->nextInMesh),
              static_cast<const void*>(e->prevInMesh)}) {
            context.writePointer(link);
        }
        onWriteEdgePF(const_cast<TopoMeshEdgeData*>(e), context);
        context.endPacket();
    }
    for (const TopoMeshFaceData* f = h.firstFace; f != nullptr && context.ok(); f = f->nextInMesh) {
        context.startPacket(names.face, f);
        context.writePointer(this);
        context.writePointer(f->firstEdge);
        context.writePointer(f->nextInMesh);
        context.writePointer(f->prevInMesh);
        onWriteFacePF(const_cast<TopoMeshFaceData*>(f), context);
        context.endPacket();
    }
}

bool TopoMesh::readPF(ioReadContext& context) {
    const int reference = context.getPacketReference();
    if (reference <= 0 || reference > maxPacketMeshReference) {
        context.invalidPacket(reference <= 0 ? "half-edge mesh header defines no mesh"
                                             : "half-edge mesh header reference out of range");
        return false;
    }
    TopoMeshHeader& h = impl_->header();
    if (impl_->isRecording() || h.firstVertex != nullptr || h.lastVertex != nullptr ||
        h.firstFace != nullptr || h.lastFace != nullptr || h.firstEdge != nullptr ||
        h.lastEdge != nullptr || h.numVertices != 0 || h.numFaces != 0 || h.numEdges != 0) {
        context.invalidPacket("half-edge mesh to read into is not empty");
        return false;
    }
    // The list ends are read straight into the header, where the packets of the records they
    // name patch them; a record of this mesh is defined with this mesh's kinds only.
    const int vertexKind = packetRecordKind(reference, EntityType::Vertex);
    const int edgeKind = packetRecordKind(reference, EntityType::Edge);
    const int faceKind = packetRecordKind(reference, EntityType::Face);
    context.readPointer(&h.firstVertex, vertexKind);
    context.readPointer(&h.lastVertex, vertexKind);
    context.readPointer(&h.firstFace, faceKind);
    context.readPointer(&h.lastFace, faceKind);
    context.readPointer(&h.firstEdge, edgeKind);
    context.readPointer(&h.lastEdge, edgeKind);
    h.numVertices = context.readInt();
    h.numFaces = context.readInt();
    h.numEdges = context.readInt();
    onReadPF(context);
    if (!context.ok() || context.isPacketInvalid()) {
        // The list ends wait for no record any more; the counts go too, leaving the mesh empty.
        h.numVertices = h.numFaces = h.numEdges = 0;
        return false;
    }
    context.defineReference(reference, static_cast<void*>(this), packetMeshKind);
    return context.ok();
}

void TopoMesh::registerTypes(ioPacketRegistry& registry, const char* name,
                             void (*reader)(ioReadContext&)) {
    const TopoMeshPacketNames names(name);
    if (name == nullptr || *name == '\0' || reader == nullptr) {
        reader = &TopoMeshPacketType::readDefaultHeader;
    }
    auto state = std::make_shared<detail::TopoMeshReadState>();
    using Role = TopoMeshPacketType::Role;
    registry.supportedType(new TopoMeshPacketType(names.header, Role::Header, reader, state));
    registry.supportedType(new TopoMeshPacketType(names.vertex, Role::Vertex, nullptr, state));
    registry.supportedType(new TopoMeshPacketType(names.edge, Role::Edge, nullptr, state));
    registry.supportedType(new TopoMeshPacketType(names.face, Role::Face, nullptr, state));
}

ko::vector<ko::Reference<TopoMesh>> TopoMesh::takeReadMeshes(ioPacketRegistry& registry,
                                                             const char* name) {
    auto* type =
        dynamic_cast<TopoMeshPacketType*>(registry.findType(TopoMeshPacketNames(name).header));
    if (type == nullptr) {
        return {};
    }
    return type->state().take();
}

} // namespace koGeom
