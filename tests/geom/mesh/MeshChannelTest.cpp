#include "geom/mesh/MeshChannel.h"

#include <gtest/gtest.h>

namespace koGeom {
namespace {

TEST(MeshChannel, NamesSelectTheirChannelsExactly) {
    EXPECT_EQ(meshChannelIndex("vertices"), 0);
    EXPECT_EQ(meshChannelIndex("normals"), 1);
    EXPECT_EQ(meshChannelIndex("uvs"), 2);
    EXPECT_EQ(meshChannelIndex("sts"), 3);
    EXPECT_EQ(meshChannelIndex("colours"), 4);
    for (const char* other : {"Vertices", "", "vertices ", "colors", "uv", "stss", "normal"}) {
        SCOPED_TRACE(other);
        EXPECT_EQ(meshChannelIndex(other), -1);
    }
    for (int channel = 0; channel < numMeshChannels; ++channel) {
        EXPECT_EQ(meshChannelIndex(meshChannelName(static_cast<MeshChannel>(channel))), channel);
    }
    EXPECT_EQ(meshColoursName, koString::CString("colours"));
    EXPECT_EQ(&meshChannelName(MeshChannel::STs), &meshSTsName);
}

} // namespace
} // namespace koGeom
