#include "tests/support/MeshBuilders.h"

#include <utility>

namespace koGeomTest {

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
    static long calls = 0;
    seen.push_back({++calls, &notice, snapshot_ ? snapshot_(mesh_, notice) : std::string()});
}

} // namespace koGeomTest
