#include "geom/io/ReadInterface.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/rtb/SignalClient.h"
#include "tessar/string/CString.h"

#include "geom/entity/Entity.h"
#include "geom/io/PacketValues.h"
#include "geom/io/detail/ArrayIo.h"
#include "geom/io/detail/MeshPacketNames.h"
#include "geom/io/detail/ReferenceKinds.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshAttributes.h"
#include "geom/mesh/MeshSequence.h"
#include "geom/view/Camera.h"
#include "geom/view/EyeSpaceFrustum.h"
#include "geom/view/Viewport.h"

namespace koGeom::packetFile {

namespace detail {

// What the copies of one reader share: the meshes they own, and the data bytes the meshes of
// this read have claimed so far. A mesh that someone else ends (by dropping the last reference
// they took to it) leaves the list as it goes.
struct MeshReadState : koRTB::SignalClient {
    std::vector<CompactMesh*> owned;
    std::uint64_t claimed = 0;

    // Takes `fresh` over; on failure it stays with the caller.
    CompactMesh* adopt(std::unique_ptr<CompactMesh> fresh) {
        CompactMesh* mesh = fresh.get();
        mesh->deletedSignal.connect(*this,
                                    [this, mesh](const Entity*) { std::erase(owned, mesh); });
        owned.push_back(mesh);
        return fresh.release();
    }

    ~MeshReadState() {
        disconnectAll();
        for (CompactMesh* mesh : owned) {
            // A mesh that someone holds by reference is theirs to end.
            if (mesh->refs() == 0) {
                delete mesh;
            }
        }
    }
};

// The array a data packet fills: its first element (null when the array is absent), its
// number of elements and the values per element.
template <class T>
struct MeshArraySlot {
    T* first = nullptr;
    int elements = 0;
    int width = 1;
};

} // namespace detail

namespace {

using detail::MeshArraySlot;

// The bytes of the file, and those from the start of the current packet to its end.
std::uint64_t fileBytes(const ioReadContext& context) { return context.getInputSize(); }
std::uint64_t fileBytesFromPacket(const ioReadContext& context) {
    const std::uint64_t size = fileBytes(context);
    const std::uint64_t offset = context.getPacketOffset();
    return offset < size ? size - offset : 0;
}

std::uint64_t nonNegative(int count) { return count > 0 ? static_cast<std::uint64_t>(count) : 0; }

// The header of a mesh with the defaults of its optional chunks.
struct MeshHeader {
    int vertices = 0;
    int triangles = 0;
    int renderInfo = 0;
    int drawFlags = 0;
    bool normals = false;
    bool uvs = false;
    float uvRange[4] = {};
    bool flatShaded = false;
    bool colours = false;
    bool triNormals = false;
    // Per sequence kind: the number of sequences, then the number of points.
    int sequences[detail::sequenceKindCount][2] = {};
    bool sts = false;

    bool hasSequences(int kind) const { return sequences[kind][0] >= 1 && sequences[kind][1] >= 1; }

