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

// The packet-file classes, which this layer names but does not use.
class ioPacketRegistry;
class ioReadContext;
class ioWriteContext;

namespace koGeom {

namespace detail {
class TopoMeshPacketType;
}

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
    /// `other`'s allocator's create slot. Transactions are off in the copy. O(n).
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

    /// \name Creating faces and looking up
    /// A new face is appended to the face list and its half-edges, one per corner in loop
    /// order, to the edge list; a corner without a first edge gets its new half-edge. Each new
    /// half-edge becomes the twin of an existing one that runs the other way between the same
    /// two vertices (found by `findEdge` from its end) when that one has no twin yet; so the
    /// order of the corners decides the side, and faces given in one orientation join up.
    /// Each is O(sum of the corners' valences); none allocates beyond its records.
    /// @{
    TopoMeshFace allocTriangle(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c) {
        return impl_->allocTriangle(a, b, c);
    }
    TopoMeshFace allocQuad(TopoMeshVertex a, TopoMeshVertex b, TopoMeshVertex c, TopoMeshVertex d) {
        return impl_->allocQuad(a, b, c, d);
    }
    /// A face with one half-edge per vertex; null (and nothing made) for an empty list.
    TopoMeshFace allocFace(const ko::vector<TopoMeshVertex>& vertices) {
        return impl_->allocFace(vertices);
    }
    /// The first half-edge of `from`'s fan that ends at `to`; null if none. O(valence).
    static TopoMeshEdge findEdge(TopoMeshVertex from, TopoMeshVertex to) noexcept {
        return TopoMeshImpl::findEdge(from, to);
    }
    /// A face both half-edges border, first match wins: their common face; the second's face
    /// if the first's twin lies on it; the first's face if the second's twin lies on it; the
    /// common face of the two twins. Null if none (or a twin is missing). O(1).
    static TopoMeshFace findFace(TopoMeshEdge e1, TopoMeshEdge e2) noexcept {
        return TopoMeshImpl::findFace(e1, e2);
    }
    /// @}

    /// \name Setting single links
    /// Plain writes, reported to the recorder; nothing else is kept consistent.
    /// @{
    /// Makes `e1` and `e2` each other's twin.
    void setTwins(TopoMeshEdge e1, TopoMeshEdge e2) { impl_->setTwins(e1, e2); }
    void setFirstEdge(TopoMeshVertex vertex, TopoMeshEdge edge) {
        impl_->setFirstEdge(vertex, edge);
    }
    void setPoint(TopoMeshVertex vertex, const koLinear::Point& point) {
        impl_->setPoint(vertex, point);
    }
    /// @}

    /// \name Deleting
    /// Freed records leave the lists at once; handles to them dangle (see docs/topomesh.md
    /// for what each edit frees). Each is O(size of the faces involved × valence).
    /// @{

    /// Frees the face and its half-edges; the twins of those half-edges become boundary
    /// half-edges, and a corner whose first edge went gets another outgoing half-edge of its
    /// fan off the face, or none. The corners stay, even when left isolated. A twin link is
    /// cleared only where it points back, so a stray one-sided link never unpairs a pair.
    void deleteFace(TopoMeshFace face) { impl_->deleteFace(face); }
    /// Removes an interior edge, merging the twin's face into `edge`'s face; false (and
    /// nothing changed) for a boundary half-edge. Nothing else is checked: on an edge whose
    /// two half-edges lie in the same face the face itself is freed.
    bool deleteEdge(TopoMeshEdge edge) { return impl_->deleteEdge(edge); }
    /// By the vertex's valence: 1, deletes its face and frees it; 3, deletes its three faces
    /// and fills the hole with a triangle over the three neighbours, paired with the outer
    /// half-edges, and returns that triangle; any other valence frees the vertex only,
    /// leaving its half-edges pointing at the freed record. Returns null but for valence 3.
    /// A face met twice round a valence-3 vertex (outside a triangle fan) is deleted once.
    TopoMeshFace deleteVertex(TopoMeshVertex vertex) { return impl_->deleteVertex(vertex); }
    /// Removes a region of faces at once: frees the faces, every half-edge of their loops and
    /// every corner that is not the origin of a half-edge in `border`. `border` lists the
    /// half-edges outside the region whose twins go: each becomes a boundary half-edge and
    /// its origin's first edge. No other link is repaired. O(n log n) in the region's size.
    void deleteFaces(const ko::unordered_set<TopoMeshFace>& faces,
                     const ko::vector<TopoMeshEdge>& border) {
        impl_->deleteFaces(faces, border);
    }
    /// Removes a vertex of valence 2 (or of valence 1 on a boundary) between two edges,
    /// joining them: the half-edge into it then runs over both, paired with the joined
    /// half-edge of the other side. Nothing changes for any other vertex, when a face on
    /// either side is a triangle, or when the two sides do not pair up again (a boundary
    /// vertex between two faces).
    void deleteValenceTwoVertex(TopoMeshVertex vertex) { impl_->deleteValenceTwoVertex(vertex); }
    /// @}

