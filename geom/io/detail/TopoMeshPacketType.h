#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "crate/ioPacketType.h"

#include "tessar/core/Containers.h"
#include "tessar/core/Reference.h"

#include "geom/io/detail/TopoMeshReadCheck.h"
#include "geom/topomesh/TopoMesh.h"

namespace koGeom::detail {

/// The four packet names of a half-edge mesh with base name `base`: the defaults for a null
/// or empty base.
struct TopoMeshPacketNames {
    explicit TopoMeshPacketNames(const char* base);

    std::string header;
    std::string vertex;
    std::string edge;
    std::string face;
};

/// What the four types of one `TopoMesh::registerTypes` call share: the meshes whose header
/// they read, with the number of records read into each, until the read ends; then the
/// checked meshes until the host takes them.
class TopoMeshReadState {
public:
    /// One mesh being read.
    struct MeshRead {
        ko::Reference<TopoMesh> mesh;
        const ioReadContext* context;
        /// The reference of its header packet, which its records' kinds derive from.
        int reference;
        TopoMeshRecordCounts records;
    };

    /// Starts the read of `mesh`, defined by the header packet of `reference` in `context`.
    void begin(const ioReadContext& context, int reference, TopoMesh* mesh);
    /// The mesh of header reference `reference` being read in `context`, or null. O(1) for
    /// the records of the mesh found last, O(log meshes) otherwise.
    MeshRead* find(const ioReadContext& context, int reference);
    /// Notes that a pointer read in `context` by one of the four types named nothing: which
    /// mesh's packet read it is not known, so every mesh read there fails.
    void linkToNothing(const ioReadContext& context);
    /// Checks every mesh read in `context`, empties each that fails (reporting why as an
    /// invalid packet of `context`) and moves them, in header order, to the meshes read. After
    /// an error of the read, or a link to nothing, every mesh fails.
    void finish(ioReadContext& context);
    /// Hands over the meshes read so far.
    ko::vector<ko::Reference<TopoMesh>> take();

private:
    using Key = std::pair<const ioReadContext*, int>;

    std::vector<MeshRead> reading_;
    std::map<Key, std::size_t> index_;
    std::size_t last_ = 0;
    std::set<const ioReadContext*> linksToNothing_;
    ko::vector<ko::Reference<TopoMesh>> read_;
};

/// The `ioPacketType` of the four half-edge mesh packets: the header, whose reader makes the
/// mesh and calls `TopoMesh::readPF`, and the vertex, edge and face packets, each read into a
/// new record of its mesh. The four types of one registration share their `TopoMeshReadState`.
class TopoMeshPacketType final : public ioPacketType {
public:
    enum class Role { Header, Vertex, Edge, Face };

    /// A type of `role` named `name`; `reader` reads the header packet (ignored for records).
    TopoMeshPacketType(std::string name, Role role, void (*reader)(ioReadContext&),
                       std::shared_ptr<TopoMeshReadState> state);
    ~TopoMeshPacketType() override;

    bool readPacket(ioReadContext& context) override;
    void hasUnresolvedPointer(ioReadContext& context, int reference) override;
    /// Checks the meshes read in `context` (once, by whichever of the four types comes first).
    void readFinished(ioReadContext& context) override;

    /// The library's own header reader: a new `TopoMesh` read by `readPF`.
    static void readDefaultHeader(ioReadContext& context);

    TopoMeshReadState& state() const noexcept { return *state_; }

private:
    bool readHeader(ioReadContext& context);
    // The mesh of a record packet, from its first field, or null when the packet is to be
    // skipped (marked invalid where the mesh reference names something else).
    TopoMeshReadState::MeshRead* readMesh(ioReadContext& context);
    bool readVertex(ioReadContext& context);
    bool readEdge(ioReadContext& context);
    bool readFace(ioReadContext& context);
    // Runs the read hook, then defines `record` as the packet's object when the packet still
    // stands, and counts it.
    template <class Hook, class Record>
    bool finishRecord(ioReadContext& context, TopoMeshReadState::MeshRead& read, Hook hook,
                      Record* record, TopoMeshTypedefs::EntityType type, std::int64_t& count);

    Role role_;
    void (*reader_)(ioReadContext&);
    std::shared_ptr<TopoMeshReadState> state_;
};

} // namespace koGeom::detail
