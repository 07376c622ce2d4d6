#pragma once

#include <string>
#include <vector>

#include "geom/topomesh/TopoMesh.h"

namespace koGeomTest {

/// A polygon mesh as points and faces of point indices (in loop order), for building
/// half-edge meshes in tests.
struct TopoMeshShape {
    std::string name;
    std::vector<koLinear::Point> points;
    std::vector<std::vector<int>> faces;
};

/// Adds a vertex per point, in order, then a face per index list through `allocFace`, then
/// pairs the half-edges that `allocFace` could not pair (its look-up walks only the fan
/// piece of a vertex's first edge); returns the new vertices.
std::vector<koGeom::TopoMeshVertex> buildTopoMesh(koGeom::TopoMesh& mesh,
                                                  const TopoMeshShape& shape);

/// \name Shapes
/// Faces of one orientation, so that every shared edge pairs up.
/// @{
/// Four outward triangles over (0,0,0), (1,0,0), (0,1,0), (0,0,1): closed.
TopoMeshShape tetrahedron();
/// `n` triangles around a centre vertex 0 at the origin, rim vertices 1..n on the unit
/// circle; with `closed` the last triangle joins the first (an interior centre), otherwise
/// the fan is open (a boundary centre).
TopoMeshShape fan(int n, bool closed);
/// An nx × ny grid of unit squares in the plane z = 0 (vertex j·(nx+1) + i at (i, j)); with
/// `triangles` each square is two triangles split by its diagonal from (i, j) to
/// (i+1, j+1).
TopoMeshShape quadGrid(int nx, int ny, bool triangles);
/// A closed torus of nu × nv vertices, two triangles per cell, every vertex of valence 6.
TopoMeshShape torus(int nu, int nv);
/// A closed octahedron with each triangle split into four at its edge midpoints pushed onto
/// the unit sphere, `levels` times.
TopoMeshShape sphere(int levels);
/// Two triangles that share only vertex 0: a non-manifold vertex.
TopoMeshShape bowtie();
/// @}

} // namespace koGeomTest
