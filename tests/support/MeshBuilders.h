#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tessar/rtb/SignalClient.h"

#include "geom/connectivity/MeshModification.h"
#include "geom/entity/EntityModification.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/mesh/PointMesh.h"

namespace koGeomTest {

/// Gives `mesh` exactly these vertices through `copyVertices`: the "vertices" channel holds
/// them with its range reset, and other channels are resized to match. An empty list leaves
/// the mesh without channels.
void fillVertices(koGeom::PointMesh& mesh, const std::vector<koGeom::MeshVertex>& vertices);

/// The mesh's channel names in list order, separated by commas: "vertices,normals".
std::string channelNames(const koGeom::PointMesh& mesh);

/// A listener on a mesh's `modifiedSignal` that records, for each notice, what it could see
/// at the moment it was called: the notice's kind, its channel bits and whatever the
/// caller's snapshot function reads from the mesh and the notice then. Every call of every
/// recorder takes the next number of one process-wide sequence, so tests can tell the order
/// in which listeners ran. Destroying the recorder disconnects it.
class NoticeRecorder : public koRTB::SignalClient {
public:
    using Snapshot =
        std::function<std::string(const koGeom::PointMesh&, const koGeom::EntityModification&)>;

    struct Seen {
        /// This call's number in the process-wide sequence of recorded calls.
        long call;
        /// The notice's address, for telling notices apart; not to be followed.
        const koGeom::EntityModification* notice;
        koGeom::EntityModificationType entityType;
        /// Whether the notice is a mesh notice; the fields below are read only for one.
        bool isMeshNotice;
        koGeom::MeshModification::Type meshType;
        /// Bit c set when the notice's public query says channel c (`MeshModification::
        /// Channel`) is modified, or valid. Validity has no query for triangles and polys,
        /// whose bits read clear.
        std::uint32_t modified;
        std::uint32_t valid;
        std::string snapshot;
    };

    /// Connects to `mesh`, which must outlive the recorder or be destroyed after it is.
    explicit NoticeRecorder(koGeom::PointMesh& mesh, Snapshot snapshot = {});
    NoticeRecorder(const NoticeRecorder&) = delete;
    NoticeRecorder& operator=(const NoticeRecorder&) = delete;

    /// What each call saw, in the order of the calls.
    std::vector<Seen> seen;

private:
    void onModified(koGeom::EntityModification& notice);

    const koGeom::PointMesh& mesh_;
    Snapshot snapshot_;
};

} // namespace koGeomTest
