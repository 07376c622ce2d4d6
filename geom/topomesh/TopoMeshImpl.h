#pragma once

#include <cstdint>

#include "tessar/core/Containers.h"
#include "tessar/core/Reference.h"
#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMeshAlloc.h"
#include "geom/topomesh/TopoMeshEntity.h"
#include "geom/topomesh/TopoMeshHandles.h"
#include "geom/topomesh/TopoMeshHeader.h"
#include "geom/topomesh/TopoMeshState.h"
#include "geom/topomesh/TopoMeshTypedefs.h"

namespace koGeom {

namespace detail {
class TopoMeshRecorder;
}

/// The body of a `TopoMesh`: its allocator, its three record lists with their counts, and
/// its change recorder while transactions are enabled. Editing code works here; `TopoMesh`
/// forwards to it.
///
/// **The recording rule.** While a recorder is present (`isRecording()`), every change to a
/// record must be reported before it is made, so that the mesh can later be brought back to a
/// saved state by swapping record bytes:
/// - Before writing any field of an existing record (a link, a point, an extra field of a
///   derived record), call `recordModified` with it. Only the first report of a record
///   between two saved states costs anything beyond a hash lookup: it copies the record.
/// - Create records only with `allocVertex`, `allocEdgeRecord` and `allocFaceRecord`: they
///   report the new record as created and the list neighbour they link it to as modified.
///   A new record may then be written freely (reporting it again is harmless).
/// - Delete records only with `freeVertexRecord`, `freeEdgeRecord` and `freeFaceRecord`:
///   they report the list neighbours as modified and the record as deleted. Links that other
///   records hold to the one going (a twin, a first edge, a face) are the caller's to change,
///   reported like any other change; a field of the freed record itself needs no report
///   unless it is written before the free. Never read a record after freeing it: one created
///   since the last saved state goes straight back to the allocator even while recording.
/// - The list heads, tails and counts are not reported: each saved state keeps a copy.
/// With no recorder every report is a test of one pointer, and freed records go straight
/// back to the allocator; with one, freed records stay out (the saved states may need them)
/// until the states that refer to them are discarded.
class FORMWORK_EXPORT TopoMeshImpl {
public:
    using EntityType = TopoMeshTypedefs::EntityType;
    using BulletinType = TopoMeshTypedefs::BulletinType;

    /// Empty lists, no recorder; the body owns `allocator`, which must not be null.
    explicit TopoMeshImpl(TopoMeshAlloc* allocator) noexcept : allocator_(allocator) {}
    /// Deletes the recorder and its saved states, clears the lists, then deletes the
    /// allocator, which takes every record with it.
    ~TopoMeshImpl();

    TopoMeshImpl(const TopoMeshImpl&) = delete;
    TopoMeshImpl& operator=(const TopoMeshImpl&) = delete;

    /// \name Lists and counts
    /// @{
    TopoMeshAlloc* allocator() const noexcept { return allocator_; }
    const TopoMeshHeader& header() const noexcept { return header_; }
    TopoMeshHeader& header() noexcept { return header_; }

    TopoMeshVertex firstVertex() const noexcept { return header_.firstVertex; }
    TopoMeshVertex lastVertex() const noexcept { return header_.lastVertex; }
    TopoMeshEdge firstEdge() const noexcept { return header_.firstEdge; }
    TopoMeshEdge lastEdge() const noexcept { return header_.lastEdge; }
    TopoMeshFace firstFace() const noexcept { return header_.firstFace; }
    TopoMeshFace lastFace() const noexcept { return header_.lastFace; }
    int numVertices() const noexcept { return header_.numVertices; }
    /// Half-edges.
    int numEdges() const noexcept { return header_.numEdges; }
    int numFaces() const noexcept { return header_.numFaces; }
    /// @}

    /// \name Recording
    /// Reports of one record to the recorder (see the recording rule above); each does
    /// nothing while transactions are off or when the entity's pointer is null. A report
    /// costs a hash lookup, and the first `recordModified` of a record since the last saved
    /// state a record copy from the allocator.
    /// @{
    bool isRecording() const noexcept { return recorder_ != nullptr; }
    void recordCreated(TopoMeshEntity entity) { report(entity, BulletinType::Created); }
    void recordModified(TopoMeshEntity entity) { report(entity, BulletinType::Modified); }
    void recordDeleted(TopoMeshEntity entity) { report(entity, BulletinType::Deleted); }
    /// @}

    /// \name Creating and freeing records
    /// O(1) each, apart from the reports.
    /// @{

    /// A new isolated vertex at the origin, appended to the vertex list.
    TopoMeshVertex allocVertex();
    /// A new isolated vertex at `point`, appended to the vertex list.
    TopoMeshVertex allocVertex(const koLinear::Point& point);
    /// A new half-edge with null vertex, next, prev, twin and face, appended to the edge list
    /// and counted.
    TopoMeshEdge allocEdgeRecord();
    /// A new face with a null first edge, appended to the face list and counted.
    TopoMeshFace allocFaceRecord();

    /// Unlink the record from its list, report it deleted, uncount it and give it back to the
    /// allocator, unless a saved state may still need it (transactions are enabled and the
    /// record existed at the last saved state). Links that other records hold to it are the
    /// caller's to change; handles to it dangle.
    void freeVertexRecord(TopoMeshVertex vertex);
    void freeEdgeRecord(TopoMeshEdge edge);
    void freeFaceRecord(TopoMeshFace face);
    /// @}

