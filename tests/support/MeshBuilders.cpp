#include "tests/support/MeshBuilders.h"

#include <initializer_list>
#include <utility>

namespace koGeomTest {

using koGeom::MeshModification;
using Channel = MeshModification::Channel;

namespace {

long nextCall() {
    static long calls = 0;
    return ++calls;
}

// The mask with the bit of each channel whose answer is true.
std::uint32_t maskOf(std::initializer_list<std::pair<Channel, bool>> answers) {
    std::uint32_t mask = 0;
    for (const auto& [channel, set] : answers) {
        mask |= set ? std::uint32_t{1} << static_cast<int>(channel) : 0;
    }
    return mask;
}

std::uint32_t modifiedBits(const MeshModification& mod) {
    return maskOf({{Channel::Vertices, mod.areVerticesModified()},
                   {Channel::Normals, mod.areNormalsModified()},
                   {Channel::UVs, mod.areUVsModified()},
                   {Channel::STs, mod.areSTsModified()},
                   {Channel::Colours, mod.areColoursModified()},
                   {Channel::Triangles, mod.areTrianglesModified()},
                   {Channel::Polys, mod.arePolysModified()},
                   {Channel::StripsAndFans, mod.areStripsAndFansModified()},
                   {Channel::Lines, mod.areLinesModified()},
                   {Channel::LineStrips, mod.areLineStripsModified()},
                   {Channel::TriangleNormals, mod.areTriangleNormalsModified()}});
}

std::uint32_t validBits(const MeshModification& mod) {
    return maskOf({{Channel::Vertices, mod.areVertexAttribsValid(koGeom::meshVerticesName)},
                   {Channel::Normals, mod.areNormalsValid()},
                   {Channel::UVs, mod.areUVsValid()},
                   {Channel::STs, mod.areSTsValid()},
                   {Channel::Colours, mod.areColoursValid()},
                   {Channel::StripsAndFans, mod.areStripsAndFansValid()},
                   {Channel::Lines, mod.areLinesValid()},
                   {Channel::LineStrips, mod.areLineStripsValid()},
                   {Channel::TriangleNormals, mod.areTriangleNormalsValid()}});
}

} // namespace

void fillVertices(koGeom::PointMesh& mesh, const std::vector<koGeom::MeshVertex>& vertices) {
    mesh.copyVertices(static_cast<int>(vertices.size()), vertices.data());
}

std::string channelNames(const koGeom::PointMesh& mesh) {
    std::string names;
    for (int i = 0; i < mesh.getNumAttributes(); ++i) {
        names += (i == 0 ? "" : ",");
        names += mesh.getAttributes(i)->getName().view();
    }
    return names;
}

NoticeRecorder::NoticeRecorder(koGeom::PointMesh& mesh, Snapshot snapshot)
    : mesh_(mesh), snapshot_(std::move(snapshot)) {
    mesh.modifiedSignal.connect(*this, &NoticeRecorder::onModified);
}

void NoticeRecorder::onModified(koGeom::EntityModification& notice) {
    Seen entry{nextCall(), &notice, notice.getType(), false, {}, 0, 0, {}};
    if (const auto* mod = dynamic_cast<const MeshModification*>(&notice)) {
        entry.isMeshNotice = true;
        entry.meshType = mod->getType();
        entry.modified = modifiedBits(*mod);
        entry.valid = validBits(*mod);
    }
    if (snapshot_) {
        entry.snapshot = snapshot_(mesh_, notice);
    }
    seen.push_back(std::move(entry));
}

} // namespace koGeomTest
