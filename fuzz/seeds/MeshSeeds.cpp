// Seeds of the mesh packet reader: meshes with every array, sequence kind and attribute
// size, with and without references and scaled; two meshes in one file; a host packet of
// cameras and values.

#include <cstdio>

#include "fuzz/seeds/SeedFiles.h"
#include "geom/io/PacketFile.h"
#include "geom/io/PacketValues.h"
#include "geom/mesh/CompactMesh.h"
#include "geom/view/Camera.h"
#include "tests/support/MeshShapes.h"

namespace {

using koGeom::CompactMesh;

void writeEveryArray(ioWriteContext& out, double scale, bool references) {
    ko::Reference<CompactMesh> mesh(new CompactMesh);
    koGeomTest::fillEveryArray(*mesh, 12, 5, 3);
    koGeom::packetFile::writeMesh(out, mesh.get(), scale, references);
}

void writeShapes(ioWriteContext& out) {
    ko::Reference<CompactMesh> cube(new CompactMesh);
    ko::Reference<CompactMesh> torus(new CompactMesh);
    koGeomTest::makeCube(*cube);
    koGeomTest::makeTorus(*torus, 4, 3);
    torus->allocNormalArray();
    torus->allocTriangleNormalArray();
    torus->setTriNormalsComputed(false);
    koGeom::packetFile::writeMesh(out, cube.get(), 1.0, true);
    koGeom::packetFile::writeMesh(out, torus.get(), 1.0, true);
}

void writeView(ioWriteContext& out) {
    koGeom::Camera camera;
    camera.setWorldToEye({0, 0, 0}, {3, 1, 2}, koLinear::Normal::unitZ());
    koGeom::EyeSpaceFrustum frustum;
    frustum.setFrame({-1.0, -0.5}, {2.0, 0.75});
    koGeom::Viewport viewport;
    viewport.setSize(320.0, 200.0);
    out.startPacket("test.view");
    koGeom::packetFile::writeCamera(out, camera);
    koGeom::packetFile::writeEyeSpaceFrustum(out, frustum);
    koGeom::packetFile::writeViewport(out, viewport);
    writeParamPlane(out, koLinear::ParamPlane());
    writeProjMatrix(out, koLinear::ProjMatrix(koLinear::AffineMatrix(2.0)));
    writeColor8(out, koUtil::Color8(1, 2, 3, 4));
    writeIString(out, koString::IString(u"view"));
    out.endPacket();
}

[[maybe_unused]] const bool registered = formworkFuzz::registerSeeds({
    {"meshPacketFuzz", "everyArray", [](ioWriteContext& out) { writeEveryArray(out, 1.0, true); }},
    {"meshPacketFuzz", "scaledWithoutReferences",
     [](ioWriteContext& out) { writeEveryArray(out, 2.0, false); }},
    {"meshPacketFuzz", "cubeAndTorus", writeShapes},
    {"meshPacketFuzz", "view", writeView},
});

} // namespace
