#include "geom/mesh/MeshModification.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace koGeom {
namespace {

// Reads the masks back through the notice's own bit tests, all 32 bits.
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

using Type = MeshModification::Type;

TEST(MeshModification, InitialMasksFollowTheKindOfChange) {
    struct Case {
        Type type;
        std::uint32_t modified, valid;
    };
    for (const Case& c :
         {Case{Type::Transformed, 0x1u, 0xFFFFFBFDu}, Case{Type::TopologyModified, 0x21u, 0x21u},
          Case{Type::AttributesModified, 0u, 0xFFFFFFFFu},
          Case{static_cast<Type>(7), 0u, 0xFFFFFFFFu}}) {
        const Notice notice(nullptr, c.type, nullptr);
        EXPECT_EQ(notice.EntityModification::getType(), EntityModificationType::Mesh);
        EXPECT_EQ(notice.modifiedMask(), c.modified);
        EXPECT_EQ(notice.validMask(), c.valid);
        EXPECT_EQ(notice.areVertexAttribsValid("weights"), c.type != Type::TopologyModified);
    }
}

TEST(MeshModification, SettersMarkChannelsByBitOrByName) {
    Notice notice(nullptr, Type::TopologyModified, nullptr);
    notice.uvsModified();
    notice.coloursValid();
    notice.lineStripsModified();
    notice.triangleNormalsValid();
    // Deliberate: polygons get the modified bit only.
    notice.polysModified();
    EXPECT_EQ(notice.modifiedMask(), 0x21u | 1u << 2 | 1u << 6 | 1u << 9);
    EXPECT_EQ(notice.validMask(), 0x21u | 1u << 2 | 1u << 4 | 1u << 9 | 1u << 10);
    EXPECT_TRUE(notice.arePolysModified() && !notice.areColoursModified());

    // A channel's name stands for its bit: "sts" follows the bit, not the name sets.
    notice.vertexAttribsModified("normals");
    EXPECT_TRUE(notice.areNormalsModified() && notice.areNormalsValid());
    EXPECT_FALSE(notice.areVertexAttribsValid("sts"));
    notice.vertexAttribsValid("sts");
    EXPECT_TRUE(notice.areSTsValid());
    // Other names are matched exactly, case included.
    notice.vertexAttribsValid("weights");
    notice.vertexAttribsModified("Colours");
    EXPECT_TRUE(notice.areVertexAttribsValid("weights"));
    EXPECT_FALSE(notice.areVertexAttribsModified("weights"));
    EXPECT_TRUE(notice.areVertexAttribsValid("Colours"));
    EXPECT_FALSE(notice.areColoursModified());
}

} // namespace
} // namespace koGeom
