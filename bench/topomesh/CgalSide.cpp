// CGAL's side of the half-edge mesh benchmarks: Surface_mesh over double points, edited with
// its Euler operations.

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/boost/graph/Euler_operations.h>

#include <memory>
#include <vector>

#include "bench/topomesh/LibrarySides.h"

namespace topoBench::cgalSide {

namespace {

using Kernel = CGAL::Simple_cartesian<double>;
using Point = Kernel::Point_3;
using Mesh = CGAL::Surface_mesh<Point>;
using Vertex = Mesh::Vertex_index;
using Halfedge = Mesh::Halfedge_index;

// add_vertex for each point, then add_face for each triangle, into storage reserved for
// the final counts.
std::unique_ptr<Mesh> build(const TorusGrid& grid) {
    auto mesh = std::make_unique<Mesh>();
    mesh->reserve(grid.numVertices(), grid.numEdges(), grid.numTriangles());
    std::vector<Vertex> vertices;
    vertices.reserve(grid.points.size());
    for (const auto& point : grid.points) {
        vertices.push_back(mesh->add_vertex(Point(point[0], point[1], point[2])));
    }
    for (const auto& triangle : grid.triangles) {
        mesh->add_face(vertices[triangle[0]], vertices[triangle[1]], vertices[triangle[2]]);
    }
    return mesh;
}

MeshFigures figures(const Mesh& mesh) {
    MeshFigures result;
    result.vertices = mesh.number_of_vertices();
    result.edges = mesh.number_of_edges();
    result.faces = mesh.number_of_faces();
    for (const Vertex vertex : mesh.vertices()) {
        ++result.valences[static_cast<int>(mesh.degree(vertex))];
    }
    return result;
}

Point centroid(const Mesh& mesh, Halfedge start) {
    double x = 0.0, y = 0.0, z = 0.0;
    int count = 0;
    for (const Vertex vertex : CGAL::vertices_around_face(start, mesh)) {
        const Point& point = mesh.point(vertex);
        x += point.x();
        y += point.y();
        z += point.z();
        ++count;
    }
    return {x / count, y / count, z / count};
}

// Builds the input of an edit before each iteration, times the edit, checks the mesh
// against `want` and frees it after.
template <class Edit>
void runEdit(benchmark::State& state, const char* task, const MeshFigures& want, Edit&& edit) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<Mesh> mesh;
    runTask(
        state, task, Library::CGAL, [&] { mesh = build(grid); }, [&] { edit(*mesh); },
        [&] {
            std::string error = compareFigures(figures(*mesh), want);
            mesh.reset();
            return error;
        });
}

} // namespace

void build(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<Mesh> mesh;
    runTask(
        state, buildTask, Library::CGAL, [] {}, [&] { mesh = build(grid); },
        [&] {
            std::string error = compareFigures(figures(*mesh), builtFigures(grid));
            mesh.reset();
            return error;
        });
}

// faces_around_target of each vertex, vertices_around_face of each face.
void circulate(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const std::unique_ptr<Mesh> mesh = build(grid);
    long vertexFaces = 0;
    long faceVertices = 0;
    runTask(
        state, circulateTask, Library::CGAL, [&] { vertexFaces = faceVertices = 0; },
        [&] {
            for (const Vertex vertex : mesh->vertices()) {
                for ([[maybe_unused]] const auto face :
                     CGAL::faces_around_target(mesh->halfedge(vertex), *mesh)) {
                    ++vertexFaces;
                }
            }
            for (const auto face : mesh->faces()) {
                for ([[maybe_unused]] const Vertex vertex :
                     CGAL::vertices_around_face(mesh->halfedge(face), *mesh)) {
                    ++faceVertices;
                }
            }
            benchmark::DoNotOptimize(vertexFaces);
            benchmark::DoNotOptimize(faceVertices);
        },
        [&] { return compareCirculated(grid, vertexFaces, faceVertices); });
}

