#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "tessar/core/Containers.h"
#include "tessar/core/Reference.h"
#include "tessar/linear/Point.h"

#include "geom/FormworkExport.h"
#include "geom/entity/Entity.h"
#include "geom/topomesh/TopoMeshAlloc.h"
#include "geom/topomesh/TopoMeshEntity.h"
#include "geom/topomesh/TopoMeshHandles.h"
#include "geom/topomesh/TopoMeshImpl.h"
#include "geom/topomesh/TopoMeshModification.h"
#include "geom/topomesh/TopoMeshState.h"
#include "geom/topomesh/TopoMeshTypedefs.h"

namespace koGeom {

/// The editable polygon mesh with full topology: vertices, directed half-edges and faces of
/// any number of sides, linked by pointers (see `TopoMeshRecords.h`), so that neighbourhoods
/// are walked in constant time and local edits touch only a few records.
///
/// The mesh owns its body (`getImpl()`), its allocator and, through the allocator's pools,
/// every record; its handles own nothing and dangle once their record is freed. No edit
/// sends a notice by itself: the caller announces its edits through `modified`.
///
/// Transactions. After `enableTransactions()` the mesh records every change its editing
/// operations make (see the recording rule in `TopoMeshImpl`), `createState()` saves the
/// changes since the last saved state as a new state, and `setState` brings the mesh back or
/// forth to any saved state by swapping record contents. The states form a tree: a state
/// saved after going back starts a new branch. While transactions are on, freed records stay
/// out of the allocator for as long as a saved state may need them.
///
/// A mesh is used from one thread at a time.
class FORMWORK_EXPORT TopoMesh : public Entity {
public:
    /// The source-to-copy record maps filled by `copy`, in address order of the source
    /// records: a caller that keeps extra fields in derived records copies them with these.
    struct CopyData {
        std::map<TopoMeshVertex, TopoMeshVertex> vertices;
        std::map<TopoMeshEdge, TopoMeshEdge> edges;
        std::map<TopoMeshFace, TopoMeshFace> faces;
    };

    /// \name Construction, copying and exchange
    /// @{

    /// An empty mesh with an allocator of its own for the three base records.
    TopoMesh();
    /// An empty mesh whose records all come from `allocator`, which the mesh owns from now
    /// on. `allocator` must not be null.
    explicit TopoMesh(TopoMeshAlloc* allocator);
    /// A copy of `other`'s records and links, in the same list order, in pools from
    /// `other`'s allocator's create slot. Transactions are off in the copy. O(n log n).
    TopoMesh(const TopoMesh& other);
    /// Copies `other` as the copy constructor does into a temporary and swaps it in: if an
    /// allocation fails the mesh is left as it was. Keeps this mesh's listeners.
    TopoMesh& operator=(const TopoMesh& other);
    /// Deletes the recorder and saved states, then the allocator with every record.
    ~TopoMesh() override;

    /// Makes this mesh a copy of `source` and fills `copyData` with the record maps (cleared
    /// first). The old records, saved states and allocator are dropped, and the copy always
    /// gets a new default allocator, whatever allocator either mesh had. Copying a mesh into
    /// itself copies its old contents before they are dropped (the maps' keys then name
    /// freed records). O(n log n).
    void copy(const TopoMesh& source, CopyData& copyData);

    /// Exchanges the bodies of the two meshes (records, allocators, recorders and states);
    /// listeners stay. Handles follow their records into the other mesh.
    void swap(TopoMesh& other) noexcept;
    /// @}

    TopoMeshImpl* getImpl() noexcept { return impl_.get(); }
    const TopoMeshImpl* getImpl() const noexcept { return impl_.get(); }

    /// \name Lists and counts
    /// Each list is walked from its head by `nextInMesh()` until a null handle.
    /// @{
    TopoMeshVertex firstVertex() const noexcept { return impl_->firstVertex(); }
    TopoMeshEdge firstEdge() const noexcept { return impl_->firstEdge(); }
    TopoMeshFace firstFace() const noexcept { return impl_->firstFace(); }
    int numVertices() const noexcept { return impl_->numVertices(); }
    /// Half-edges.
    int numEdges() const noexcept { return impl_->numEdges(); }
    int numFaces() const noexcept { return impl_->numFaces(); }

    /// The memory estimate 152 + 48 × vertices + 56 × half-edges + 24 × faces: the base
    /// record sizes, whatever records the allocator makes.
    std::uint64_t getSizeInBytes() const noexcept;
    /// @}

    /// \name Vertices
    /// @{
    /// A new isolated vertex at the origin, last in the vertex list.
    TopoMeshVertex allocVertex() { return impl_->allocVertex(); }
    /// A new isolated vertex at `point`, last in the vertex list.
    TopoMeshVertex allocVertex(const koLinear::Point& point) { return impl_->allocVertex(point); }
    /// @}

    /// \name Transactions and notices
    /// @{

    /// Starts recording, with a root state of the mesh as it stands, current. Recording
    /// cannot be turned off again short of destroying the mesh; a second call does nothing.
    void enableTransactions() { impl_->enableTransactions(); }
    bool transactionsEnabled() const noexcept { return impl_->isRecording(); }

    /// Saves the changes since the current state as a new child state of it, which becomes
    /// current, and returns it; with no change pending, returns the current state. A null
    /// reference while transactions are off. O(changes).
    ko::Reference<TopoMeshState> createState() { return impl_->createState(); }

    /// Brings the mesh to `state` along the tree, through the nearest common ancestor of the
    /// current state and `state`, and makes it current; the previous current state is dropped
    /// if nothing references it. Changes pending since the last saved state are neither saved
    /// nor undone: call `createState()` first. Nothing happens while transactions are off, or
    /// for a null state or a state of another mesh. Handles to records that do not exist in
    /// `state` dangle (their records are kept for the states that have them). O(changes on
    /// the path).
    void setState(ko::Reference<TopoMeshState> state) { impl_->setState(state); }

    /// Clears `changes` and fills it with one pair per record changed since the current state:
    /// its entity and what happened to it (created wins over a later modification). Returns
    /// the number of pairs; 0 while transactions are off.
    int getChanges(
        ko::unordered_map<TopoMeshEntity, TopoMeshTypedefs::BulletinType>& changes) const {
        return impl_->getChanges(changes);
    }

    /// Tells the listeners of `modifiedSignal` about `notice`, synchronously, in connection
    /// order.
    void modified(TopoMeshModification& notice) { sendMessage(notice); }
    /// @}

private:
    std::unique_ptr<TopoMeshImpl> impl_;
};

} // namespace koGeom
