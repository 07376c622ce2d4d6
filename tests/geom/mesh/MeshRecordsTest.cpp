#include "geom/mesh/MeshRecords.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "geom/mesh/MeshIndexRecords.h"
#include "tessar/linear/Normal.h"

namespace koGeom {
namespace {

TEST(MeshRecords, NarrowingRoundsToNearestAndWideningIsExact) {
    // The float nearest 0.1 comes back as itself, not as 0.1.
    MeshVertex vertex;
    const double tenth[3] = {0.1, -0.1, 1e30};
    vertex.set(tenth);
    EXPECT_EQ(vertex.asPoint(), koLinear::Point(0.1f, -0.1f, 1e30f));
    // Just above the midpoint between 1 + 2^-23 and 1 + 2^-22: nearest is the upper float,
    // where truncation would keep the lower one. At the exact midpoint between 1 and
    // 1 + 2^-23, ties go to the even float, 1.
    const double aboveMidpoint = 1.0 + std::ldexp(1.0, -23) + std::ldexp(1.0, -24) + 1e-12;
    const double tie = 1.0 + std::ldexp(1.0, -24);
    const double inputs[3] = {aboveMidpoint, tie, -aboveMidpoint};
    const float upper = 1.0f + std::ldexp(1.0f, -22);
    MeshNormal normal;
    normal.set(inputs);
    EXPECT_EQ(normal, (MeshNormal{upper, 1.0f, -upper}));
    MeshUV uv;
    uv.set(aboveMidpoint, tie);
    EXPECT_EQ(uv, (MeshUV{upper, 1.0f}));
    uv.set(inputs + 1);
    EXPECT_EQ(uv, (MeshUV{1.0f, -upper}));
}

TEST(MeshRecords, ConversionsAndLayoutKeepComponentOrder) {
    MeshNormal normal;
    normal = koLinear::VectorFlt(4.0f, 5.0f, 6.0f);
    EXPECT_EQ(normal.asVector(), koLinear::Vector(4, 5, 6));
    const float rgba[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    MeshColour colour;
    colour.set(rgba);
    EXPECT_EQ(colour, MeshColour(0.1f, 0.2f, 0.3f, 0.4f));
    // Arrays of records are exactly their floats or indices, back to back.
    static_assert(sizeof(MeshFloat4[2]) == 8 * sizeof(float) && sizeof(MeshVertex) == 12);
    const int indices[6] = {0, 1, 2, 2, 1, 3};
    MeshLine lines[3];
    static_assert(sizeof(lines) == sizeof(indices) && sizeof(MeshTriangle[2]) == sizeof(indices));
    std::memcpy(lines, indices, sizeof(indices));
    EXPECT_EQ(lines[2], (MeshLine{{1, 3}}));
}

} // namespace
} // namespace koGeom
