#pragma once

#include "crate/ioPacketRegistry.h"
#include "crate/ioWriteContext.h"

#include "geom/FormworkExport.h"

namespace koGeom {

class Camera;
class CompactMesh;
class EyeSpaceFrustum;
class Viewport;

/// Compact meshes, cameras, frusta and viewports in packet files.
///
/// A mesh is one header packet ("ko.tz.mesh") followed by data packets of at most 1000
/// elements each ("ko.tz.mesh.vertices", ".normals", ".uvs", ".sts", ".colours",
/// ".triangles", ".trinormals", ".seqarray", ".attributes"), so that neither side ever holds
/// more than one block beside the mesh. A reader registers the packet types with
/// `registerTypes` and takes each rebuilt mesh from its `ReadInterface`.
namespace packetFile {

class ReadInterface;

/// \name Meshes
/// @{

/// Writes `mesh` into `context`: the header packet (with the mesh as its object when
/// `writeReferences` is set, else with none), then in blocks of 1000: the vertices, the
/// triangles, the normals (when stored: a normal array not marked computed), the UVs, STs and
/// colours (when present), the triangle normals (when stored: present and not marked
/// computed), the points then the lengths of the triangle strips, fans, line strips and
/// polygons (each kind that has sequences), and the attributes marked for storage. Every data
/// packet starts with the mesh as a pointer when `writeReferences` is set, else with the
/// null pointer. When `scale` is not exactly 1.0 the positions are written multiplied by it
/// (as a float), through one scratch block; nothing else is scaled and the mesh is not
/// changed. Nothing happens for a null `mesh`.
///
/// Before each attribute block a line goes to the standard error stream, whatever the
/// debug channel says: "mesh = <address>, attrib = <name>, start = <s>, length = <n>".
///
/// An array is written up to the vertex (or triangle) count or its own length, whichever is
/// shorter, so a channel that a client shrank is never read past its end. Failures are the
/// context's (`ioWriteContext::ok`). O(elements).
FORMWORK_EXPORT void writeMesh(ioWriteContext& context, const CompactMesh* mesh, double scale,
                               bool writeReferences);

/// Gives `registry` one packet type per mesh packet name, in the order above, each reading
/// through the matching member of `reader`; then registers the half-edge mesh packets with
/// their default names and reader. `reader` must outlive the registry's use of the types.
FORMWORK_EXPORT void registerTypes(ioPacketRegistry* registry, ReadInterface* reader);
/// @}

/// \name Viewing
/// Each writes one sub-packet into the open packet; `ReadInterface` reads them back.
/// @{
/// The origin x and y, width, height, then the near and far depths: six doubles.
FORMWORK_EXPORT void writeViewport(ioWriteContext& context, const Viewport& viewport);
/// The frame's left-bottom and right-top corners (`writeTuple2` each), the near and far
/// distances (doubles), then whether it is orthographic (bool).
FORMWORK_EXPORT void writeEyeSpaceFrustum(ioWriteContext& context, const EyeSpaceFrustum& frustum);
/// The viewport and the eye-space frustum (as above), the world-to-eye transform
/// (`writeAffineMatrix`), then whether the frustum is open (bool).
FORMWORK_EXPORT void writeCamera(ioWriteContext& context, const Camera& camera);
/// @}

} // namespace packetFile
} // namespace koGeom