    /// \name Local rewrites
    /// @{

    /// Collapses `edge` into its end vertex, which is returned: deletes `edge`'s face (a
    /// triangle), moves the origin's fan to the end vertex, pairs the two outer half-edges of
    /// the triangle and frees the origin. Only `edge`'s side is rewritten: its twin and the
    /// face behind stay (the twin then starts and ends at the kept vertex). When the half-edge
    /// into the origin has no twin, the origin's fan is not moved.
    TopoMeshVertex contractEdge(TopoMeshEdge edge) { return impl_->contractEdge(edge); }
    /// Cuts the mesh along an interior edge: the two half-edges become boundary half-edges and
    /// the twin's side gets two new vertices at the ends' points. Nothing for a boundary edge.
    void splitEdge(TopoMeshEdge edge) { impl_->splitEdge(edge); }
    /// Cuts the edge of `edge` (which starts at `vertex`) at `vertex`: the twins are
    /// unpaired and the fan beyond the twin gets a new vertex at the same point, which is
    /// returned. Null (nothing changed) for a boundary edge.
    TopoMeshVertex splitVertex(TopoMeshVertex vertex, TopoMeshEdge edge) {
        return impl_->splitVertex(vertex, edge);
    }
    /// Cuts the mesh at `into` (ending at a vertex v) and `outOf` (starting at v), and gives
    /// the half-edges from `into`'s twin round to `outOf`'s side a new vertex at v's point,
    /// which is returned.
    TopoMeshVertex splitVertex(TopoMeshEdge into, TopoMeshEdge outOf) {
        return impl_->splitVertex(into, outOf);
    }
    /// Splits the face of `e1` and `e2` with a new edge from `e2`'s origin to `e1`'s origin:
    /// the half-edges from `e1` up to that new edge form a new face. Nothing when the two are
    /// the same half-edge or in different faces.
    void splitFace(TopoMeshEdge e1, TopoMeshEdge e2) { impl_->splitFace(e1, e2); }
    /// Inserts a new vertex at `point` into the edge (both half-edges), which is returned.
    TopoMeshVertex subdivideEdge(TopoMeshEdge edge, const koLinear::Point& point) {
        return impl_->subdivideEdge(edge, point);
    }
    /// Fans the face around a new centre vertex at `point`, which is returned: one triangle
    /// per side (the face keeps the first), 2n new half-edges, all paired.
    TopoMeshVertex subdivideFace(TopoMeshFace face, const koLinear::Point& point) {
        return impl_->subdivideFace(face, point);
    }
    /// Splits the face by a new edge between its corners `from` and `to`; returns the new
    /// half-edge from `from` to `to`, which stays on `face`; the part after it becomes a new
    /// face. Null (nothing changed) unless both are distinct corners of the face.
    TopoMeshEdge subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to) {
        return impl_->subdivideFace(face, from, to);
    }
    /// Cuts off a triangle over `edge` (a half-edge of `face`) with a new apex at `point`
    /// inside the face, which is returned; the triangle is a new face holding `edge`.
    TopoMeshVertex subdivideFace(TopoMeshFace face, TopoMeshEdge edge,
                                 const koLinear::Point& point) {
        return impl_->subdivideFace(face, edge, point);
    }
    /// Cuts the face from corner `from` to corner `to` through new vertices at `points`, in
    /// order, and returns the face on the far side of the cut. When the two corners are
    /// joined by a side of the face, the cut runs beside it. `newVertices` receives the new
    /// vertices in point order. With no points the cut is one new edge. Null (nothing
    /// changed) when the corners are not both on the face.
    TopoMeshFace subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to,
                               const ko::vector<koLinear::Point>& points,
                               ko::vector<TopoMeshVertex>& newVertices) {
        return impl_->subdivideFace(face, from, to, points, newVertices);
    }
    TopoMeshFace subdivideFace(TopoMeshFace face, TopoMeshVertex from, TopoMeshVertex to,
                               const ko::vector<koLinear::Point>& points) {
        ko::vector<TopoMeshVertex> newVertices;
        return impl_->subdivideFace(face, from, to, points, newVertices);
    }
    /// Flips the diagonal shared by two triangles to join their opposite corners; false (and
    /// nothing changed) when those are joined already or the edge has no twin.
    bool swapEdge(TopoMeshEdge edge) { return impl_->swapEdge(edge); }
    /// Stitches two boundary half-edges running opposite ways into twins, merging the
    /// vertices at each end (the ends of `e2` go, those of `e1` stay).
    void mergeVertices(TopoMeshEdge e1, TopoMeshEdge e2) { impl_->mergeVertices(e1, e2); }
    /// Removes two consecutive edges of one face whose twins are consecutive in another
    /// face, with the vertex between them, joining the other face into `e1`'s face. Nothing
    /// when the edges are not so placed.
    void mergeFaces(TopoMeshEdge e1, TopoMeshEdge e2) { impl_->mergeFaces(e1, e2); }
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

    /// \name Packet files
    /// A mesh is stored as one header packet and then one packet per vertex, per half-edge
    /// (every one, primary or not) and per face, vertices first, each kind in list order. The
    /// header's object is the mesh, each record packet's object its record; every link is a
    /// reference to the packet of the record it names, or the null reference.
    ///
    /// - header "ko.geom.topomesh": first and last vertex, first and last face, first and
    ///   last edge (six references); vertex, face and edge counts (three 32-bit integers);
    ///   then `onWritePF`;
    /// - vertex "ko.geom.topomesh.vertex": the mesh (a reference); the point (an array of
    ///   three doubles); first edge, next and previous in the mesh; then `onWriteVertexPF`;
    /// - edge "ko.geom.topomesh.edge": the mesh; vertex, next, prev, twin, face, next and
    ///   previous in the mesh; then `onWriteEdgePF`;
    /// - face "ko.geom.topomesh.face": the mesh; first edge, next and previous in the mesh;
    ///   then `onWriteFacePF`.
    ///
    /// A derived mesh whose `getPacketType()` returns a base name B names its header B and
    /// its record packets B, a dot and the whole default name: "B.ko.geom.topomesh.vertex".
    ///
    /// **Reading.** `registerTypes` puts a type for each of the four names into a packet
    /// registry; `ioReadContext::readAll` then reads a file through it.
    /// - A header packet goes to the header reader. The library's own (registered for a null
    ///   name or a null reader) makes a `TopoMesh` with the default allocator and calls
    ///   `readPF`; a host's reader makes its derived mesh with `new`, calls `readPF` on it and
    ///   deletes it again when that returns false. When the reader returns, the registry's type
    ///   takes a `ko::Reference` to the mesh that `readPF` defined, so the mesh lives at least
    ///   until `takeReadMeshes` hands it over.
    /// - A record packet takes a zeroed record straight from its mesh's allocator, reads its
    ///   fields into it, calls its read hook and defines the record as the packet's object. No
    ///   count or list is touched: they come from the header and the records' own links, which
    ///   are patched as the packets they name arrive. A record packet whose mesh reference
    ///   names no object (yet) is skipped.
    /// - When the read ends, also after an error, every mesh read is checked (below). A mesh
    ///   that fails is emptied, its records dropped with its allocator's pools without
    ///   following a single link, and the reason is kept as an invalid packet ("half-edge mesh
    ///   7 dropped: ..."). So every mesh a read hands over is sound or empty.
    /// - The host takes the meshes with `takeReadMeshes` after `readAll`. A host that wants
    ///   each mesh as it comes takes it in `ioClientReadContext::postPacketRead` after a packet
    ///   of the header type: the packet's object (`getReferenceDefinition(getPacketReference())`,
    ///   of kind `packetMeshKind`) is the `TopoMesh`, to be held by a `ko::Reference`; it is
    ///   checked, and may be emptied, only when the read ends.
    ///
    /// **What a read rejects.** Files this library writes read back exactly. Beyond that:
    /// - A header packet that defines no object, a header read into a mesh that is not empty,
    ///   a record packet that defines no object or whose mesh reference names something other
    ///   than a half-edge mesh read through the same `registerTypes` call, and a vertex point
    ///   that is not three doubles: the packet is invalid and skipped.
    /// - A link that names a record of another kind (an edge where a vertex belongs), the mesh
    ///   or a record of another mesh: an error of the read. The records of each mesh are
    ///   defined with kinds of their own (`packetRecordKind`), so a link resolves only to a
    ///   record of its own kind and mesh.
    /// - A read that stops at an error, or in which a half-edge mesh packet links to an object
    ///   that no packet of the file defines (its link would read as null), drops every mesh
    ///   it read: which mesh the damage touched is not known.
    /// - The check at the end, O(n) per mesh without recursion or allocation, and bounded by
    ///   the number of records read however the links run: each count equals the number of
    ///   its records read; each list runs from its head, through previous links that mirror
    ///   the next links, to its tail within that number of records, so that it holds every
    ///   record read exactly once (a list that does not end, comes back to a record or leaves
    ///   one out fails); every half-edge has an origin, a next whose prev it is, a prev whose
    ///   next it is, the face of its next, and no twin or another half-edge whose twin it is;
    ///   every face's first edge lies on it and the face loops hold every half-edge; every
    ///   vertex's first edge, if any, starts at the vertex. A mesh written after deleting a
    ///   vertex of a valence other than 1 or 3, whose half-edges still start at the freed
    ///   vertex, links to a record that has no packet, and is dropped.
    /// @{

    /// Writes the header packet and then the record packets. O(n). A failed write shows in
    /// `context.error()`, and writing stops.
    void writePF(ioWriteContext& context) const;

    /// Reads the header packet at which `context` stands into this mesh, which must be empty
    /// (no record in its lists, transactions off): the six list ends, the three counts, then
    /// `onReadPF`; then defines the mesh as the packet's object. The list ends are patched as
    /// the records' packets arrive, so the mesh must stay alive until the read ends. False,
    /// with the packet marked invalid and the mesh unchanged, when the mesh is not empty or
    /// the packet defines no object; false after a read error.
    bool readPF(ioReadContext& context);

    /// Registers in `registry` the header, vertex, edge and face types of base name `name`
    /// (null or empty: the default names), with `reader` as the header's reader (ignored for
    /// a null name, where the library's own reads the header; the library's own also for a
    /// null `reader`, which reads a derived mesh's packets as a plain `TopoMesh`, skipping
    /// the extra fields). Types registered before under the same names are replaced.
    static void registerTypes(ioPacketRegistry& registry, const char* name,
                              void (*reader)(ioReadContext&));

    /// Hands over the meshes that the types `registerTypes` registered in `registry` under
    /// `name` (null: the default names) have read since the last call, in the order of their
    /// header packets, each checked: sound or empty. Meshes not taken stay with the registry.
    /// Empty when `registerTypes` registered no such header type there.
    static ko::vector<ko::Reference<TopoMesh>> takeReadMeshes(ioPacketRegistry& registry,
                                                              const char* name = nullptr);

    /// The kind with which a header packet defines its mesh.
    static constexpr int packetMeshKind = 0x54504D48;
    /// The largest reference a header packet may have: record kinds stay below
    /// `packetMeshKind`.
    static constexpr int maxPacketMeshReference = (1 << 28) - 1;
    /// The kind with which the records of `type` of the mesh read from the header packet of
    /// reference `meshReference` (1 to `maxPacketMeshReference`) are defined, and with which
    /// links to them are read. A derived mesh whose read hooks read links to its own records
    /// keeps `context.getPacketReference()` in `onReadPF` and reads them with these kinds.
    static constexpr int packetRecordKind(int meshReference,
                                          TopoMeshTypedefs::EntityType type) noexcept {
        return 0x10000 + 4 * meshReference + static_cast<int>(type);
    }
    /// @}

