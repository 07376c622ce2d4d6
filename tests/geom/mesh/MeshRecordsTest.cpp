#include "geom/mesh/MeshRecords.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "geom/mesh/MeshIndexRecords.h"
#include "tessar/linear/Normal.h"

namespace koGeom {
namespace {

TEST(MeshRecords, NarrowingRoundsToNearestAndWideningIsExact) {
    MeshVertex vertex;
    const double tenth[3] = {0.1, -0.1, 1e30};
    vertex.set(tenth);
    EXPECT_EQ(vertex.x, 0.1f);
    EXPECT_EQ(vertex.y, -0.1f);
    // The float nearest 0.1 comes back as itself, not as 0.1.
    const koLinear::Point point = vertex.asPoint();
    EXPECT_EQ(point.x, static_cast<double>(0.1f));
    EXPECT_NE(point.x, 0.1);

    // Just above the midpoint between 1 + 2^-23 and 1 + 2^-22: nearest is the upper float,
    // where truncation would keep the lower one. At the exact midpoint between 1 and
    // 1 + 2^-23, ties go to the even float, 1.
    const double aboveMidpoint = 1.0 + std::ldexp(1.0, -23) + std::ldexp(1.0, -24) + 1e-12;
    const double tie = 1.0 + std::ldexp(1.0, -24);
    const double inputs[3] = {aboveMidpoint, tie, -aboveMidpoint};
    MeshNormal normal;
    normal.set(inputs);
    EXPECT_EQ(normal.x, 1.0f + std::ldexp(1.0f, -22));
    EXPECT_EQ(normal.y, 1.0f);
    EXPECT_EQ(normal.z, -(1.0f + std::ldexp(1.0f, -22)));

    MeshUV uv;
    uv.set(aboveMidpoint, tie);
    EXPECT_EQ(uv.u, 1.0f + std::ldexp(1.0f, -22));
    EXPECT_EQ(uv.v, 1.0f);
    uv.set(inputs + 1);
    EXPECT_EQ(uv.u, 1.0f);
    EXPECT_EQ(uv.v, -(1.0f + std::ldexp(1.0f, -22)));
}

TEST(MeshRecords, ConversionsKeepComponentOrder) {
    MeshNormal normal;
    normal = koLinear::Normal::unitX();
    EXPECT_EQ(normal, (MeshNormal{1.0f, 0.0f, 0.0f}));
    normal = koLinear::VectorFlt(4.0f, 5.0f, 6.0f);
    EXPECT_EQ(normal.asVector().y, 5.0);
    EXPECT_EQ(normal.asVectorFlt().z, 6.0f);

    MeshVertex vertex{};
    vertex = koLinear::PointFlt(7.0f, 8.0f, 9.0f);
    EXPECT_EQ(vertex, (MeshVertex{7.0f, 8.0f, 9.0f}));
    const float floats[3] = {-1.0f, -2.0f, -3.0f};
    vertex.set(floats);
    EXPECT_EQ(vertex.asPointFlt().x, -1.0f);
    EXPECT_EQ(vertex.asPointFlt().z, -3.0f);

    MeshUV uv{};
    uv = koLinear::Point2Flt(0.25f, 0.75f);
    EXPECT_EQ(uv, (MeshUV{0.25f, 0.75f}));

    const float rgba[4] = {0.1f, 0.2f, 0.3f, 0.4f};
    MeshColour colour;
    colour.set(rgba);
    EXPECT_EQ(colour, MeshColour(0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(colour.a, 0.4f);
    MeshColour copy;
    copy = colour;
    EXPECT_EQ(copy.r, 0.1f);
}

TEST(MeshRecords, ArraysOfRecordsAreExactlyTheirFloats) {
    // A channel of width 3 holds its floats back to back; read as records, element i starts
    // at float 3i, with no gap.
    float channel[9];
    for (int i = 0; i < 9; ++i) {
        channel[i] = static_cast<float>(i);
    }
    MeshVertex vertices[3];
    std::memcpy(vertices, channel, sizeof(channel));
    EXPECT_EQ(vertices[1], (MeshVertex{3.0f, 4.0f, 5.0f}));
    EXPECT_EQ(vertices[2].z, 8.0f);

    MeshFloat4 quads[2];
    static_assert(sizeof(quads) == 8 * sizeof(float));
    std::memcpy(quads, channel, sizeof(quads));
    EXPECT_EQ(quads[1][0], 4.0f);
    EXPECT_EQ(quads[1][3], 7.0f);

    const int indices[6] = {0, 1, 2, 2, 1, 3};
    MeshTriangle triangles[2];
    std::memcpy(triangles, indices, sizeof(indices));
    EXPECT_EQ(triangles[1][0], 2);
    EXPECT_EQ(triangles[1][2], 3);
    MeshLine lines[3];
    std::memcpy(lines, indices, sizeof(indices));
    EXPECT_EQ(lines[2], (MeshLine{{1, 3}}));
}

} // namespace
} // namespace koGeom
