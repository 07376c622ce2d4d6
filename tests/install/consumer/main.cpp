// A program outside the project, built against the library as a host builds it (installed,
// static or shared, through CMake or pkg-config, or from the source tree). It touches every
// subsystem and prints what it found, one line each, so that every way of building it can be
// held to the same report (expected.txt); it exits non-zero when anything is off.

#include <cmath>
#include <cstdio>
#include <vector>

#include "crate/Crate.h"
#include "geom/Formwork.h"

using namespace koGeom;

namespace {

struct Listener : koRTB::SignalClient {
    void onModified(EntityModification&) { ++notices; }
    int notices = 0;
};

// A flat grid of n × n vertices on z = 0 with two triangles per cell.
void makeGrid(CompactMesh& mesh, int n) {
    std::vector<MeshVertex> vertices(n * n);
    for (int i = 0; i < n * n; ++i) {
        const double at[3] = {double(i % n), double(i / n), 0.0};
        vertices[i].set(at);
    }
    std::vector<int> corners;
    for (int y = 0; y + 1 < n; ++y) {
        for (int x = 0; x + 1 < n; ++x) {
            const int a = y * n + x, b = a + 1, c = a + n, d = c + 1;
            corners.insert(corners.end(), {a, b, d, a, d, c});
        }
    }
    mesh.copyVertices(n * n, vertices.data());
    mesh.copyTriangles(int(corners.size() / 3), corners.data());
}

int check(bool good, const char* what) {
    if (!good) std::printf("wrong: %s\n", what);
    return good ? 0 : 1;
}

} // namespace

int main() {
    int failures = 0;

    // A compact mesh whose listener hears a move.
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    makeGrid(*mesh, 5);
    Listener listener;
    mesh->modifiedSignal.connect(listener, &Listener::onModified);
    MeshModification moved(mesh.get(), MeshModification::Type::Transformed, nullptr);
    mesh->modified(moved);
    BoundingBox box;
    mesh->getBoundingBox(box);
    std::printf("mesh: %d vertices, %d triangles, %d notice\n", mesh->getNumVertices(),
                mesh->getNumTriangles(), listener.notices);

    // A half-edge edit undone through a saved state.
    ko::Reference<TopoMesh> topo(new TopoMesh);
    TopoMeshImpl& impl = *topo->getImpl();
    TopoMeshVertex v[4] = {impl.allocVertex({0, 0, 0}), impl.allocVertex({1, 0, 0}),
                           impl.allocVertex({1, 1, 0}), impl.allocVertex({0, 1, 0})};
    impl.allocQuad(v[0], v[1], v[2], v[3]);
    impl.enableTransactions();
    ko::Reference<TopoMeshState> before = impl.createState();
    impl.subdivideFace(impl.firstFace(), koLinear::Point(0.5, 0.5, 0));
    const int facesAfterEdit = impl.numFaces();
    impl.createState();
    impl.setState(before);
    std::printf("topomesh: 1 face, %d after subdividing, %d after undo\n", facesAfterEdit,
                impl.numFaces());

    // A k-d tree and an octree over the mesh's vertices.
    const float* xyz = mesh->getVerticesRaw();
    KDTree kdTree(mesh->getNumVertices());
    for (int i = 0; i < mesh->getNumVertices(); ++i) kdTree.insert(xyz, i);
    const float query[6] = {0.5f, 0.5f, -1.f, 2.5f, 1.5f, 1.f};
    std::vector<int> found;
    kdTree.searchAll(xyz, query, found);
    const Octree octree(mesh->getNumVertices(), xyz, box, false, 4);
    std::printf("trees: %zu points in the box, octree of %d nodes and %d leaves\n", found.size(),
                octree.numNodes(), octree.numLeafNodes());

    // A camera looking down at the grid: the centre projects to the viewport's centre, and the
    // pick ray through that pixel points straight down.
    Camera camera;
    camera.setWorldToEye({2, 2, 0}, {2, 2, 10}, koLinear::Normal::unitY());
    Viewport viewport;
    viewport.setSize(200, 100);
    camera.setViewport(viewport);
    AngleAspect lens;
    lens.setAspectRatio(2.0);
    camera.setFrustum(lens);
    camera.setNearFar(box);
    koLinear::Point pixel;
    failures += check(camera.project({2, 2, 0}, pixel), "projection");
    koLinear::Line ray;
    camera.getWorldSpaceRay(koLinear::Point2(pixel.x, pixel.y), ray);
    std::printf("camera: centre at pixel (%.3f, %.3f), ray z %.3f\n", pixel.x, pixel.y,
                ray.direction.z + 0.0);

    // Both meshes through one packet file in memory, and back.
    ioWriteContext out;
    packetFile::writeMesh(out, mesh.get(), 1.0, true);
    topo->writePF(out);
    failures += check(out.close(), "writing packets");
    ioReadContext in(out.buffer().data(), out.buffer().size());
    ioPacketRegistry registry;
    packetFile::ReadInterface reader(in);
    packetFile::registerTypes(&registry, &reader);
    failures += check(reader.read(registry), "reading packets");
    ko::Reference<CompactMesh> meshBack(reader.getLastMesh(true));
    const auto topoBack = TopoMesh::takeReadMeshes(registry, nullptr);
    failures += check(meshBack && topoBack.size() == 1, "meshes read back");
    if (failures == 0) {
        const TopoMeshImpl& back = *topoBack[0]->getImpl();
        std::printf(
            "packets: %d bytes; mesh %d vertices, %d triangles; half-edge mesh %d "
            "vertices, %d edges, %d faces\n",
            int(out.buffer().size()), meshBack->getNumVertices(), meshBack->getNumTriangles(),
            back.numVertices(), back.numEdges(), back.numFaces());
    }
    return failures;
}