// Each vertex in turn to the mean of vertices_around_target, written in place.
void smooth(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    std::unique_ptr<Mesh> mesh;
    runTask(
        state, smoothTask, Library::CGAL, [&] { mesh = build(grid); },
        [&] {
            for (const Vertex vertex : mesh->vertices()) {
                double x = 0.0, y = 0.0, z = 0.0;
                int count = 0;
                for (const Vertex neighbour :
                     CGAL::vertices_around_target(mesh->halfedge(vertex), *mesh)) {
                    const Point& point = mesh->point(neighbour);
                    x += point.x();
                    y += point.y();
                    z += point.z();
                    ++count;
                }
                mesh->point(vertex) = Point(x / count, y / count, z / count);
            }
        },
        [&] {
            double sum = 0.0;
            for (const Vertex vertex : mesh->vertices()) {
                const Point& point = mesh->point(vertex);
                sum += point.x() * point.x() + point.y() * point.y() + point.z() * point.z();
            }
            std::string error = compareFigures(figures(*mesh), builtFigures(grid));
            mesh.reset();
            return error.empty() ? compareSmoothed(grid, sum) : error;
        });
}

// Euler::add_center_vertex on each old face with the new vertex put at the face's centroid,
// then Euler::flip_edge on each old edge.
void sqrt3(benchmark::State& state) {
    runEdit(state, sqrt3Task, sqrt3Figures(benchGrid()), [](Mesh& mesh) {
        std::vector<Halfedge> oldEdges;
        oldEdges.reserve(mesh.number_of_edges());
        for (const auto edge : mesh.edges()) {
            oldEdges.push_back(mesh.halfedge(edge));
        }
        std::vector<Halfedge> oldFaces;
        oldFaces.reserve(mesh.number_of_faces());
        for (const auto face : mesh.faces()) {
            oldFaces.push_back(mesh.halfedge(face));
        }
        for (const Halfedge start : oldFaces) {
            const Point centre = centroid(mesh, start);
            mesh.point(mesh.target(CGAL::Euler::add_center_vertex(start, mesh))) = centre;
        }
        for (const Halfedge edge : oldEdges) {
            CGAL::Euler::flip_edge(edge, mesh);
        }
    });
}

// Euler::add_center_vertex on each face at its centroid, then Euler::remove_center_vertex of
// each new vertex (the removed elements stay as garbage, not collected).
void splitRemove(benchmark::State& state) {
    runEdit(state, splitRemoveTask, builtFigures(benchGrid()), [](Mesh& mesh) {
        std::vector<Halfedge> oldFaces;
        oldFaces.reserve(mesh.number_of_faces());
        for (const auto face : mesh.faces()) {
            oldFaces.push_back(mesh.halfedge(face));
        }
        std::vector<Halfedge> centres;
        centres.reserve(oldFaces.size());
        for (const Halfedge start : oldFaces) {
            const Point centre = centroid(mesh, start);
            const Halfedge toCentre = CGAL::Euler::add_center_vertex(start, mesh);
            mesh.point(mesh.target(toCentre)) = centre;
            centres.push_back(toCentre);
        }
        for (const Halfedge toCentre : centres) {
            CGAL::Euler::remove_center_vertex(toCentre, mesh);
        }
    });
}

// Euler::split_edge on one half-edge of each old edge, the new vertex put at the midpoint.
void splitEdges(benchmark::State& state) {
    runEdit(state, splitEdgesTask, splitEdgesFigures(benchGrid()), [](Mesh& mesh) {
        std::vector<Halfedge> oldEdges;
        oldEdges.reserve(mesh.number_of_edges());
        for (const auto edge : mesh.edges()) {
            oldEdges.push_back(mesh.halfedge(edge));
        }
        for (const Halfedge edge : oldEdges) {
            const Point midpoint =
                CGAL::midpoint(mesh.point(mesh.source(edge)), mesh.point(mesh.target(edge)));
            mesh.point(mesh.target(CGAL::Euler::split_edge(edge, mesh))) = midpoint;
        }
    });
}

// The copy constructor.
void copy(benchmark::State& state) {
    const TorusGrid& grid = benchGrid();
    const std::unique_ptr<Mesh> source = build(grid);
    std::unique_ptr<Mesh> copied;
    runTask(
        state, copyTask, Library::CGAL, [] {}, [&] { copied = std::make_unique<Mesh>(*source); },
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
        const std::unique_ptr<Mesh> mesh = build(grid);
        perVertex = static_cast<double>(residentBytes() - before) / grid.numVertices();
    }
    state.counters["bytes_per_vertex"] = perVertex;
}

} // namespace topoBench::cgalSide
