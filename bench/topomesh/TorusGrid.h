#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace topoBench {

/// A closed triangulated torus: `columns` × `rows` vertices on a torus of radii 3 and 1, each
/// grid quad cut along its rising diagonal into two triangles, so that every vertex has
/// valence 6 and the surface has no boundary. The one input of all three libraries' builds.
struct TorusGrid {
    TorusGrid(int columns, int rows);

    int numVertices() const { return columns * rows; }
    int numTriangles() const { return 2 * columns * rows; }
    /// Undirected edges: three per quad.
    int numEdges() const { return 3 * columns * rows; }
    int vertex(int column, int row) const;
    /// The six neighbours of a vertex, for the reference smoothing.
    std::array<int, 6> neighbours(int index) const;

    int columns;
    int rows;
    std::vector<std::array<double, 3>> points;
    /// Three vertex indices per triangle, counter-clockwise seen from outside. Rows 0 to
    /// rows − 2 come quad by quad, the lower triangle of each quad (below its rising diagonal)
    /// first. The last row, which closes the torus onto row 0, comes in the order lower 0,
    /// upper 1, lower 1, upper 2, …, lower (columns − 1), upper 0. A triangle of that row
    /// added beside no other of its row touches the surface at a corner without sharing an
    /// edge there, and TopoMesh pairs a new half-edge with its twin only by walking the fan
    /// of the twin's origin from that vertex's first edge, which cannot cross such a touch.
    /// In this order the next triangle always pairs through a vertex whose fan is whole, and
    /// the touch is closed before any lookup needs to cross it; quad by quad, every diagonal
    /// of the last row would stay unpaired.
    std::vector<std::array<int, 3>> triangles;
};

/// The grid of the benchmarks: 1000 × 500 vertices, 1,000,000 triangles, built once. For
/// profiling on a smaller mesh, the environment variable TOPO_BENCH_GRID=<columns>x<rows>
/// (both even, at least 4) sets another size.
const TorusGrid& benchGrid();

/// The sum of the squared distances of all points from the origin after one in-place smoothing pass
/// over the grid's vertices in index order (each to the mean of its six neighbours): the reference
/// every library's smoothing is checked against.
double referenceSmoothingSum(const TorusGrid& grid);

} // namespace topoBench
