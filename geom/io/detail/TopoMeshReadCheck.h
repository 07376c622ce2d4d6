#pragma once

#include <cstdint>
#include <string>

#include "geom/topomesh/TopoMeshHeader.h"

namespace koGeom::detail {

/// The numbers of records of each kind read into one mesh.
struct TopoMeshRecordCounts {
    std::int64_t vertices = 0;
    std::int64_t edges = 0;
    std::int64_t faces = 0;
};

/// Why the mesh of `header`, into which `read` records were read, cannot be handed over, in a
/// few words; empty when it is sound. Requires that every link of the header and of those
/// records is null or names one of those records, of the link's kind: the read makes it so,
/// whatever the file held. Then the walks here stay among those records and are bounded by
/// their numbers, however the links run.
///
/// The rules: each count equals the records read; each list runs from its head, through
/// previous links that mirror the next links, to its tail within the records read, so that it
/// holds each record exactly once; every half-edge has an origin, a next whose prev it is, a
/// prev whose next it is, the face of its next, and a twin that is null or another half-edge
/// whose twin it is; every face's first edge lies on it and the face loops together hold every
/// half-edge; every vertex's first edge, if any, starts at the vertex. O(n), no allocation but
/// the message, no recursion.
std::string checkReadTopoMesh(const TopoMeshHeader& header, const TopoMeshRecordCounts& read);

} // namespace koGeom::detail