    // The data bytes of the arrays a mesh of this header gets.
    std::uint64_t dataBytes() const {
        const std::uint64_t floatsPerVertex =
            3 + (normals ? 3 : 0) + (uvs ? 2 : 0) + (sts ? 2 : 0) + (colours ? 4 : 0);
        std::uint64_t values =
            nonNegative(vertices) * floatsPerVertex + nonNegative(triangles) * (triNormals ? 6 : 3);
        for (int kind = 0; kind < detail::sequenceKindCount; ++kind) {
            if (hasSequences(kind)) {
                values += nonNegative(sequences[kind][0]) + nonNegative(sequences[kind][1]);
            }
        }
        return values * 4;
    }
};

// Reads the header; false when the context failed or the packet was marked invalid.
bool readHeader(ioReadContext& context, MeshHeader& header) {
    header.vertices = context.readInt();
    header.triangles = context.readInt();
    if (context.nextChunk()) {
        // Render information is the renderer's own: its reference resolves only to an object
        // some packet defined, and is never patched later.
        header.renderInfo = context.readReferenceId();
    }
    if (context.nextChunk()) {
        header.drawFlags = context.readInt();
        header.normals = context.readBool();
    }
    if (context.nextChunk()) {
        header.uvs = context.readBool();
        if (header.uvs) {
            if (context.peekArrayCount() != 4) {
                if (context.ok()) {
                    context.invalidPacket("mesh header: UV range is not four floats");
                }
                return false;
            }
            context.readFloatArray(header.uvRange, 4);
        }
    }
    if (context.nextChunk()) {
        header.flatShaded = context.readBool();
    }
    if (context.nextChunk() && context.startSubPacket()) {
        header.colours = context.readBool();
        header.triNormals = context.readBool();
        for (auto& counts : header.sequences) {
            counts[0] = context.readInt();
            counts[1] = context.readInt();
        }
        if (context.nextChunk()) {
            header.sts = context.readBool();
        }
        context.endSubPacket();
    }
    return context.ok();
}

MeshSequence& sequenceOf(CompactMesh& mesh, int kind) {
    switch (kind) {
        case detail::triStripKind:
            return mesh.getTriStrips();
        case detail::triFanKind:
            return mesh.getTriFans();
        case detail::lineStripKind:
            return mesh.getLineStrips();
        default:
            return mesh.getPolys();
    }
}

void resizeSequences(CompactMesh& mesh, int kind, int numPoints, int numSequences) {
    switch (kind) {
        case detail::triStripKind:
            mesh.resizeTriStripArrays(numPoints, numSequences);
            break;
        case detail::triFanKind:
            mesh.resizeTriFanArrays(numPoints, numSequences);
            break;
        case detail::lineStripKind:
            mesh.resizeLineStripArrays(numPoints, numSequences);
            break;
        default:
            mesh.resizePolyArrays(numPoints, numSequences);
            break;
    }
}

MeshArraySlot<float> channelSlot(MeshAttributes* channel) {
    if (channel == nullptr) {
        return {};
    }
    return {channel->asFloat(), channel->getNumElements(), channel->getDimension()};
}

MeshArraySlot<float> verticesSlot(CompactMesh& mesh) { return channelSlot(mesh.getVerticesAttr()); }
MeshArraySlot<float> normalsSlot(CompactMesh& mesh) { return channelSlot(mesh.getNormalsAttr()); }
MeshArraySlot<float> uvsSlot(CompactMesh& mesh) { return channelSlot(mesh.getUVsAttr()); }
MeshArraySlot<float> stsSlot(CompactMesh& mesh) { return channelSlot(mesh.getSTsAttr()); }
MeshArraySlot<float> coloursSlot(CompactMesh& mesh) { return channelSlot(mesh.getColoursAttr()); }
MeshArraySlot<int> trianglesSlot(CompactMesh& mesh) {
    return {mesh.getTrianglesRaw(), mesh.getNumTriangles(), 3};
}
MeshArraySlot<float> triNormalsSlot(CompactMesh& mesh) {
    // Triangle normals are either absent or one per triangle.
    return {mesh.getTriangleNormalsRaw(), mesh.getNumTriangles(), 3};
}

// Checks that `count` elements from `start` lie in `slot` and that the next value, the
// element array, holds exactly their values; marks the packet invalid when not.
template <class T>
bool blockFits(ioReadContext& context, const MeshArraySlot<T>& slot, int start, int count,
               const char* what) {
    if (slot.first == nullptr) {
        context.invalidPacket(koString::CString::format("the mesh has no %s", what).view());
        return false;
    }
    if (start < 0 || count < 0 ||
        static_cast<std::int64_t>(start) + count > static_cast<std::int64_t>(slot.elements)) {
        context.invalidPacket(
            koString::CString::format("%s %d to %lld outside the mesh's %d", what, start,
                                      static_cast<long long>(start) + count, slot.elements)
                .view());
        return false;
    }
    const std::size_t values = static_cast<std::size_t>(count) * slot.width;
    const std::size_t length = context.peekArrayCount();
    if (!context.ok()) {
        return false;
    }
    if (length != values) {
        context.invalidPacket(koString::CString::format("%zu values for %d %s of %d each", length,
                                                        count, what, slot.width)
                                  .view());
        return false;
    }
    return true;
}

template <class T>
void readIntoSlot(ioReadContext& context, const MeshArraySlot<T>& slot, int start, int count) {
    const std::size_t values = static_cast<std::size_t>(count) * slot.width;
    detail::readArray(context, slot.first + static_cast<std::size_t>(start) * slot.width, values);
}

} // namespace

ReadInterface::ReadInterface(ioReadContext& context)
    : ioClientReadContext(context), shared_(std::make_shared<detail::MeshReadState>()) {}

ReadInterface::ReadInterface(const ReadInterface& other)
    : ioClientReadContext(other),
      lastMesh_(other.lastMesh_),
      ignoreMesh_(other.ignoreMesh_),
      headerAccepted_(other.headerAccepted_),
      meshBudget_(other.meshBudget_),
      shared_(other.shared_) {
    watchLastMesh();
}

ReadInterface::~ReadInterface() { lastMeshWatch_.disconnectAll(); }

void ReadInterface::watchLastMesh() {
    lastMeshWatch_.disconnectAll();
    if (lastMesh_ != nullptr) {
        // Whoever ends the mesh (taken by reference and dropped) ends what the reader knows of
        // it: its data packets then go nowhere.
        lastMesh_->deletedSignal.connect(lastMeshWatch_, [this](const Entity*) {
            lastMesh_ = nullptr;
            headerAccepted_ = false;
        });
    }
}

CompactMesh* ReadInterface::getLastMesh(bool release) {
    CompactMesh* mesh = lastMesh_;
    if (release && mesh != nullptr) {
        std::erase(shared_->owned, mesh);
        lastMesh_ = nullptr;
        headerAccepted_ = false;
        watchLastMesh();
    }
    return mesh;
}

void ReadInterface::readMesh() {
    ioReadContext& context = getContext();
    if (ignoreMesh_) {
        context.invalidPacket("mesh packets are ignored");
        return;
    }
    headerAccepted_ = false;
    MeshHeader header;
    if (!readHeader(context, header)) {
        return;
    }
    // The widest channel holds four floats per vertex, counted in 32 bits either way.
    constexpr int maxVertices = INT_MAX / 4;
    if (header.vertices > maxVertices || header.vertices < -maxVertices) {
        context.invalidPacket(
            koString::CString::format("mesh header: vertex count %d out of range", header.vertices)
                .view());
        return;
    }
    const std::uint64_t bytes = header.dataBytes();
    const std::uint64_t room = fileBytesFromPacket(context);
    if (bytes > room || shared_->claimed + bytes > fileBytes(context)) {
        context.invalidPacket(
            koString::CString::format(
                "mesh header of %d vertices and %d triangles needs %llu bytes of data, more "
                "than the file holds",
                header.vertices, header.triangles, static_cast<unsigned long long>(bytes))
                .view());
        return;
    }

    // The previous last mesh stays: whoever took it owns it, and one nobody took goes with
    // the reader.
    CompactMesh* mesh = shared_->adopt(std::make_unique<CompactMesh>());
    lastMesh_ = mesh;
    watchLastMesh();
    shared_->claimed += bytes;
    meshBudget_ = room - bytes;

    mesh->resizeVertexArray(header.vertices);
    if (header.triangles != 0) {
        mesh->resizeTriangleArray(header.triangles);
    }
    if (header.normals) {
        mesh->allocNormalArray();
    }
    if (header.uvs) {
        mesh->allocUVArray();
        koLinear::Range2d range;
        range.min = {header.uvRange[0], header.uvRange[1]};
        range.max = {header.uvRange[2], header.uvRange[3]};
        mesh->setUVRange(range);
    }
    if (header.sts) {
        mesh->allocSTArray();
    }
    if (header.colours) {
        mesh->allocColourArray();
    }
    if (header.triNormals) {
        mesh->allocTriangleNormalArray();
    }
    for (int kind = 0; kind < detail::sequenceKindCount; ++kind) {
        if (header.hasSequences(kind)) {
            resizeSequences(*mesh, kind, header.sequences[kind][1], header.sequences[kind][0]);
        }
    }
    if (header.renderInfo != 0) {
        if (void* renderInfo = context.getReferenceDefinition(header.renderInfo)) {
            mesh->setRenderInfo(renderInfo);
        }
    }
    mesh->setDrawFlags(header.drawFlags);
    mesh->setFlatShaded(header.flatShaded);
    if (const int reference = context.getPacketReference(); reference != 0) {
        context.defineReference(reference, mesh, detail::compactMeshKind);
    }
    headerAccepted_ = true;
}

CompactMesh* ReadInterface::openDataPacket() {
    if (ignoreMesh_) {
        return nullptr;
    }
    if (!headerAccepted_ || lastMesh_ == nullptr) {
        getContext().invalidPacket("no mesh header before this data packet");
        return nullptr;
    }
    // The pointer field names the mesh, but the data go to the last one created.
    getContext().readReferenceId();
    return lastMesh_;
}

template <class T>
void ReadInterface::readBlock(MeshArraySlot<T> (*find)(CompactMesh&), const char* what) {
    CompactMesh* mesh = openDataPacket();
    if (mesh == nullptr) {
        return;
    }
    ioReadContext& context = getContext();
    const int start = context.readInt();
    const int count = context.readInt();
    if (!context.ok()) {
        return;
    }
    const MeshArraySlot<T> slot = find(*mesh);
    if (blockFits(context, slot, start, count, what)) {
        readIntoSlot(context, slot, start, count);
    }
}

void ReadInterface::readMeshVertices() { readBlock(verticesSlot, "vertices"); }
void ReadInterface::readMeshNormals() { readBlock(normalsSlot, "normals"); }
void ReadInterface::readMeshUVs() { readBlock(uvsSlot, "UVs"); }
void ReadInterface::readMeshSTs() { readBlock(stsSlot, "STs"); }
void ReadInterface::readMeshColours() { readBlock(coloursSlot, "colours"); }
void ReadInterface::readMeshTriangles() { readBlock(trianglesSlot, "triangles"); }
void ReadInterface::readMeshTriNormals() { readBlock(triNormalsSlot, "triangle normals"); }

void ReadInterface::readMeshSeqArray() {
    CompactMesh* mesh = openDataPacket();
    if (mesh == nullptr) {
        return;
    }
    ioReadContext& context = getContext();
    const int kind = context.readInt();
    const int arrayKind = context.readInt();
    const int start = context.readInt();
    const int count = context.readInt();
    if (!context.ok()) {
        return;
    }
    if (kind < 0 || kind >= detail::sequenceKindCount ||
        (arrayKind != detail::pointsArrayKind && arrayKind != detail::lengthsArrayKind)) {
        return; // a kind this reader does not know: skipped unread
    }
    MeshSequence& sequence = sequenceOf(*mesh, kind);
    Array<int>& array =
        arrayKind == detail::pointsArrayKind ? sequence.points() : sequence.lengths();
    const MeshArraySlot<int> slot{array.elements(), array.count(), 1};
    if (blockFits(context, slot, start, count,
                  arrayKind == detail::pointsArrayKind ? "sequence points" : "sequence lengths")) {
        readIntoSlot(context, slot, start, count);
        // Starts built from the old points or lengths would no longer match them.
        sequence.invalidate();
    }
}

void ReadInterface::readMeshAttributes() {
    CompactMesh* mesh = openDataPacket();
    if (mesh == nullptr) {
        return;
    }
    ioReadContext& context = getContext();
    const std::string name = context.readString();
    const int size = context.readInt();
    const int start = context.readInt();
    const int length = context.readInt();
    if (!context.ok()) {
        return;
    }
    if (size < 1 || size > 4) {
        context.invalidPacket(
            koString::CString::format("attribute of %d floats per vertex", size).view());
        return;
    }
    const koString::CString key(name);
    MeshAttributes* attribute = mesh->getAttributes(key);
    if (attribute != nullptr && attribute->getDimension() != size) {
        context.invalidPacket(
            koString::CString::format("attribute of %d floats where the mesh has one of %d", size,
                                      attribute->getDimension())
                .view());
        return;
    }
    if (attribute == nullptr) {
        const std::uint64_t bytes = nonNegative(mesh->getNumVertices()) * size * 4;
        if (bytes > meshBudget_ || shared_->claimed + bytes > fileBytes(context)) {
            context.invalidPacket("attribute needs more bytes of data than the file holds");
            return;
        }
        attribute = mesh->allocAttributes(key, size);
        if (attribute == nullptr) {
            context.invalidPacket(
                koString::CString::format("the mesh cannot make an attribute of %d floats", size)
                    .view());
            return;
        }
        meshBudget_ -= bytes;
        shared_->claimed += bytes;
    }
    const MeshArraySlot<float> slot = channelSlot(attribute);
    if (!blockFits(context, slot, start, length, "attribute values")) {
        return;
    }
    // Deliberate: the "size" printed is the mesh's number of triangles, not the attribute's
    // size; tools that read this log rely on the line as it has always been.
    std::fprintf(stderr, "m_mesh = %p, size = %d, attrib = %s, start = %d, length = %d\n",
                 static_cast<void*>(mesh), mesh->getNumTriangles(), key.c_str(), start, length);
    readIntoSlot(context, slot, start, length);
}

bool ReadInterface::readViewport(Viewport& viewport) {
    ioReadContext& context = getContext();
    if (!context.startSubPacket()) {
        return false;
    }
    double values[6];
    for (double& value : values) {
        value = context.readDouble();
    }
    context.endSubPacket();
    if (!context.ok()) {
        return false;
    }
    viewport.setOrigin(values[0], values[1]);
    viewport.setSize(values[2], values[3]);
    viewport.setDepthRange(values[4], values[5]);
    return true;
}

bool ReadInterface::readEyeSpaceFrustum(EyeSpaceFrustum& frustum) {
    ioReadContext& context = getContext();
    if (!context.startSubPacket()) {
        return false;
    }
    koLinear::Tuple2 leftBottom;
    koLinear::Tuple2 rightTop;
    const bool frame = readTuple2(context, leftBottom) && readTuple2(context, rightTop);
    const double near = frame ? context.readDouble() : 0.0;
    const double far = frame ? context.readDouble() : 0.0;
    const bool orthographic = frame && context.readBool();
    context.endSubPacket();
    if (!frame || !context.ok()) {
        return false;
    }
    frustum.setFrame(leftBottom, rightTop);
    frustum.setDepthRange(near, far, false);
    frustum.setOrthographic(orthographic);
    return true;
}

bool ReadInterface::readCamera(Camera& camera) {
    ioReadContext& context = getContext();
    if (!context.startSubPacket()) {
        return false;
    }
    Viewport viewport;
    EyeSpaceFrustum frustum;
    koLinear::AffineMatrix worldToEye;
    const bool parts = readViewport(viewport) && readEyeSpaceFrustum(frustum) &&
                       readAffineMatrix(context, worldToEye);
    const bool open = parts && context.readBool();
    context.endSubPacket();
    if (!parts || !context.ok()) {
        return false;
    }
    camera.setViewport(viewport);
    camera.setFrustum(frustum);
    camera.setWorldToEye(worldToEye);
    camera.setOpenFrustum(open);
    return true;
}

} // namespace koGeom::packetFile
