#pragma once

#include "geom/mesh/CompactMesh.h"

namespace koGeomTest {

/// Fills `mesh` with a closed torus of nu × nv vertices (vertex j·nu + i at grid position
/// (i, j)) and 2·nu·nv triangles, two per grid cell with both directions wrapping round: every
/// edge is shared by exactly two triangles and every vertex lies in six. Major radius 2,
/// minor radius 1, about the origin in the xy plane.
void makeTorus(koGeom::CompactMesh& mesh, int nu, int nv);

/// Fills `mesh` with the unit cube [0, 1]^3: 8 vertices (vertex i has x = bit 0, y = bit 1,
/// z = bit 2 of i) and 12 outward-facing triangles.
void makeCube(koGeom::CompactMesh& mesh);

/// Gives the empty `mesh` every array a mesh file can hold, filled with random bit patterns
/// from `seed` (NaN payloads and negative zeros included): `numVertices` vertices with
/// normals, UVs, STs and colours; `numTriangles` triangles with supplied (not computed)
/// triangle normals; strips of 1000 points in 2 sequences, fans of 3 in 1, line strips of 1001
/// in 2, polygons of 4 in 1; attributes "weight", "offset", "tangent" and "tint" of one to four
/// floats marked for storage; draw flags 0x5a5a and flat shading off.
void fillEveryArray(koGeom::CompactMesh& mesh, int numVertices, int numTriangles, unsigned seed);

} // namespace koGeomTest
