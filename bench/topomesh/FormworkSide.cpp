// Formwork's side of the half-edge mesh benchmarks: TopoMesh with its default allocator,
// edited with its own operations, transactions off except in the state benchmark.

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench/support/MemcpyBaseline.h"
#include "bench/topomesh/LibrarySides.h"
#include "geom/topomesh/SubdivideSqrt3.h"
#include "geom/topomesh/TopoMesh.h"
#include "geom/topomesh/TopoMeshEdgeVertexIterator.h"

namespace topoBench::formworkSide {

namespace {

using koGeom::TopoMesh;
using koGeom::TopoMeshEdge;
using koGeom::TopoMeshEdgeVertexIterator;
using koGeom::TopoMeshFace;
using koGeom::TopoMeshVertex;
using EntityType = koGeom::TopoMeshTypedefs::EntityType;

struct Built {
    ko::Reference<TopoMesh> mesh;
    std::vector<TopoMeshVertex> vertices; ///< In the grid's order.
};

// allocVertex for each point, then allocTriangle for each triangle.
Built build(const TorusGrid& grid) {
    Built built{new TopoMesh, {}};
    built.vertices.reserve(grid.points.size());
    for (const auto& point : grid.points) {
        built.vertices.push_back(built.mesh->allocVertex({point[0], point[1], point[2]}));
    }
    const std::vector<TopoMeshVertex>& vertices = built.vertices;
    for (const auto& triangle : grid.triangles) {
        built.mesh->allocTriangle(vertices[triangle[0]], vertices[triangle[1]],
                                  vertices[triangle[2]]);
    }
    return built;
}

// The half-edge links of every edge, beside the figures: each edge is its next's prev and
// its prev's next, shares its face with its next, and has a twin (the torus is closed) that
// runs the other way. Walks the three lists and compares them with the counts.
std::string checkLinks(const TopoMesh& mesh) {
    int edges = 0;
    for (TopoMeshEdge edge = mesh.firstEdge(); edge; edge = edge.nextInMesh(), ++edges) {
        const TopoMeshEdge twin = edge.twin();
        if (edge.next().prev() != edge || edge.prev().next() != edge ||
            edge.next().face() != edge.face() || !twin || twin.twin() != edge ||
            twin.v1() != edge.v2() || twin.v2() != edge.v1()) {
            return "broken links at edge " + std::to_string(edges);
        }
    }
    int vertices = 0;
    for (TopoMeshVertex vertex = mesh.firstVertex(); vertex; vertex = vertex.nextInMesh()) {
        if (vertex.firstEdge() && vertex.firstEdge().v1() != vertex) {
            return "a first edge not starting at its vertex";
        }
        ++vertices;
    }
    int faces = 0;
    for (TopoMeshFace face = mesh.firstFace(); face; face = face.nextInMesh()) {
        if (face.firstEdge().face() != face) {
            return "a first edge not in its face";
        }
        ++faces;
    }
    if (edges != mesh.numEdges() || vertices != mesh.numVertices() || faces != mesh.numFaces()) {
        return "lists and counts differ";
    }
    return {};
}

MeshFigures figures(const TopoMesh& mesh) {
    MeshFigures result;
    result.vertices = mesh.numVertices();
    result.edges = mesh.numEdges() / 2;
    result.faces = mesh.numFaces();
    for (TopoMeshVertex vertex = mesh.firstVertex(); vertex; vertex = vertex.nextInMesh()) {
        ++result.valences[vertex.valence()];
    }
    return result;
}

std::string compareMesh(const TopoMesh& mesh, const MeshFigures& want) {
    std::string error = checkLinks(mesh);
    return error.empty() ? compareFigures(figures(mesh), want) : error;
}

std::vector<TopoMeshFace> listFaces(const TopoMesh& mesh) {
    std::vector<TopoMeshFace> faces;
    faces.reserve(static_cast<std::size_t>(mesh.numFaces()));
    for (TopoMeshFace face = mesh.firstFace(); face; face = face.nextInMesh()) {
        faces.push_back(face);
    }
    return faces;
}

// One half-edge of each undirected edge: the primary one.
std::vector<TopoMeshEdge> listPrimaryEdges(const TopoMesh& mesh) {
    std::vector<TopoMeshEdge> edges;
    edges.reserve(static_cast<std::size_t>(mesh.numEdges() / 2));
    for (TopoMeshEdge edge = mesh.firstEdge(); edge; edge = edge.nextInMesh()) {
        if (edge.isPrimary()) {
            edges.push_back(edge);
        }
    }
    return edges;
}

// Builds the input of an edit before each iteration, times the edit, checks the mesh
// against `want` and frees it after.
template <class Edit>
void runEdit(benchmark::State& state, const char* task, const MeshFigures& want, Edit&& edit) {
    const TorusGrid& grid = benchGrid();
    ko::Reference<TopoMesh> mesh;
    runTask(
        state, task, Library::Formwork, [&] { mesh = build(grid).mesh; }, [&] { edit(*mesh); },
        [&] {
            std::string error = compareMesh(*mesh, want);
            mesh.reset();
            return error;
        });
}

} // namespace

void build(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    ko::Reference<TopoMesh> mesh;
    runTask(
        state, buildTask, Library::Formwork, [] {}, [&] { mesh = build(grid).mesh; },
        [&] {
            std::string error = compareMesh(*mesh, builtFigures(grid));
            mesh.reset();
            return error;
        });
}

// The fan of each vertex (TopoMeshEdgeVertexIterator), counting the faces of its half-edges;
// the loop of each face, by next from its first edge.
void circulate(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const ko::Reference<TopoMesh> mesh = build(grid).mesh;
    long vertexFaces = 0;
    long faceVertices = 0;
    runTask(
        state, circulateTask, Library::Formwork, [&] { vertexFaces = faceVertices = 0; },
        [&] {
            for (TopoMeshVertex vertex = mesh->firstVertex(); vertex;
                 vertex = vertex.nextInMesh()) {
                for (TopoMeshEdgeVertexIterator fan(vertex); fan.valid(); fan.next()) {
                    if (fan.edge().face()) {
                        ++vertexFaces;
                    }
                }
            }
            for (TopoMeshFace face = mesh->firstFace(); face; face = face.nextInMesh()) {
                const TopoMeshEdge first = face.firstEdge();
                TopoMeshEdge edge = first;
                do {
                    ++faceVertices;
                    edge = edge.next();
                } while (edge != first);
            }
            benchmark::DoNotOptimize(vertexFaces);
            benchmark::DoNotOptimize(faceVertices);
        },
        [&] { return compareCirculated(grid, vertexFaces, faceVertices); });
}

// Each vertex in turn to the mean of the ends of its fan, by setPoint.
void smooth(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    ko::Reference<TopoMesh> mesh;
    runTask(
        state, smoothTask, Library::Formwork, [&] { mesh = build(grid).mesh; },
        [&] {
            for (TopoMeshVertex vertex = mesh->firstVertex(); vertex;
                 vertex = vertex.nextInMesh()) {
                koLinear::Vector sum(0.0, 0.0, 0.0);
                int count = 0;
                for (TopoMeshEdgeVertexIterator fan(vertex); fan.valid(); fan.next()) {
                    sum += koLinear::Vector(fan.edge().v2().point());
                    ++count;
                }
                mesh->setPoint(vertex, koLinear::Point(sum / count));
            }
        },
        [&] {
            double sum = 0.0;
            for (TopoMeshVertex vertex = mesh->firstVertex(); vertex;
                 vertex = vertex.nextInMesh()) {
                sum += koLinear::Vector(vertex.point()).length2();
            }
            std::string error = compareMesh(*mesh, builtFigures(grid));
            mesh.reset();
            return error.empty() ? compareSmoothed(grid, sum) : error;
        });
}

// subdivideSqrt3 with the old vertices kept: subdivideFace(face, centroid) on each old face,
// then swapEdge on each old edge's primary half-edge, as the peers do.
void sqrt3(benchmark::State& state) {
    runEdit(state, sqrt3Task, sqrt3Figures(benchGrid()),
            [](TopoMesh& mesh) { koGeom::subdivideSqrt3(mesh, koGeom::Sqrt3Vertices::Kept); });
}

// subdivideFace(face, centroid) on each face, then deleteVertex of each new centre vertex
// (valence 3), which puts back one triangle over the three corners.
void splitRemove(benchmark::State& state) {
    runEdit(state, splitRemoveTask, builtFigures(benchGrid()), [](TopoMesh& mesh) {
        const std::vector<TopoMeshFace> faces = listFaces(mesh);
        std::vector<TopoMeshVertex> centres;
        centres.reserve(faces.size());
        for (const TopoMeshFace face : faces) {
            centres.push_back(mesh.subdivideFace(face, face.centroid()));
        }
        for (const TopoMeshVertex centre : centres) {
            mesh.deleteVertex(centre);
        }
    });
}

// subdivideEdge(edge, midpoint) on each old edge's primary half-edge.
void splitEdges(benchmark::State& state) {
    runEdit(state, splitEdgesTask, splitEdgesFigures(benchGrid()), [](TopoMesh& mesh) {
        for (const TopoMeshEdge edge : listPrimaryEdges(mesh)) {
            mesh.subdivideEdge(edge, edge.midpoint());
        }
    });
}

// The copy constructor.
void copy(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const ko::Reference<TopoMesh> source = build(grid).mesh;
    ko::Reference<TopoMesh> copied;
    runTask(
        state, copyTask, Library::Formwork, [] {},
        [&] { copied = ko::Reference<TopoMesh>(new TopoMesh(*source)); },
        [&] {
            std::string error = compareMesh(*copied, builtFigures(grid));
            copied.reset();
            return error;
        });
}

// Also "size_per_vertex": (getSizeInBytes() − 152) per vertex, the fixed record sizes, and
// "vs_records": the measured bytes over them.
void memory(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    double perVertex = 0.0;
    double sizePerVertex = 0.0;
    for (auto _ : state) {
        const long before = residentBytes();
        const ko::Reference<TopoMesh> mesh = build(grid).mesh;
        perVertex = static_cast<double>(residentBytes() - before) / grid.numVertices();
        sizePerVertex = static_cast<double>(mesh->getSizeInBytes() - 152) / grid.numVertices();
    }
    state.counters["bytes_per_vertex"] = perVertex;
    state.counters["size_per_vertex"] = sizePerVertex;
    state.counters["vs_records"] = perVertex / sizePerVertex;
}

// The edit: swapEdge on the diagonal of every other quad in both directions of the grid,
// 90,910 quads whose corners are all distinct. Each swap modifies the six half-edges and two
// faces of its quad and three of its corners (the fourth already has the first edge it is
// given): 1,000,009 records on this grid, counted by getChanges. One iteration is setState to the
// state before the edit and back to the one after, which swaps every modified record with its
// snapshot twice; the bytes are the modified records' sizes, twice.
void setState(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    Built built = build(grid);
    TopoMesh& mesh = *built.mesh;
    mesh.enableTransactions();
    const ko::Reference<koGeom::TopoMeshState> before = mesh.createState();
    const int numQuads = std::min(90'910, grid.columns / 2 * (grid.rows / 2));
    int swapped = 0;
    for (int column = 0; column < grid.columns && swapped < numQuads; column += 2) {
        for (int row = 0; row < grid.rows && swapped < numQuads; row += 2, ++swapped) {
            const TopoMeshVertex corner = built.vertices[grid.vertex(column, row)];
            const TopoMeshVertex opposite = built.vertices[grid.vertex(column + 1, row + 1)];
            mesh.swapEdge(TopoMesh::findEdge(corner, opposite));
        }
    }
    ko::unordered_map<koGeom::TopoMeshEntity, koGeom::TopoMeshTypedefs::BulletinType> changes;
    const int touched = mesh.getChanges(changes);
    std::size_t bytes = 0;
    for (const auto& [entity, bulletin] : changes) {
        bytes += entity.getType() == EntityType::Vertex ? 48
                 : entity.getType() == EntityType::Edge ? 56
                                                        : 24;
    }
    const ko::Reference<koGeom::TopoMeshState> after = mesh.createState();
    const MeshFigures edited = torusFigures(
        grid.numVertices(), grid.numEdges(), grid.numTriangles(),
        {{5, 2L * numQuads}, {6, grid.numVertices() - 4L * numQuads}, {7, 2L * numQuads}});
    std::string error = compareMesh(mesh, edited);
    formworkBench::runAgainstMemcpy(
        state, 2 * bytes, [] {},
        [&] {
            mesh.setState(before);
            mesh.setState(after);
        });
    if (error.empty()) {
        error = compareMesh(mesh, edited);
    }
    if (error.empty()) {
        mesh.setState(before);
        error = compareMesh(mesh, builtFigures(grid));
    }
    if (!error.empty()) {
        state.SkipWithError(error.c_str());
    }
    state.counters["records"] = touched;
    state.counters["bytes"] = static_cast<double>(bytes);
}

} // namespace topoBench::formworkSide
