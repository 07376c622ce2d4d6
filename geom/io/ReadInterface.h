#pragma once

#include <cstdint>
#include <memory>

#include "tessar/rtb/SignalClient.h"

#include "crate/ioClientReadContext.h"
#include "crate/ioReadContext.h"

#include "geom/FormworkExport.h"

namespace koGeom {

class Camera;
class CompactMesh;
class EyeSpaceFrustum;
class Viewport;

namespace packetFile {

namespace detail {
struct MeshReadState;
template <class T>
struct MeshArraySlot;
} // namespace detail

/// Rebuilds the meshes of a packet file as its packets arrive: `registerTypes` binds one
/// packet type per mesh packet name to the reader members below, and the packet library calls
/// them with the context at the start of each packet. All reads go through the context given
/// to the constructor, the one the file is read through.
///
/// A header packet creates a new `CompactMesh` and sizes its arrays; the data packets that
/// follow fill the arrays of that mesh (the last one created), whatever mesh their pointer
/// field names, so a mesh's data packets come after its header and before the next. The host
/// takes the mesh with `getLastMesh(true)`, after the read or from its `postPacketRead`.
///
/// Meshes and ownership: a mesh taken with `getLastMesh(true)` belongs to the caller, who may
/// hold it with a `ko::Reference` or delete it. Every other mesh the reader created still
/// belongs to the reader (and its copies, which share them): when the last of them is
/// destroyed, each such mesh is deleted unless a `ko::Reference` holds it then, in which case
/// the last reference deletes it. So `getLastMesh(false)` lends a mesh for as long as the
/// reader lives, and nothing the reader made leaks. A lent mesh that its borrower ends anyway
/// (a reference taken and dropped while the reader lives) is forgotten by the reader: it is
/// no longer the last mesh, and the data packets that follow go nowhere.
///
/// Checked input: every well-formed file reads exactly as written, and nothing in a damaged or
/// hostile one makes the reader write outside an array or allocate without bound. A data
/// packet is checked against the array it would fill before anything is written into it, and
/// a packet that does not fit is marked invalid with its reason (`ioContext::invalidPacket`;
/// the reasons are in `ioContext::invalidPackets()`), the read going on with the next packet.
/// Rejected are:
/// - any data packet when no header was accepted since the last mesh was taken, or after a
///   rejected header (its data have no mesh to go to);
/// - a negative start or count; a block reaching past the array's end; data for an array the
///   header did not flag (no normal array, no triangle normals, a sequence the header gave no
///   points or no sequences); an element array whose length is not count × the values per
///   element;
/// - an attribute of a size outside 1 to 4, of another size than the mesh's attribute of that
///   name, or of a name the mesh cannot create (no vertices, or a standard name with another
///   size than its own);
/// - a header whose UV range is not four floats, or whose vertex count is beyond ±(2^31 − 1) / 4
///   (a channel of four floats per vertex could not count its values in 32 bits);
/// - a header or attribute packet whose arrays the file cannot hold. Counts are trusted only up
///   to what the bytes of the file could fill: the arrays of one mesh, attributes included,
///   never hold more data bytes than the file has from its header to its end, and the meshes
///   of one read together never more than the whole file. A writer stores every array in
///   full after its header, so no well-formed file is refused; a header of 2^31 − 1 vertices
///   in a short file is, before anything is allocated. (An input whose size cannot be known,
///   a pipe, gives no such bound: read files and memory.)
/// A seqarray packet of an unknown sequence kind or array kind is skipped unread and stays
/// valid. Parts of an array that no data packet filled (a file cut short) keep the values a
/// resize leaves; the read reports the damage through the context.
///
/// A reader lives for the reading of one file, and must outlive the registry's use of the
/// packet types bound to it.
class FORMWORK_EXPORT ReadInterface : public ioClientReadContext {
public:
    /// \name Construction
    /// @{
    explicit ReadInterface(ioReadContext& context);
    /// A second reader over the same context, with the same last mesh and ignore flag; the
    /// two share the meshes they own.
    ReadInterface(const ReadInterface& other);
    ReadInterface& operator=(const ReadInterface&) = delete;
    /// Deletes the meshes the reader still owns, unless this is not the last of its copies.
    ~ReadInterface() override;
    /// @}

