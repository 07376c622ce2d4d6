#pragma once

#include <string>
#include <vector>

#include "tessar/core/Reference.h"

#include "geom/mesh/CompactMesh.h"

namespace formworkTool {

/// The meshes of one file, in file order.
using MeshList = std::vector<ko::Reference<koGeom::CompactMesh>>;

/// A mesh's arrays as the program gathers them (from an importer, a generator or a half-edge
/// mesh) before making a `CompactMesh`: flat floats per vertex, flat indices per primitive.
/// Each optional channel is empty or holds exactly one record per vertex.
struct MeshArrays {
    std::vector<float> positions; ///< x, y, z per vertex
    std::vector<float> normals;   ///< x, y, z per vertex
    std::vector<float> uvs;       ///< u, v per vertex (the first texture coordinate set)
    std::vector<float> sts;       ///< s, t per vertex (the second set)
    std::vector<float> colours;   ///< red, green, blue, alpha per vertex
    std::vector<int> triangles;   ///< three vertex indices per triangle
    std::vector<int> lineStripPoints;
    std::vector<int> lineStripLengths;

    int numVertices() const noexcept { return static_cast<int>(positions.size() / 3); }

    /// A new mesh holding these arrays, its normals marked as supplied (so that a packet file
    /// stores them). O(size).
    ko::Reference<koGeom::CompactMesh> toMesh() const;
};

/// \name Reading a mesh's primitives
/// @{

/// Empty when every index of every primitive (triangles, strips, fans, line strips, polygons,
/// lines) names a vertex of the mesh and every sequence's lengths add up to its points;
/// otherwise what is wrong with the first one that does not, in a few words.
std::string checkIndices(const koGeom::CompactMesh& mesh);

/// The mesh's surface as triangles, three indices each: the triangles, then those of the
/// strips and fans (as `CompactMesh::fullyPopulateTriangleArray` forms them), then every
/// polygon as a fan from its first corner. The mesh must pass `checkIndices`.
std::vector<int> surfaceTriangles(const koGeom::CompactMesh& mesh);

/// Unit normals per vertex (x, y, z each) of `triangles` over the mesh's vertices, each the
/// sum of the normals of the triangles round it weighted by their areas; (0, 0, 0) for a
/// vertex in no triangle or only degenerate ones.
std::vector<float> vertexNormals(const koGeom::CompactMesh& mesh,
                                 const std::vector<int>& triangles);
/// @}

} // namespace formworkTool
