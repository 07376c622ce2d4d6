#include "bench/topomesh/TaskTimer.h"

#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <sstream>
#include <utility>
#include <vector>

namespace topoBench {

namespace {

const char* sideName(Library library) {
    switch (library) {
        case Library::Formwork:
            return "Formwork";
        case Library::CGAL:
            return "CGAL";
        default:
            return "OpenMesh";
    }
}

} // namespace

MeshFigures torusFigures(long vertices, long edges, long faces, std::map<int, long> valences) {
    MeshFigures figures;
    figures.vertices = vertices;
    figures.edges = edges;
    figures.faces = faces;
    figures.valences = std::move(valences);
    std::erase_if(figures.valences, [](const auto& entry) { return entry.second == 0; });
    return figures;
}

std::string compareFigures(const MeshFigures& got, const MeshFigures& want) {
    std::ostringstream out;
    if (got.vertices != want.vertices || got.edges != want.edges || got.faces != want.faces) {
        out << "counts V E F " << got.vertices << ' ' << got.edges << ' ' << got.faces
            << ", expected " << want.vertices << ' ' << want.edges << ' ' << want.faces << "; ";
    }
    if (got.vertices - got.edges + got.faces != 0) {
        out << "Euler characteristic " << got.vertices - got.edges + got.faces << "; ";
    }
    if (got.valences != want.valences) {
        out << "valences";
        for (const auto& [valence, count] : got.valences) {
            out << ' ' << valence << ':' << count;
        }
        out << "; ";
    }
    return out.str();
}

void recordSeconds(const std::string& task, Library library, double seconds) {
    formworkBench::recordSeconds(task, sideName(library), seconds);
}

void reportRatios(benchmark::State& state, const std::string& task, double seconds) {
    for (const Library peer : {Library::CGAL, Library::OpenMesh}) {
        if (const auto median = formworkBench::medianSeconds(task, sideName(peer))) {
            state.counters[std::string("vs_") + sideName(peer)] = seconds / *median;
        }
    }
}

long residentBytes() {
    malloc_trim(0);
    long size = 0;
    long resident = 0;
    std::FILE* statm = std::fopen("/proc/self/statm", "r");
    if (statm == nullptr) {
        return -1;
    }
    const int read = std::fscanf(statm, "%ld %ld", &size, &resident);
    std::fclose(statm);
    return read == 2 ? resident * sysconf(_SC_PAGESIZE) : -1;
}

} // namespace topoBench

// The expected figures of the tasks, shared by the three libraries' checks.
#include "bench/topomesh/LibrarySides.h"

#include <cmath>

namespace topoBench {

MeshFigures builtFigures(const TorusGrid& grid) {
    return torusFigures(grid.numVertices(), grid.numEdges(), grid.numTriangles(),
                        {{6, grid.numVertices()}});
}

MeshFigures sqrt3Figures(const TorusGrid& grid) {
    const long vertices = grid.numVertices() + grid.numTriangles();
    return torusFigures(vertices, 3L * grid.numEdges(), 3L * grid.numTriangles(), {{6, vertices}});
}

MeshFigures splitEdgesFigures(const TorusGrid& grid) {
    return torusFigures(grid.numVertices() + grid.numEdges(), 2L * grid.numEdges(),
                        grid.numTriangles(), {{2, grid.numEdges()}, {6, grid.numVertices()}});
}

std::string compareCirculated(const TorusGrid& grid, long vertexFaces, long faceVertices) {
    if (vertexFaces == 6L * grid.numVertices() && faceVertices == 3L * grid.numTriangles()) {
        return {};
    }
    return "circulated " + std::to_string(vertexFaces) + " vertex faces and " +
           std::to_string(faceVertices) + " face vertices";
}

std::string compareSmoothed(const TorusGrid& grid, double sumOfSquares) {
    static const double reference = referenceSmoothingSum(grid);
    if (std::abs(sumOfSquares - reference) <= 1e-9 * reference) {
        return {};
    }
    return "smoothed sum of squares " + std::to_string(sumOfSquares) + ", expected " +
           std::to_string(reference);
}

} // namespace topoBench
