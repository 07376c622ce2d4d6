#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tessar/rtb/SignalClient.h"

#include "geom/entity/EntityModification.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/mesh/PointMesh.h"

namespace koGeomTest {

/// Gives `mesh` exactly these vertices through `copyVertices`; an empty list leaves it
/// without channels.
void fillVertices(koGeom::PointMesh& mesh, const std::vector<koGeom::MeshVertex>& vertices);

/// The mesh's channel names in list order, separated by commas: "vertices,normals".
std::string channelNames(const koGeom::PointMesh& mesh);

/// A listener on a mesh's `modifiedSignal` that records, for each notice, its address, the
/// call's number in one process-wide sequence (so tests can tell the order listeners ran in)
/// and what the snapshot function reads from the mesh and the notice then. Destroying the
/// recorder disconnects it; `mesh` must outlive it.
class NoticeRecorder : public koRTB::SignalClient {
public:
    using Snapshot =
        std::function<std::string(const koGeom::PointMesh&, const koGeom::EntityModification&)>;
    struct Seen {
        long call;
        const koGeom::EntityModification* notice;
        std::string snapshot;
    };

    explicit NoticeRecorder(koGeom::PointMesh& mesh, Snapshot snapshot = {});
    NoticeRecorder(const NoticeRecorder&) = delete;
    NoticeRecorder& operator=(const NoticeRecorder&) = delete;

    std::vector<Seen> seen;

private:
    void onModified(koGeom::EntityModification& notice);

    const koGeom::PointMesh& mesh_;
    Snapshot snapshot_;
};

} // namespace koGeomTest