    /// \name Editing
    /// The editing operations of `TopoMesh`, which forwards to them; see there for each
    /// contract. Each reports every record it creates, changes or frees before touching it.
    /// @{
    TopoMeshFace allocTriangle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c);
    TopoMeshFace allocQuad(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d);
    TopoMeshFace allocFace(const ko::vector<TopoMeshVertex>& vertices);
    static TopoMeshEdge findEdge(TopoMeshVertex from, TopoMeshVertex to) noexcept;
    static TopoMeshFace findFace(TopoMeshEdge e1, TopoMeshEdge e2) noexcept;
    void setTwins(TopoMeshEdge e1, TopoMeshEdge e2);
    void setFirstEdge(TopoMeshVertex vertex, TopoMeshEdge edge);
    void setPoint(TopoMeshVertex vertex, const koLinear::Point& point);
    void deleteFace(TopoMeshFace face);
    bool deleteEdge(TopoMeshEdge edge);
    TopoMeshFace deleteVertex(TopoMeshVertex vertex);
    TopoMeshVertex contractEdge(TopoMeshEdge edge);
    void splitEdge(TopoMeshEdge edge);
    TopoMeshVertex splitVertex(TopoMeshVertex vertex, TopoMeshEdge edge);
    TopoMeshVertex splitVertex(TopoMeshEdge into, TopoMeshEdge outOf);
    void splitFace(TopoMeshEdge e1, TopoMeshEdge e2);
    TopoMeshVertex subdivideEdge(TopoMeshEdge edge, const koLinear::Point& point);
    TopoMeshVertex subdivideFace(TopoMeshFace face, const koLinear::Point& point);
    TopoMeshEdge subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to);
    TopoMeshVertex subdivideFace(TopoMeshFace face, TopoMeshEdge edge,
                                 const koLinear::Point& point);
    TopoMeshFace subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to,
                               const ko::vector<koLinear::Point>& points,
                               ko::vector<TopoMeshVertex>& newVertices);
    bool swapEdge(TopoMeshEdge edge);
    void mergeVertices(TopoMeshEdge e1, TopoMeshEdge e2);
    void mergeFaces(TopoMeshEdge e1, TopoMeshEdge e2);
    void deleteFaces(const ko::unordered_set<TopoMeshFace>& faces,
                     const ko::vector<TopoMeshEdge>& border);
    void deleteValenceTwoVertex(TopoMeshVertex vertex);
    /// @}

    /// \name Transactions
    /// See `TopoMesh`, which forwards here.
    /// @{
    void enableTransactions();
    ko::Reference<TopoMeshState> createState();
    void setState(const ko::Reference<TopoMeshState>& state);
    int getChanges(ko::unordered_map<TopoMeshEntity, BulletinType>& changes) const;
    /// @}

private:
    // The loop of a new face over `count` vertices: the face, then one half-edge per vertex
    // in order, linked, each vertex without a first edge given its half-edge, then each
    // half-edge paired with an unpaired one running the other way.
    TopoMeshFace allocLoop(const TopoMeshVertex* vertices, std::size_t count);

    // Reports `record` as modified; the short form used before every write.
    void touch(TopoMeshVertexData* record) { recordModified(TopoMeshVertex(record)); }
    void touch(TopoMeshEdgeData* record) { recordModified(TopoMeshEdge(record)); }
    void touch(TopoMeshFaceData* record) { recordModified(TopoMeshFace(record)); }

    // Writes one link of an existing record, reporting the record first.
    template <class Record, class Link>
    void setLink(Record* record, Link* Record::*field, Link* value);
    void setTwinLinks(TopoMeshEdgeData* e1, TopoMeshEdgeData* e2);
    void setOrigin(TopoMeshEdgeData* edge, TopoMeshVertexData* vertex);
    void setFace(TopoMeshEdgeData* edge, TopoMeshFaceData* face);
    void setVertexEdge(TopoMeshVertexData* vertex, TopoMeshEdgeData* edge);
    void setFaceEdge(TopoMeshFaceData* face, TopoMeshEdgeData* edge);
    // Closes the loop e -> a -> b -> e around `face`: e is an existing half-edge (reported
    // first), a and b are new ones.
    void linkTriangle(TopoMeshEdgeData* e, TopoMeshEdgeData* a, TopoMeshEdgeData* b,
                      TopoMeshFaceData* face);
    // For a half-edge about to go: when its origin's first edge is it, the first other
    // half-edge of the origin's fan that does not lie on `going` (a face about to go), or null.
    void repairFirstEdge(TopoMeshEdgeData* edge, const TopoMeshFaceData* going = nullptr);
    // Gives every half-edge of `vertex`'s fan the origin `vertex`.
    void reassignOrigins(TopoMeshVertexData* vertex);
    // Sets the face of every half-edge from `from`, following next, up to (not including)
    // `until`.
    void setLoopFace(TopoMeshEdgeData* from, const TopoMeshEdgeData* until, TopoMeshFaceData* face);
    // A new half-edge inserted after `edge` in its face, from `vertex`.
    TopoMeshEdgeData* insertAfter(TopoMeshEdgeData* edge, TopoMeshVertexData* vertex);

    void report(TopoMeshEntity entity, BulletinType bulletin) {
        if (recorder_ != nullptr && entity.data() != nullptr) {
            recordChange(entity, bulletin);
        }
    }
    void recordChange(TopoMeshEntity entity, BulletinType bulletin);

    template <class Data>
    void append(Data* record, Data*& head, Data*& tail, EntityType type);
    template <class Data>
    void release(Data* record, Data*& head, Data*& tail, std::int32_t& count, EntityType type,
                 void (TopoMeshAlloc::*giveBack)(Data*) noexcept);

    TopoMeshAlloc* allocator_;
    TopoMeshHeader header_;
    detail::TopoMeshRecorder* recorder_ = nullptr;
};

} // namespace koGeom
