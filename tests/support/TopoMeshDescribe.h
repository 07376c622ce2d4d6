#pragma once

#include <string>

#include "geom/topomesh/TopoMesh.h"

namespace koGeomTest {

/// The links of a mesh in a few words, each vertex named by its index in the vertex list:
/// "faces 0 1 2,0 2 3; open 0>1 1>2; first 0>1 1>2 2>0 -" lists each face's loop from its
/// first edge (faces in list order), the half-edges without twin (edge list order) and each
/// vertex's first edge ("-" for none). A twin that does not run the other way shows as
/// "badtwin a>b". O(n) plus a hash map of the vertices.
std::string describeTopoMesh(const koGeom::TopoMesh& mesh);

} // namespace koGeomTest
