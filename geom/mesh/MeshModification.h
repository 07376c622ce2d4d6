#pragma once

#include <cstdint>

#include "geom/FormworkExport.h"
#include "geom/entity/EntityModification.h"
#include "geom/mesh/MeshChannel.h"
#include "tessar/core/Containers.h"
#include "tessar/string/CString.h"

namespace koGeom {

class MeshRemap;

/// The notice a mesh sends when it changed: what kind of change, which data channels were
/// modified, which channels (and named vertex attributes) a listener may keep, and the
/// renumbering of the elements, if any. Its entity type is `Mesh`.
///
/// Each channel is one bit of two masks. A channel set modified is valid as well: the sender
/// has already brought it up to date. A channel set valid only means the listener's own data
/// for it may be kept. The sender builds the notice on its stack, fills it with the setters
/// and passes it to the mesh's `modified`; listeners read it during the broadcast.
class FORMWORK_EXPORT MeshModification : public EntityModification {
public:
    /// What kind of change happened.
    enum class Type : std::int32_t {
        /// Vertex positions were moved by a transformation; topology and attributes stand.
        Transformed = 0,
        /// Vertices and triangles were added, removed or renumbered.
        TopologyModified = 1,
        /// Attribute data changed; positions and topology stand.
        AttributesModified = 2,
    };

    /// The bit of each channel in the masks: the five vertex channels (`MeshChannel`), then
    /// the primitive and derived data of a mesh.
    enum class Channel : std::int32_t {
        Vertices = 0,
        Normals = 1,
        UVs = 2,
        STs = 3,
        Colours = 4,
        Triangles = 5,
        Polys = 6,
        StripsAndFans = 7,
        Lines = 8,
        LineStrips = 9,
        TriangleNormals = 10,
    };

    /// A notice from `mesh` (a point mesh or one derived from it). `remap` is not owned and
    /// may be null. The masks start by type:
    /// - `Transformed`: vertices modified; everything valid but normals and triangle normals;
    ///   every named attribute valid.
    /// - `TopologyModified`: vertices and triangles modified and valid, nothing else; no
    ///   named attribute valid until declared so.
    /// - `AttributesModified` (or any other value): nothing modified; everything valid,
    ///   named attributes included, until the sender sets what it modified.
    MeshModification(const Entity* mesh, Type type, MeshRemap* remap);
    /// Copies everything, the name sets deeply and the renumbering as a pointer.
    MeshModification(const MeshModification& other);
    ~MeshModification() override;

    /// Hides the entity notice's `getType()`, which is always `Mesh` here.
    Type getType() const noexcept { return type_; }
    /// Null when no renumbering took place.
    MeshRemap* getMeshRemap() const noexcept { return meshRemap_; }

    /// \name Kind of change
    /// @{
    bool transformed() const noexcept { return type_ == Type::Transformed; }
    bool areVerticesTransformed() const noexcept { return transformed(); }
    bool topologyModified() const noexcept { return type_ == Type::TopologyModified; }
    bool attributesModified() const noexcept { return type_ == Type::AttributesModified; }
    /// @}

    /// \name Declaring channels
    /// Each `…Modified` sets the channel modified and valid; each `…Valid` sets it valid.
    /// @{
    void normalsModified() noexcept { setModified(Channel::Normals); }
    void normalsValid() noexcept { setValid(Channel::Normals); }
    void uvsModified() noexcept { setModified(Channel::UVs); }
    void uvsValid() noexcept { setValid(Channel::UVs); }
    void stsModified() noexcept { setModified(Channel::STs); }
    void stsValid() noexcept { setValid(Channel::STs); }
    void coloursModified() noexcept { setModified(Channel::Colours); }
    void coloursValid() noexcept { setValid(Channel::Colours); }
    /// Sets only the modified bit: polygons have no valid counterpart.
    void polysModified() noexcept;
    void stripsAndFansModified() noexcept { setModified(Channel::StripsAndFans); }
    void stripsAndFansValid() noexcept { setValid(Channel::StripsAndFans); }
    void linesModified() noexcept { setModified(Channel::Lines); }
    void linesValid() noexcept { setValid(Channel::Lines); }
    void lineStripsModified() noexcept { setModified(Channel::LineStrips); }
    void lineStripsValid() noexcept { setValid(Channel::LineStrips); }
    void triangleNormalsModified() noexcept { setModified(Channel::TriangleNormals); }
    void triangleNormalsValid() noexcept { setValid(Channel::TriangleNormals); }
    /// @}

