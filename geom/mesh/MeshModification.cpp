#include "geom/mesh/MeshModification.h"

namespace koGeom {

namespace {

using Type = MeshModification::Type;
using Channel = MeshModification::Channel;

static_assert(static_cast<int>(Channel::Colours) == static_cast<int>(MeshChannel::Colours) &&
                  numMeshChannels == 5,
              "the first mask bits are the vertex channels");

constexpr std::uint32_t channelBit(Channel channel) {
    return std::uint32_t{1} << static_cast<int>(channel);
}

constexpr std::uint32_t initialModifiedMask(Type type) {
    switch (type) {
        case Type::Transformed:
            return channelBit(Channel::Vertices);
        case Type::TopologyModified:
            return channelBit(Channel::Vertices) | channelBit(Channel::Triangles);
        default:
            return 0;
    }
}

// After a transformation only the normals follow the positions; after a topology change
// every other channel must be declared valid by the sender.
constexpr std::uint32_t initialValidMask(Type type) {
    switch (type) {
        case Type::Transformed:
            return ~(channelBit(Channel::Normals) | channelBit(Channel::TriangleNormals));
        case Type::TopologyModified:
            return channelBit(Channel::Vertices) | channelBit(Channel::Triangles);
        default:
            return ~std::uint32_t{0};
    }
}

Channel noticeChannel(MeshChannel channel) { return static_cast<Channel>(channel); }

} // namespace

MeshModification::MeshModification(const Entity* mesh, Type type, MeshRemap* remap)
    : EntityModification(mesh, EntityModificationType::Mesh),
      type_(type),
      modifiedMask_(initialModifiedMask(type)),
      validMask_(initialValidMask(type)),
      allAttribsValid_(type != Type::TopologyModified),
      meshRemap_(remap) {}

MeshModification::MeshModification(const MeshModification& other) = default;

MeshModification::~MeshModification() = default;

void MeshModification::polysModified() noexcept {
    // Deliberate: the modified bit only; polygons have no valid counterpart, and listeners
    // test them by arePolysModified alone.
    modifiedMask_ |= bit(Channel::Polys);
}

bool MeshModification::channelFromName(const koString::CString& name,
                                       MeshChannel& channel) noexcept {
    const int index = meshChannelIndex(name);
    if (index < 0) {
        return false;
    }
    channel = static_cast<MeshChannel>(index);
    return true;
}

void MeshModification::vertexAttribsModified(const koString::CString& name) {
    MeshChannel channel;
    if (channelFromName(name, channel)) {
        setModified(noticeChannel(channel));
        return;
    }
    modifiedAttribs_.insert(name);
    validAttribs_.insert(name);
}

void MeshModification::vertexAttribsValid(const koString::CString& name) {
    MeshChannel channel;
    if (channelFromName(name, channel)) {
        setValid(noticeChannel(channel));
        return;
    }
    validAttribs_.insert(name);
}

bool MeshModification::areVertexAttribsModified(const koString::CString& name) const noexcept {
    MeshChannel channel;
    if (channelFromName(name, channel)) {
        return isModified(noticeChannel(channel));
    }
    return modifiedAttribs_.contains(name);
}

bool MeshModification::areVertexAttribsValid(const koString::CString& name) const noexcept {
    MeshChannel channel;
    if (channelFromName(name, channel)) {
        return isValid(noticeChannel(channel));
    }
    return allAttribsValid_ || validAttribs_.contains(name);
}

} // namespace koGeom
