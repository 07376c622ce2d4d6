// OpenMesh's side of the half-edge mesh benchmarks: the array-kernel triangle mesh over double
// points (a polygon mesh where an edit leaves polygons), edited with its own operations.

#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>
#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>

#include <memory>
#include <vector>

#include "bench/topomesh/LibrarySides.h"

namespace topoBench::openMeshSide {

namespace {

using TriMesh = OpenMesh::TriMesh_ArrayKernelT<OpenMesh::DefaultTraitsDouble>;
using PolyMesh = OpenMesh::PolyMesh_ArrayKernelT<OpenMesh::DefaultTraitsDouble>;

enum class Status { None, Requested };

// add_vertex for each point, then add_face for each triangle, into storage reserved for
// the final counts. Collapsing needs the status attributes, requested first when asked for.
template <class Mesh>
std::unique_ptr<Mesh> build(const TorusGrid& grid, Status status = Status::None) {
    auto mesh = std::make_unique<Mesh>();
    if (status == Status::Requested) {
        mesh->request_vertex_status();
        mesh->request_edge_status();
        mesh->request_face_status();
    }
    mesh->reserve(grid.numVertices(), grid.numEdges(), grid.numTriangles());
    std::vector<OpenMesh::VertexHandle> vertices;
    vertices.reserve(grid.points.size());
    for (const auto& point : grid.points) {
        vertices.push_back(mesh->add_vertex({point[0], point[1], point[2]}));
    }
    for (const auto& triangle : grid.triangles) {
        mesh->add_face(vertices[triangle[0]], vertices[triangle[1]], vertices[triangle[2]]);
    }
    return mesh;
}

// Counted over the mesh's ranges, which skip elements marked deleted.
template <class Mesh>
MeshFigures figures(const Mesh& mesh) {
    MeshFigures result;
    for (const auto vertex : mesh.vertices()) {
        ++result.vertices;
        ++result.valences[static_cast<int>(mesh.valence(vertex))];
    }
    for ([[maybe_unused]] const auto edge : mesh.edges()) {
        ++result.edges;
    }
    for ([[maybe_unused]] const auto face : mesh.faces()) {
        ++result.faces;
    }
    return result;
}

template <class Mesh>
typename Mesh::Point centroid(const Mesh& mesh, OpenMesh::FaceHandle face) {
    typename Mesh::Point sum(0.0, 0.0, 0.0);
    int count = 0;
    for (const auto vertex : mesh.fv_range(face)) {
        sum += mesh.point(vertex);
        ++count;
    }
    return sum / count;
}

// Builds the input of an edit before each iteration, times the edit, checks the mesh
// against `want` and frees it after.
template <class Mesh, class Edit>
void runEdit(benchmark::State& state, const char* task, const MeshFigures& want, Status status,
             Edit&& edit) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<Mesh> mesh;
    runTask(
        state, task, Library::OpenMesh, [&] { mesh = build<Mesh>(grid, status); },
        [&] { edit(*mesh); },
        [&] {
            std::string error = compareFigures(figures(*mesh), want);
            mesh.reset();
            return error;
        });
}

} // namespace

void build(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<TriMesh> mesh;
    runTask(
        state, buildTask, Library::OpenMesh, [] {}, [&] { mesh = build<TriMesh>(grid); },
        [&] {
            std::string error = compareFigures(figures(*mesh), builtFigures(grid));
            mesh.reset();
            return error;
        });
}

// The vertex-face circulator of each vertex, the face-vertex circulator of each face.
void circulate(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const std::unique_ptr<TriMesh> mesh = build<TriMesh>(grid);
    long vertexFaces = 0;
    long faceVertices = 0;
    runTask(
        state, circulateTask, Library::OpenMesh, [&] { vertexFaces = faceVertices = 0; },
        [&] {
            for (const auto vertex : mesh->vertices()) {
                for (auto face = mesh->cvf_iter(vertex); face.is_valid(); ++face) {
                    ++vertexFaces;
                }
            }
            for (const auto face : mesh->faces()) {
                for (auto vertex = mesh->cfv_iter(face); vertex.is_valid(); ++vertex) {
                    ++faceVertices;
                }
            }
            benchmark::DoNotOptimize(vertexFaces);
            benchmark::DoNotOptimize(faceVertices);
        },
        [&] { return compareCirculated(grid, vertexFaces, faceVertices); });
}