    /// \name Channel queries
    /// @{
    bool areVerticesModified() const noexcept { return isModified(Channel::Vertices); }
    bool areNormalsModified() const noexcept { return isModified(Channel::Normals); }
    bool areNormalsValid() const noexcept { return isValid(Channel::Normals); }
    bool areUVsModified() const noexcept { return isModified(Channel::UVs); }
    bool areUVsValid() const noexcept { return isValid(Channel::UVs); }
    bool areSTsModified() const noexcept { return isModified(Channel::STs); }
    bool areSTsValid() const noexcept { return isValid(Channel::STs); }
    bool areColoursModified() const noexcept { return isModified(Channel::Colours); }
    bool areColoursValid() const noexcept { return isValid(Channel::Colours); }
    bool areTrianglesModified() const noexcept { return isModified(Channel::Triangles); }
    bool arePolysModified() const noexcept { return isModified(Channel::Polys); }
    bool areStripsAndFansModified() const noexcept { return isModified(Channel::StripsAndFans); }
    bool areStripsAndFansValid() const noexcept { return isValid(Channel::StripsAndFans); }
    bool areLinesModified() const noexcept { return isModified(Channel::Lines); }
    bool areLinesValid() const noexcept { return isValid(Channel::Lines); }
    bool areLineStripsModified() const noexcept { return isModified(Channel::LineStrips); }
    bool areLineStripsValid() const noexcept { return isValid(Channel::LineStrips); }
    bool areTriangleNormalsModified() const noexcept {
        return isModified(Channel::TriangleNormals);
    }
    bool areTriangleNormalsValid() const noexcept { return isValid(Channel::TriangleNormals); }
    /// @}

    /// \name Named vertex attributes
    /// A name that selects a vertex channel ("vertices", "normals", "uvs", "sts", "colours",
    /// exactly) stands for that channel's bit; any other name is kept in the notice's name
    /// sets. O(log names) each.
    /// @{
    /// Sets the attribute modified and valid.
    void vertexAttribsModified(const koString::CString& name);
    void vertexAttribsValid(const koString::CString& name);
    bool areVertexAttribsModified(const koString::CString& name) const noexcept;
    /// For a name that is not a channel: true when every named attribute is valid (after a
    /// transformation or an attribute change) or this one was declared valid or modified.
    bool areVertexAttribsValid(const koString::CString& name) const noexcept;
    /// @}

protected:
    /// The vertex channel that `name` selects; false when it selects none.
    static bool channelFromName(const koString::CString& name, MeshChannel& channel) noexcept;

    /// \name Mask bits
    /// A channel's bit is 1 shifted left by its value modulo 32.
    /// @{
    bool isModified(Channel channel) const noexcept { return (modifiedMask_ & bit(channel)) != 0; }
    bool isValid(Channel channel) const noexcept { return (validMask_ & bit(channel)) != 0; }
    /// Sets the channel modified and valid.
    void setModified(Channel channel) noexcept {
        // Deliberate: a modified channel is valid too; the sender has already brought it up
        // to date, and listeners that only test validity keep it.
        modifiedMask_ |= bit(channel);
        validMask_ |= bit(channel);
    }
    void setValid(Channel channel) noexcept { validMask_ |= bit(channel); }
    /// @}

private:
    static std::uint32_t bit(Channel channel) noexcept {
        return std::uint32_t{1} << (static_cast<std::uint32_t>(channel) & 31u);
    }

    Type type_;
    std::uint32_t modifiedMask_;
    std::uint32_t validMask_;
    ko::set<koString::CString> modifiedAttribs_;
    bool allAttribsValid_;
    ko::set<koString::CString> validAttribs_;
    MeshRemap* meshRemap_;
};

} // namespace koGeom
