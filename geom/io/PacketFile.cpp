#include "geom/io/PacketFile.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Range2d.h"
#include "tessar/linear/Tuple2.h"

#include "geom/io/PacketValues.h"
#include "geom/io/ReadInterface.h"
#include "geom/io/detail/ArrayIo.h"
#include "geom/io/detail/GeomPacket.h"
#include "geom/io/detail/MeshPacketNames.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/mesh/MeshAttributes.h"
#include "geom/mesh/MeshSequence.h"
#include "geom/topomesh/TopoMesh.h"
#include "geom/view/Camera.h"
#include "geom/view/EyeSpaceFrustum.h"
#include "geom/view/Viewport.h"

namespace koGeom::packetFile {

namespace {

using detail::meshBlockSize;

// Writes the data packets of one array: blocks of at most 1000 elements, each opened with
// the mesh pointer field, then the packet's own leading fields, start, count and the values.
class BlockWriter {
public:
    BlockWriter(ioWriteContext& context, const CompactMesh& mesh, bool writeReferences)
        : context_(context), mesh_(mesh), writeReferences_(writeReferences) {}

    // `fields(start, count)` writes what comes between the pointer field and the start.
    template <class T, class Fields>
    void write(const char* name, const T* values, int elements, int width, Fields fields) {
        forEachBlock(name, values, elements, [&](int start, int count) {
            fields(start, count);
            writeRange(start, count);
            detail::writeArray(context_, values + static_cast<std::size_t>(start) * width,
                               static_cast<std::size_t>(count) * width);
        });
    }

    template <class T>
    void write(const char* name, const T* values, int elements, int width) {
        write(name, values, elements, width, [](int, int) {});
    }

    // The vertex positions multiplied by `scale`, block by block through one scratch buffer.
    void writeScaled(const float* values, int elements, float scale) {
        forEachBlock(detail::meshVerticesName, values, elements, [&](int start, int count) {
            const std::size_t length = static_cast<std::size_t>(count) * 3;
            if (scratch_.size() < length) {
                scratch_.resize(length);
            }
            const float* block = values + static_cast<std::size_t>(start) * 3;
            for (std::size_t i = 0; i < length; ++i) {
                scratch_[i] = block[i] * scale;
            }
            writeRange(start, count);
            context_.writeFloatArray(scratch_.data(), length);
        });
    }

private:
    template <class T, class Body>
    void forEachBlock(const char* name, const T* values, int elements, Body body) {
        if (values == nullptr) {
            return;
        }
        for (int start = 0; start < elements; start += meshBlockSize) {
            context_.startPacket(name);
            if (writeReferences_) {
                context_.writePointer(&mesh_);
            } else {
                context_.writeNullPointer();
            }
            body(start, std::min(meshBlockSize, elements - start));
            context_.endPacket();
        }
    }

    void writeRange(int start, int count) {
        context_.writeInt(start);
        context_.writeInt(count);
    }

