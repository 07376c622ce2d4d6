#pragma once

#include <array>
#include <string>
#include <vector>

#include "geom/topomesh/TopoMesh.h"

namespace koGeomTest {

/// The first broken invariant of a half-edge mesh's links, in words, or an empty string when
/// the mesh is sound:
/// - each list's prev links mirror its next links, its head has no prev, its tail is the
///   header's tail, and its length is the header's count;
/// - every half-edge is its twin's twin, the prev of its next and the next of its prev, and
///   has an origin;
/// - every face loop, followed from the face's first edge, returns to it within the number of
///   half-edges, every half-edge on it names the face, and the loops hold every half-edge;
/// - every vertex's first edge, if any, starts at the vertex.
/// O(n) with one hash set per list.
std::string checkTopoMesh(const koGeom::TopoMesh& mesh);

/// Everything a half-edge mesh holds, with each record named by its index in its list (-1 for
/// a null link), so that two meshes, or one mesh before and after an undo, compare with `==`
/// whatever their record addresses.
struct TopoMeshPicture {
    /// x, y, z of each vertex in list order.
    std::vector<std::array<double, 3>> points;
    /// The first edge of each vertex.
    std::vector<int> vertexEdges;
    /// vertex, next, prev, twin, face of each half-edge in list order.
    std::vector<std::array<int, 5>> edges;
    /// The first edge of each face.
    std::vector<int> faceEdges;

    bool operator==(const TopoMeshPicture&) const = default;
};

/// The picture of a sound mesh (see `checkTopoMesh`). O(n) with one hash map per list.
TopoMeshPicture pictureOf(const koGeom::TopoMesh& mesh);

/// The links of a mesh in a few words, each vertex named by its index in the vertex list:
/// "faces 0 1 2,0 2 3; open 0>1 1>2; first 0>1 1>2 2>0 -" lists each face's loop from its
/// first edge (faces in list order), the half-edges without twin (edge list order) and each
/// vertex's first edge ("-" for none). A twin that does not run the other way shows as
/// "badtwin a>b". O(n) plus a hash map of the vertices.
std::string describeTopoMesh(const koGeom::TopoMesh& mesh);

/// Vertex, edge and face records out of the pools of a mesh with the default allocator: live
/// ones, copies, and records kept for saved states.
std::vector<std::size_t> recordsOut(const koGeom::TopoMesh& mesh);

} // namespace koGeomTest