    /// \name The meshes read
    /// @{
    /// The mesh the last accepted header created, or null. With `release` the caller takes it
    /// over and the reader forgets it (the next call returns null), so data packets that come
    /// after go nowhere.
    CompactMesh* getLastMesh(bool release);
    /// When set, header packets are marked invalid and data packets skipped unread.
    void setIgnoreMesh(bool ignore) noexcept { ignoreMesh_ = ignore; }
    bool getIgnoreMesh() const noexcept { return ignoreMesh_; }
    /// @}

    /// \name Packet readers
    /// Each reads one packet of its type through the context, positioned at the packet's
    /// start (see `registerTypes`).
    /// @{
    /// "ko.tz.mesh": the vertex and triangle counts, then, each only when its chunk is present
    /// (else: null, 0, false, no UVs, false, no colours or triangle normals, no sequences, no
    /// STs), the render information, the draw flags and whether normals are stored, the UVs
    /// and their range, flat shading, and a sub-packet with the colours and triangle normals
    /// flags, the eight sequence counts and, in a second chunk, the STs flag. Creates the mesh
    /// with its arrays so sized and flagged, the sequences of each kind that has both points
    /// and sequences, the render information when it names a defined object, the draw flags
    /// and flat shading; defines the packet's reference as the mesh. O(arrays' size).
    void readMesh();
    /// The data packets: mesh pointer (ignored), start and count, then count elements into
    /// the last mesh's array from start. O(count).
    void readMeshVertices();
    void readMeshNormals();
    void readMeshUVs();
    void readMeshSTs();
    void readMeshColours();
    void readMeshTriangles();
    void readMeshTriNormals();
    /// Mesh pointer, sequence kind (0 strips, 1 fans, 2 line strips, 3 polygons), array kind
    /// (0 points, 1 lengths), start, count, then the indices.
    void readMeshSeqArray();
    /// Mesh pointer, name, size (floats per vertex), start and length (vertices), then the
    /// floats; the attribute is created with that size when the mesh has none of that name.
    /// Writes a line to the standard error stream before the floats are read: "m_mesh =
    /// <address>, size = <number of triangles>, attrib = <name>, start = <s>, length = <n>".
    /// The "size" printed is the mesh's number of triangles, not the attribute's size.
    void readMeshAttributes();
    /// @}

    /// \name Viewing
    /// Read a value that the writers of `PacketFile.h` wrote, as the next value of the open
    /// packet, and apply it: a viewport through `setOrigin`, `setSize` and `setDepthRange`; a
    /// frustum through `setFrame`, `setDepthRange(near, far, false)` and `setOrthographic`; a
    /// camera through `setViewport`, `setFrustum`, `setWorldToEye` and `setOpenFrustum`.
    /// False, with the value unchanged, when the sub-packet is missing or incomplete or the
    /// context has failed.
    /// @{
    bool readViewport(Viewport& viewport);
    bool readEyeSpaceFrustum(EyeSpaceFrustum& frustum);
    bool readCamera(Camera& camera);
    /// @}

private:
    // Starts a data packet: reads its mesh pointer field and returns the mesh its data go to;
    // null when mesh packets are ignored, or after marking the packet invalid.
    CompactMesh* openDataPacket();
    // Follows the last mesh, so that the reader forgets it when someone else ends it.
    void watchLastMesh();
    // Reads a data packet into the array `find` picks on the data mesh.
    template <class T>
    void readBlock(detail::MeshArraySlot<T> (*find)(CompactMesh&), const char* what);

    CompactMesh* lastMesh_ = nullptr;
    bool ignoreMesh_ = false;
    // Whether the last header was accepted: data packets after a rejected one go nowhere.
    bool headerAccepted_ = false;
    // Data bytes the arrays of the last mesh may still take (see the class comment).
    std::uint64_t meshBudget_ = 0;
    // What the copies of a reader share: the meshes they own, the bytes claimed in the file.
    std::shared_ptr<detail::MeshReadState> shared_;
    koRTB::SignalClient lastMeshWatch_;
};

} // namespace packetFile
} // namespace koGeom