protected:
    /// \name Packet hooks
    /// Empty here. A derived mesh writes the extra fields of its header and records in the
    /// write hooks and reads them back, in the same order, in the read hooks. A read hook is
    /// called with the fields read so far: links to records whose packets come later are
    /// still null, and the mesh is not yet checked, so it must not walk the mesh. Marking the
    /// packet invalid (`ioContext::invalidPacket`) rejects it.
    /// @{
    virtual void onWritePF(ioWriteContext& /*context*/) const {}
    virtual void onReadPF(ioReadContext& /*context*/) {}
    virtual void onWriteVertexPF(TopoMeshVertex /*vertex*/, ioWriteContext& /*context*/) const {}
    virtual void onReadVertexPF(TopoMeshVertex /*vertex*/, ioReadContext& /*context*/) {}
    virtual void onWriteEdgePF(TopoMeshEdge /*edge*/, ioWriteContext& /*context*/) const {}
    virtual void onReadEdgePF(TopoMeshEdge /*edge*/, ioReadContext& /*context*/) {}
    virtual void onWriteFacePF(TopoMeshFace /*face*/, ioWriteContext& /*context*/) const {}
    virtual void onReadFacePF(TopoMeshFace /*face*/, ioReadContext& /*context*/) {}
    /// @}

private:
    friend class detail::TopoMeshPacketType;

    /// The base name of this mesh's packets; null here, which selects the default names.
    virtual const char* getPacketType() const { return nullptr; }

    std::unique_ptr<TopoMeshImpl> impl_;
};

} // namespace koGeom
