#pragma once

#include <benchmark/benchmark.h>

#include "bench/topomesh/TaskTimer.h"
#include "bench/topomesh/TorusGrid.h"

// The benchmark functions of each library, one per task, all on benchGrid() and all checked
// against the same expected figures. The task names key the recorded times.

namespace topoBench {

inline constexpr const char* buildTask = "Build";
inline constexpr const char* circulateTask = "Circulate";
inline constexpr const char* smoothTask = "Smooth";
inline constexpr const char* sqrt3Task = "Sqrt3";
inline constexpr const char* splitRemoveTask = "SplitRemove";
inline constexpr const char* splitEdgesTask = "SplitEdges";
inline constexpr const char* copyTask = "Copy";

/// The figures of the torus as built from the grid.
MeshFigures builtFigures(const TorusGrid& grid);
/// After one √3 step: a centre vertex per face, three faces per face, all valences 6.
MeshFigures sqrt3Figures(const TorusGrid& grid);
/// After a vertex in every edge: every face a hexagon, the new vertices of valence 2.
MeshFigures splitEdgesFigures(const TorusGrid& grid);
/// An empty string when the face and vertex counts circulated are those of the torus.
std::string compareCirculated(const TorusGrid& grid, long vertexFaces, long faceVertices);
/// An empty string when `sumOfSquares` (see referenceSmoothingSum) matches the reference.
std::string compareSmoothed(const TorusGrid& grid, double sumOfSquares);

namespace cgalSide {
void build(benchmark::State& state);
void circulate(benchmark::State& state);
void smooth(benchmark::State& state);
void sqrt3(benchmark::State& state);
void splitRemove(benchmark::State& state);
void splitEdges(benchmark::State& state);
void copy(benchmark::State& state);
void memory(benchmark::State& state);
} // namespace cgalSide

namespace openMeshSide {
void build(benchmark::State& state);
void circulate(benchmark::State& state);
void smooth(benchmark::State& state);
void sqrt3(benchmark::State& state);
void splitRemove(benchmark::State& state);
void splitEdges(benchmark::State& state);
void copy(benchmark::State& state);
void memory(benchmark::State& state);
} // namespace openMeshSide

// The memory benchmarks report "bytes_per_vertex": the resident bytes added while building,
// per vertex. Formwork's also reports getSizeInBytes() per vertex and their ratio.
namespace formworkSide {
void build(benchmark::State& state);
void circulate(benchmark::State& state);
void smooth(benchmark::State& state);
void sqrt3(benchmark::State& state);
void splitRemove(benchmark::State& state);
void splitEdges(benchmark::State& state);
void copy(benchmark::State& state);
void memory(benchmark::State& state);
/// `setState` back and forth over an edit that modifies about 1,000,000 records.
void setState(benchmark::State& state);
} // namespace formworkSide

} // namespace topoBench
