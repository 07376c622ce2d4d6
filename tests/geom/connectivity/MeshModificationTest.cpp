#include "geom/connectivity/MeshModification.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "geom/connectivity/MeshRemap.h"
#include "geom/entity/Entity.h"

namespace koGeom {
namespace {

class Mesh : public Entity {};

// Reads the masks back bit by bit through the notice's own bit tests.
class Notice : public MeshModification {
public:
    using MeshModification::MeshModification;

    std::uint32_t modifiedMask() const { return mask(&Notice::isModified); }
    std::uint32_t validMask() const { return mask(&Notice::isValid); }

private:
    std::uint32_t mask(bool (MeshModification::*test)(Channel) const noexcept) const {
        std::uint32_t bits = 0;
        for (int c = 0; c < 32; ++c) {
            bits |= (this->*test)(static_cast<Channel>(c)) ? std::uint32_t{1} << c : 0;
        }
        return bits;
    }
};

TEST(MeshModification, InitialMasksFollowTheKindOfChange) {
    const Mesh mesh;
    Notice moved(&mesh, MeshModification::Type::Transformed, nullptr);
    EXPECT_EQ(moved.EntityModification::getType(), EntityModificationType::Mesh);
    EXPECT_EQ(moved.getEntity(), &mesh);
    EXPECT_TRUE(moved.isRoot());
    EXPECT_TRUE(moved.transformed());
    EXPECT_TRUE(moved.areVerticesTransformed());
    EXPECT_FALSE(moved.topologyModified());
    EXPECT_EQ(moved.modifiedMask(), 0x1u);
    EXPECT_EQ(moved.validMask(), 0xFFFFFBFDu);
    EXPECT_TRUE(moved.areVerticesModified());
    EXPECT_FALSE(moved.areNormalsValid());
    EXPECT_FALSE(moved.areTriangleNormalsValid());
    EXPECT_TRUE(moved.areUVsValid() && moved.areSTsValid() && moved.areColoursValid());
    EXPECT_TRUE(moved.areVertexAttribsValid("weights"));

    Notice rebuilt(&mesh, MeshModification::Type::TopologyModified, nullptr);
    EXPECT_TRUE(rebuilt.topologyModified());
    EXPECT_EQ(rebuilt.modifiedMask(), 0x21u);
    EXPECT_EQ(rebuilt.validMask(), 0x21u);
    EXPECT_TRUE(rebuilt.areTrianglesModified());
    EXPECT_FALSE(rebuilt.areVertexAttribsValid("weights"));

    Notice painted(&mesh, MeshModification::Type::AttributesModified, nullptr);
    EXPECT_TRUE(painted.attributesModified());
    EXPECT_EQ(painted.modifiedMask(), 0u);
    EXPECT_EQ(painted.validMask(), 0xFFFFFFFFu);
    EXPECT_TRUE(painted.areVertexAttribsValid("weights"));
    Notice other(&mesh, static_cast<MeshModification::Type>(7), nullptr);
    EXPECT_EQ(other.modifiedMask(), 0u);
    EXPECT_EQ(other.validMask(), 0xFFFFFFFFu);
}

TEST(MeshModification, SettersMarkTheirChannels) {
    Notice notice(nullptr, MeshModification::Type::TopologyModified, nullptr);
    notice.uvsModified();
    notice.coloursValid();
    notice.lineStripsModified();
    notice.triangleNormalsValid();
    // Deliberate: polygons get the modified bit only.
    notice.polysModified();
    EXPECT_EQ(notice.modifiedMask(), 0x21u | 1u << 2 | 1u << 9 | 1u << 6);
    EXPECT_EQ(notice.validMask(), 0x21u | 1u << 2 | 1u << 4 | 1u << 9 | 1u << 10);
    EXPECT_TRUE(notice.areUVsValid() && notice.areUVsModified());
    EXPECT_TRUE(notice.areColoursValid() && !notice.areColoursModified());
    EXPECT_TRUE(notice.arePolysModified());
    EXPECT_FALSE(notice.areStripsAndFansModified() || notice.areStripsAndFansValid());
    EXPECT_FALSE(notice.areLinesValid());
}

TEST(MeshModification, NamedAttributesUseChannelBitsOrNameSets) {
    Notice notice(nullptr, MeshModification::Type::TopologyModified, nullptr);
    // A channel name stands for its bit and leaves the name sets empty.
    notice.vertexAttribsModified("colours");
    EXPECT_TRUE(notice.areColoursModified() && notice.areColoursValid());
    EXPECT_TRUE(notice.areVertexAttribsModified("colours"));
    notice.vertexAttribsValid("uvs");
    EXPECT_TRUE(notice.areUVsValid());
    EXPECT_FALSE(notice.areVertexAttribsValid("normals"));
    EXPECT_EQ(notice.modifiedMask(), 0x21u | 1u << 4);

    // Other names are matched exactly, case included.
    EXPECT_FALSE(notice.areVertexAttribsValid("weights"));
    notice.vertexAttribsValid("weights");
    notice.vertexAttribsModified("Colours");
    EXPECT_TRUE(notice.areVertexAttribsValid("weights"));
    EXPECT_FALSE(notice.areVertexAttribsModified("weights"));
    EXPECT_TRUE(notice.areVertexAttribsModified("Colours"));
    EXPECT_TRUE(notice.areVertexAttribsValid("Colours"));
    EXPECT_FALSE(notice.areVertexAttribsValid("colour"));

    // A copy has its own name sets and shares the renumbering.
    MeshRemap remap(nullptr, nullptr);
    Notice renumbered(nullptr, MeshModification::Type::TopologyModified, &remap);
    renumbered.vertexAttribsModified("weights");
    const MeshModification copy(renumbered);
    renumbered.vertexAttribsModified("heat");
    EXPECT_EQ(copy.getMeshRemap(), &remap);
    EXPECT_EQ(copy.getType(), MeshModification::Type::TopologyModified);
    EXPECT_TRUE(copy.areVertexAttribsModified("weights"));
    EXPECT_FALSE(copy.areVertexAttribsValid("heat"));
}

} // namespace
} // namespace koGeom
