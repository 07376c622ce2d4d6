#pragma once

#include <cstdint>

#include "tessar/core/Reference.h"

#include "geom/mesh/CompactMesh.h"
#include "geom/topomesh/TopoMesh.h"
#include "tools/formwork/Progress.h"

namespace formworkTool {

/// The surface of a `CompactMesh` as a half-edge mesh, and what building it found.
///
/// The surface is the mesh's triangles (with strips, fans and polygons, see
/// `surfaceTriangles`) over its vertices welded by position: vertices at exactly the same
/// point are one vertex, whatever their normals, UVs or colours, so the seams an importer
/// makes for those do not cut the surface. A triangle with two corners at one point is left
/// out. The counts below are of this welded surface.
///
/// Whatever the input, the half-edge mesh is sound: every vertex has one fan, and two
/// half-edges are twins only across an edge that exactly two triangles share and traverse in
/// opposite directions. Where the surface is not an oriented manifold, it is cut apart in the
/// half-edge mesh: an edge of more than two triangles, or of two that run the same way along
/// it, becomes a boundary on each side, and a vertex whose triangles then form several fans
/// gets one half-edge vertex per fan.
struct SurfaceTopology {
    ko::Reference<koGeom::TopoMesh> mesh;
    /// \name The welded surface
    /// @{
    int vertices = 0;       ///< welded vertices in at least one triangle
    std::int64_t edges = 0; ///< undirected edges
    int faces = 0;          ///< triangles kept
    int unusedVertices = 0; ///< vertices of the compact mesh in no kept triangle
    int degenerateTriangles = 0;
    int components = 0; ///< connected pieces, joined through shared vertices
    /// @}
    /// \name Where it is not a manifold
    /// @{
    int nonManifoldEdges = 0; ///< edges of more than two triangles
    int misorientedEdges = 0; ///< edges of two triangles that run the same way along them
    /// Vertices whose triangles form more than one fan, joined across edges of two triangles
    /// (however they run); a vertex on a non-manifold edge is one.
    int nonManifoldVertices = 0;
    /// @}
    /// Loops of boundary half-edges in the half-edge mesh (cuts included).
    int boundaryLoops = 0;

    /// vertices − edges + faces.
    std::int64_t eulerCharacteristic() const noexcept { return vertices - edges + faces; }
    /// True when the surface is an oriented manifold (possibly with boundary): no
    /// non-manifold or misoriented edge and no non-manifold vertex.
    bool isOrientedManifold() const noexcept {
        return nonManifoldEdges == 0 && misorientedEdges == 0 && nonManifoldVertices == 0;
    }
    /// The total genus of an oriented manifold, (2 · components − χ − boundary loops) / 2;
    /// −1 when the surface is not one.
    int genus() const noexcept;
};

/// Builds the half-edge mesh of `mesh`'s surface and counts what it finds. O(n log n) in the
/// number of triangles. The mesh must pass `checkIndices`.
SurfaceTopology buildSurfaceTopology(const koGeom::CompactMesh& mesh, Progress& progress);

/// The faces of a half-edge mesh as a `CompactMesh`: its vertices in list order (positions
/// only) and each face as a fan of triangles from its first edge's origin.
ko::Reference<koGeom::CompactMesh> compactMeshOf(const koGeom::TopoMesh& mesh);

} // namespace formworkTool
