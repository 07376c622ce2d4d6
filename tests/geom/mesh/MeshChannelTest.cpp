#include "geom/mesh/MeshChannel.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

TEST(MeshChannel, NamesSelectTheirChannelsExactly) {
    const char* names[] = {"vertices", "normals", "uvs", "sts", "colours"};
    for (int channel = 0; channel < numMeshChannels; ++channel) {
        EXPECT_EQ(meshChannelIndex(names[channel]), channel);
        EXPECT_EQ(meshChannelName(static_cast<MeshChannel>(channel)),
                  koString::CString(names[channel]));
    }
    for (const char* other : {"Vertices", "", "vertices ", "colors", "uv", "stss", "normal"}) {
        SCOPED_TRACE(other);
        EXPECT_EQ(meshChannelIndex(other), -1);
    }
    EXPECT_EQ(&meshChannelName(MeshChannel::STs), &meshSTsName);
}

} // namespace
} // namespace koGeom