// Each vertex in turn to the mean of its vertex-vertex circulator, written in place.
void smooth(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<TriMesh> mesh;
    runTask(
        state, smoothTask, Library::OpenMesh, [&] { mesh = build<TriMesh>(grid); },
        [&] {
            for (const auto vertex : mesh->vertices()) {
                TriMesh::Point sum(0.0, 0.0, 0.0);
                int count = 0;
                for (auto neighbour = mesh->cvv_iter(vertex); neighbour.is_valid(); ++neighbour) {
                    sum += mesh->point(*neighbour);
                    ++count;
                }
                mesh->set_point(vertex, sum / count);
            }
        },
        [&] {
            double sum = 0.0;
            for (const auto vertex : mesh->vertices()) {
                sum += mesh->point(vertex).sqrnorm();
            }
            std::string error = compareFigures(figures(*mesh), builtFigures(grid));
            mesh.reset();
            return error.empty() ? compareSmoothed(grid, sum) : error;
        });
}

// split(face, centroid) on each old face, then flip on each old edge.
void sqrt3(benchmark::State& state) {
    runEdit<TriMesh>(state, sqrt3Task, sqrt3Figures(benchGrid()), Status::None, [](TriMesh& mesh) {
        const int oldEdges = static_cast<int>(mesh.n_edges());
        const int oldFaces = static_cast<int>(mesh.n_faces());
        for (int face = 0; face < oldFaces; ++face) {
            const OpenMesh::FaceHandle handle(face);
            mesh.split(handle, centroid(mesh, handle));
        }
        for (int edge = 0; edge < oldEdges; ++edge) {
            mesh.flip(OpenMesh::EdgeHandle(edge));
        }
    });
}

// split(face, centroid) on each face, then collapse of an outgoing half-edge of each new
// vertex, which removes it with the two triangles on that half-edge (the removed elements
// stay marked deleted, not collected).
void splitRemove(benchmark::State& state) {
    runEdit<TriMesh>(state, splitRemoveTask, builtFigures(benchGrid()), Status::Requested,
                     [](TriMesh& mesh) {
                         const int oldFaces = static_cast<int>(mesh.n_faces());
                         std::vector<OpenMesh::VertexHandle> centres;
                         centres.reserve(static_cast<std::size_t>(oldFaces));
                         for (int face = 0; face < oldFaces; ++face) {
                             const OpenMesh::FaceHandle handle(face);
                             centres.push_back(mesh.split(handle, centroid(mesh, handle)));
                         }
                         for (const auto centre : centres) {
                             mesh.collapse(mesh.halfedge_handle(centre));
                         }
                     });
}

// On a polygon mesh: split_edge of each old edge at a new vertex at its midpoint.
void splitEdges(benchmark::State& state) {
    runEdit<PolyMesh>(state, splitEdgesTask, splitEdgesFigures(benchGrid()), Status::None,
                      [](PolyMesh& mesh) {
                          const int oldEdges = static_cast<int>(mesh.n_edges());
                          for (int edge = 0; edge < oldEdges; ++edge) {
                              const OpenMesh::EdgeHandle handle(edge);
                              const auto halfedge = mesh.halfedge_handle(handle, 0);
                              const auto midpoint = (mesh.point(mesh.from_vertex_handle(halfedge)) +
                                                     mesh.point(mesh.to_vertex_handle(halfedge))) *
                                                    0.5;
                              mesh.split_edge(handle, mesh.add_vertex(midpoint));
                          }
                      });
}

// The copy constructor.
void copy(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const std::unique_ptr<TriMesh> source = build<TriMesh>(grid);
    std::unique_ptr<TriMesh> copied;
    runTask(
        state, copyTask, Library::OpenMesh, [] {},
        [&] { copied = std::make_unique<TriMesh>(*source); },
        [&] {
            std::string error = compareFigures(figures(*copied), builtFigures(grid));
            copied.reset();
            return error;
        });
}

void memory(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    double perVertex = 0.0;
    for (auto _ : state) {
        const long before = residentBytes();
        const std::unique_ptr<TriMesh> mesh = build<TriMesh>(grid);
        perVertex = static_cast<double>(residentBytes() - before) / grid.numVertices();
    }
    state.counters["bytes_per_vertex"] = perVertex;
}

} // namespace topoBench::openMeshSide
