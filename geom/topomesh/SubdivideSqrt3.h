#pragma once

#include "geom/FormworkExport.h"
#include "geom/topomesh/TopoMesh.h"

namespace koGeom {

/// What one √3 step does with the vertices the mesh had before it.
enum class Sqrt3Vertices {
    /// They stay where they are: the step changes the topology only.
    Kept,
    /// Each interior one moves towards its old neighbours by the √3 smoothing rule,
    /// p' = (1 − a) p + (a / n) Σ q over its n neighbours q, with a = (4 − 2 cos(2π / n)) / 9;
    /// vertices on a boundary, and isolated ones, stay.
    Relaxed,
};

/// One step of √3 subdivision: a new vertex at the centroid of every face, which is fanned
/// into one triangle per side round it (`subdivideFace`), then every old interior edge flipped
/// (`swapEdge`) so that it joins the centres of its two old faces. On a closed triangle mesh
/// the face count triples and every new vertex has valence 6. A boundary edge is not flipped
/// (it has no second triangle), so the fan triangles along a boundary stay; an edge whose flip
/// would join two vertices already joined stays too.
///
/// The new vertices are appended to the vertex list, so the old ones keep their list order.
/// Every change goes through the mesh's editing operations: with transactions on, the step is
/// recorded like any edit, and `createState` after it saves it as one state. No notice is
/// sent. O(vertices × valence + faces × face size); allocates two lists of handles (the old
/// faces and interior edges) and, for `Sqrt3Vertices::Relaxed`, one point per old vertex.
FORMWORK_EXPORT void subdivideSqrt3(TopoMesh& mesh, Sqrt3Vertices oldVertices);

} // namespace koGeom
