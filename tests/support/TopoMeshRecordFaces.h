#pragma once

#include <vector>

#include "geom/topomesh/TopoMesh.h"

namespace koGeomTest {

/// Adds a face over `vertices` (in loop order) to `mesh` using only the record primitives of
/// `TopoMeshImpl`, reporting every change as the recording rule asks: one new half-edge per
/// vertex, the loop linked, each vertex without a first edge given its new half-edge, and each
/// new half-edge paired with an unpaired half-edge of the mesh running the other way (found
/// by a scan of the edge list, O(edges)). For tests of the records and transactions, which do
/// not depend on the editing operations.
koGeom::TopoMeshFace addFaceByRecords(koGeom::TopoMesh& mesh,
                                      const std::vector<koGeom::TopoMeshVertex>& vertices);

/// Adds a vertex at each point, then a face for each list of point indices, with
/// `addFaceByRecords`; returns the new vertices.
std::vector<koGeom::TopoMeshVertex> addFacesByRecords(koGeom::TopoMesh& mesh,
                                                      const std::vector<koLinear::Point>& points,
                                                      const std::vector<std::vector<int>>& faces);

/// Deletes `face` with the record primitives, reporting every change: clears the twin links
/// that point at its half-edges and first edges of vertices that start there (re-pointing
/// them to another outgoing half-edge found by a scan, or null), then frees the half-edges
/// and the face. Vertices are kept.
void deleteFaceByRecords(koGeom::TopoMesh& mesh, koGeom::TopoMeshFace face);

} // namespace koGeomTest
