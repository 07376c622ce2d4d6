#include "geom/mesh/MeshChannel.h"

namespace koGeom {

const koString::CString meshVerticesName("vertices");
const koString::CString meshNormalsName("normals");
const koString::CString meshUVsName("uvs");
const koString::CString meshSTsName("sts");
const koString::CString meshColoursName("colours");

namespace {
// In channel order: the lookup tests the names in this order.
const koString::CString* const channelNames[numMeshChannels] = {
    &meshVerticesName, &meshNormalsName, &meshUVsName, &meshSTsName, &meshColoursName};
} // namespace

const koString::CString& meshChannelName(MeshChannel channel) noexcept {
    return *channelNames[static_cast<int>(channel)];
}

int meshChannelIndex(const koString::CString& name) noexcept {
    for (int channel = 0; channel < numMeshChannels; ++channel) {
        if (name == *channelNames[channel]) {
            return channel;
        }
    }
    return -1;
}

} // namespace koGeom