    ioWriteContext& context_;
    const CompactMesh& mesh_;
    bool writeReferences_;
    std::vector<float> scratch_;
};

// The number of elements of a channel to write: the vertex count, or the channel's own length
// when a client made it shorter.
int channelElements(const MeshAttributes* channel, int numVertices) {
    return channel == nullptr ? 0 : std::min(numVertices, channel->getNumElements());
}

struct SequenceCounts {
    const MeshSequence* sequence;
    int numSequences;
    int numPoints;
};

void writeHeader(ioWriteContext& context, const CompactMesh& mesh, bool writeReferences,
                 bool normalsStored, bool triNormalsStored, const SequenceCounts* sequences) {
    context.startPacket(detail::meshHeaderName, writeReferences ? &mesh : nullptr);
    context.writeInt(mesh.getNumVertices());
    context.writeInt(mesh.getNumTriangles());
    context.nextChunk();
    context.writePointer(mesh.getRenderInfo());
    context.nextChunk();
    context.writeInt(mesh.getDrawFlags());
    context.writeBool(normalsStored);
    context.nextChunk();
    const bool hasUVs = mesh.getUVsAttr() != nullptr;
    context.writeBool(hasUVs);
    if (hasUVs) {
        const koLinear::Range2d range = mesh.getUVRange();
        const float corners[4] = {static_cast<float>(range.min.x), static_cast<float>(range.min.y),
                                  static_cast<float>(range.max.x), static_cast<float>(range.max.y)};
        context.writeFloatArray(corners, 4);
    }
    context.nextChunk();
    context.writeBool(mesh.getFlatShaded());
    context.nextChunk();
    context.startSubPacket();
    context.writeBool(mesh.getColoursAttr() != nullptr);
    context.writeBool(triNormalsStored);
    for (int kind = 0; kind < detail::sequenceKindCount; ++kind) {
        context.writeInt(sequences[kind].numSequences);
        context.writeInt(sequences[kind].numPoints);
    }
    context.nextChunk();
    context.writeBool(mesh.getSTsAttr() != nullptr);
    context.endSubPacket();
    context.endPacket();
}

} // namespace

void writeMesh(ioWriteContext& context, const CompactMesh* mesh, double scale,
               bool writeReferences) {
    if (mesh == nullptr) {
        return;
    }
    const int numVertices = mesh->getNumVertices();
    const int numTriangles = mesh->getNumTriangles();
    const bool normalsStored = mesh->getNormalsAttr() != nullptr && !mesh->getNormalsComputed();
    const bool triNormalsStored =
        mesh->getTriangleNormals() != nullptr && !mesh->getTriNormalsComputed();
    const SequenceCounts sequences[detail::sequenceKindCount] = {
        {&mesh->getTriStrips(), mesh->getNumTriStrips(), mesh->getNumTriStripPoints()},
        {&mesh->getTriFans(), mesh->getNumTriFans(), mesh->getNumTriFanPoints()},
        {&mesh->getLineStrips(), mesh->getNumLineStrips(), mesh->getNumLineStripPoints()},
        {&mesh->getPolys(), mesh->getNumPolys(), mesh->getNumPolyPoints()}};

    writeHeader(context, *mesh, writeReferences, normalsStored, triNormalsStored, sequences);

    BlockWriter blocks(context, *mesh, writeReferences);
    const int vertices = channelElements(mesh->getVerticesAttr(), numVertices);
    if (scale != 1.0) {
        blocks.writeScaled(mesh->getVerticesRaw(), vertices, static_cast<float>(scale));
    } else {
        blocks.write(detail::meshVerticesName, mesh->getVerticesRaw(), vertices, 3);
    }
    blocks.write(detail::meshTrianglesName, mesh->getTrianglesRaw(), numTriangles, 3);
    if (normalsStored) {
        blocks.write(detail::meshNormalsName, mesh->getNormalsRaw(),
                     channelElements(mesh->getNormalsAttr(), numVertices), 3);
    }
    blocks.write(detail::meshUVsName, mesh->getUVsRaw(),
                 channelElements(mesh->getUVsAttr(), numVertices), 2);
    blocks.write(detail::meshSTsName, mesh->getSTsRaw(),
                 channelElements(mesh->getSTsAttr(), numVertices), 2);
    blocks.write(detail::meshColoursName, mesh->getColoursRaw(),
                 channelElements(mesh->getColoursAttr(), numVertices), 4);
    if (triNormalsStored) {
        blocks.write(detail::meshTriNormalsName, mesh->getTriangleNormalsRaw(), numTriangles, 3);
    }
    for (int kind = 0; kind < detail::sequenceKindCount; ++kind) {
        const SequenceCounts& counts = sequences[kind];
        if (counts.numSequences == 0) {
            continue;
        }
        const auto arrayFields = [&context, kind](int arrayKind) {
            return [&context, kind, arrayKind](int, int) {
                context.writeInt(kind);
                context.writeInt(arrayKind);
            };
        };
        blocks.write(detail::meshSeqArrayName, counts.sequence->points().elements(),
                     counts.numPoints, 1, arrayFields(detail::pointsArrayKind));
        blocks.write(detail::meshSeqArrayName, counts.sequence->lengths().elements(),
                     counts.numSequences, 1, arrayFields(detail::lengthsArrayKind));
    }
    for (int index = 0; index < mesh->getNumAttributes(); ++index) {
        const MeshAttributes* attribute = mesh->getAttributes(index);
        if (!attribute->needsStorage()) {
            continue;
        }
        const int size = attribute->getDimension();
        blocks.write(detail::meshAttributesName, attribute->asFloat(),
                     channelElements(attribute, numVertices), size,
                     [&context, mesh, attribute, size](int start, int length) {
                         std::fprintf(stderr, "mesh = %p, attrib = %s, start = %d, length = %d\n",
                                      static_cast<const void*>(mesh), attribute->getName().c_str(),
                                      start, length);
                         context.writeString(attribute->getName().view());
                         context.writeInt(size);
                     });
    }
}

void registerTypes(ioPacketRegistry* registry, ReadInterface* reader) {
    if (registry == nullptr) {
        return;
    }
    struct Binding {
        const char* name;
        detail::geomPacket::Reader reader;
    };
    const Binding bindings[] = {
        {detail::meshHeaderName, &ReadInterface::readMesh},
        {detail::meshVerticesName, &ReadInterface::readMeshVertices},
        {detail::meshNormalsName, &ReadInterface::readMeshNormals},
        {detail::meshUVsName, &ReadInterface::readMeshUVs},
        {detail::meshSTsName, &ReadInterface::readMeshSTs},
        {detail::meshColoursName, &ReadInterface::readMeshColours},
        {detail::meshTrianglesName, &ReadInterface::readMeshTriangles},
        {detail::meshTriNormalsName, &ReadInterface::readMeshTriNormals},
        {detail::meshSeqArrayName, &ReadInterface::readMeshSeqArray},
        {detail::meshAttributesName, &ReadInterface::readMeshAttributes},
    };
    for (const Binding& binding : bindings) {
        registry->supportedType(new detail::geomPacket(binding.name, reader, binding.reader));
    }
    TopoMesh::registerTypes(*registry, nullptr, nullptr);
}

void writeViewport(ioWriteContext& context, const Viewport& viewport) {
    double values[6];
    viewport.getOrigin(values[0], values[1]);
    viewport.getSize(values[2], values[3]);
    viewport.getDepthRange(values[4], values[5]);
    context.startSubPacket();
    for (const double value : values) {
        context.writeDouble(value);
    }
    context.endSubPacket();
}

void writeEyeSpaceFrustum(ioWriteContext& context, const EyeSpaceFrustum& frustum) {
    koLinear::Tuple2 leftBottom;
    koLinear::Tuple2 rightTop;
    frustum.getFrame(leftBottom, rightTop);
    context.startSubPacket();
    writeTuple2(context, leftBottom);
    writeTuple2(context, rightTop);
    context.writeDouble(frustum.getNearDist());
    context.writeDouble(frustum.getFarDist());
    context.writeBool(frustum.getOrthographic());
    context.endSubPacket();
}

void writeCamera(ioWriteContext& context, const Camera& camera) {
    Viewport viewport;
    EyeSpaceFrustum frustum;
    koLinear::AffineMatrix worldToEye;
    camera.getViewport(viewport);
    camera.getFrustum(frustum);
    camera.getWorldToEye(worldToEye);
    context.startSubPacket();
    writeViewport(context, viewport);
    writeEyeSpaceFrustum(context, frustum);
    writeAffineMatrix(context, worldToEye);
    context.writeBool(camera.getOpenFrustum());
    context.endSubPacket();
}

} // namespace koGeom::packetFile
