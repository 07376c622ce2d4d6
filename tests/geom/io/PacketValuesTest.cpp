#include "geom/io/PacketValues.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"
#include "geom/view/Camera.h"
#include "tests/geom/io/MeshFileSupport.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;

template <class T>
bool sameObject(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// A quiet NaN with a payload, a signalling one, the negative zero and a subnormal.
const double nan = std::bit_cast<double>(0x7ff8dead0000beefull);
const double snan = std::bit_cast<double>(0x7ff0000000000123ull);
const float nanFlt = std::bit_cast<float>(0x7fc0abcdu);

TEST(PacketValues, EveryValueRoundTripsBitForBit) {
    using namespace koLinear;
    const Point point(nan, -0.0, 4.9e-324);
    const Vector vector(snan, 1.0 / 3.0, -2.0);
    const Normal normal(0.6, -0.0, 0.8);
    const Point2 point2(nan, -7.5);
    const Tuple2 tuple2(1e300, -0.0);
    const Point2Flt point2Flt(nanFlt, -0.0f);
    const Vector2Flt vector2Flt(1e-45f, 3.0f);
    double twelve[12];
    double sixteen[16];
    for (int i = 0; i < 12; ++i) {
        twelve[i] = i == 5 ? nan : i / 7.0 - 1.0;
    }
    for (int i = 0; i < 16; ++i) {
        sixteen[i] = i == 9 ? snan : i * 0.1;
    }
    const AffineMatrix affine{std::span<const double, 12>(twelve)};
    const ProjMatrix projection{std::span<const double, 16>(sixteen)};
    const Line line(point, normal);
    const Plane plane(Point(1, 2, 3), Normal(0.0, 0.0, -1.0));
    const ParamLine paramLine(point, vector);
    const ParamPlane paramPlane(Point(-1, 0, 1), normal, vector, Vector(0, nan, 2));
    const koOS::Uuid uuid{{0xdeadbeefu, 0u, 0xffffffffu, 42u}};
    const koUtil::Color color(nanFlt, 0.5f, -0.0f, 1.0f);
    const koUtil::Color8 color8(1, 128, 255, 7);
    const koString::CString cstring(std::string_view("name\0with nul", 13));
    const koString::IString istring(u"gr\u00fc\u00dfe \U0001F600");

    const Bytes bytes = koGeomTest::packetBytes([&](ioWriteContext& c) {
        c.startPacket("test.values");
        writePoint(c, point);
        writeVector(c, vector);
        writeNormal(c, normal);
        writePoint2(c, point2);
        writeTuple2(c, tuple2);
        writePoint2Flt(c, point2Flt);
        writeVector2Flt(c, vector2Flt);
        writeAffineMatrix(c, affine);
        writeProjMatrix(c, projection);
        writeLine(c, line);
        writePlane(c, plane);
        writeParamLine(c, paramLine);
        writeParamPlane(c, paramPlane);
        writeUuid(c, uuid);
        writeColor(c, color);
        writeColor8(c, color8);
        writeCString(c, cstring);
        writeIString(c, istring);
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    ASSERT_TRUE(c.nextPacket());
    Point p;
    Vector v;
    Normal n;
    Point2 p2;
    Tuple2 t2;
    Point2Flt p2f;
    Vector2Flt v2f;
    AffineMatrix a;
    ProjMatrix m;
    Line l;
    Plane pl;
    ParamLine pline;
    ParamPlane pplane;
    koOS::Uuid u;
    koUtil::Color col;
    koUtil::Color8 col8;
    koString::CString cs;
    koString::IString is;
    EXPECT_TRUE(readPoint(c, p) && sameObject(p, point));
    EXPECT_TRUE(readVector(c, v) && sameObject(v, vector));
    EXPECT_TRUE(readNormal(c, n) && sameObject(n, normal));
    EXPECT_TRUE(readPoint2(c, p2) && sameObject(p2, point2));
    EXPECT_TRUE(readTuple2(c, t2) && sameObject(t2, tuple2));
    EXPECT_TRUE(readPoint2Flt(c, p2f) && sameObject(p2f, point2Flt));
    EXPECT_TRUE(readVector2Flt(c, v2f) && sameObject(v2f, vector2Flt));
    EXPECT_TRUE(readAffineMatrix(c, a) && sameObject(a, affine));
    EXPECT_TRUE(readProjMatrix(c, m) && sameObject(m, projection));
    EXPECT_TRUE(readLine(c, l) && sameObject(l, line));
    EXPECT_TRUE(readPlane(c, pl) && sameObject(pl, plane));
    EXPECT_TRUE(readParamLine(c, pline) && sameObject(pline, paramLine));
    EXPECT_TRUE(readParamPlane(c, pplane) && sameObject(pplane, paramPlane));
    EXPECT_TRUE(readUuid(c, u) && u == uuid);
    EXPECT_TRUE(readColor(c, col) && sameObject(col, color));
    EXPECT_TRUE(readColor8(c, col8) && col8 == color8);
    EXPECT_TRUE(readCString(c, cs) && cs == cstring && cs.size() == 13u);
    EXPECT_TRUE(readIString(c, is) && is.view() == istring.view());
    EXPECT_TRUE(c.ok()) << c.error().toString();
}

TEST(PacketValues, AValueOfAnotherShapeIsRefusedAndSkipped) {
    const Bytes bytes = koGeomTest::packetBytes([](ioWriteContext& c) {
        c.startPacket("test.values");
        koLinear::writePoint2(c, {1.0, 2.0});
        koLinear::writeLine(c, koLinear::Line());
        koLinear::writePoint(c, {5.0, 6.0, 7.0});
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    ASSERT_TRUE(c.nextPacket());
    koLinear::Point point(9.0, 9.0, 9.0);
    koLinear::ParamPlane plane;
    plane.origin = point;
    EXPECT_FALSE(readPoint(c, point));      // two doubles where three are due
    EXPECT_FALSE(readParamPlane(c, plane)); // a line: no vectors after its point and normal
    EXPECT_TRUE(point == koLinear::Point(9.0, 9.0, 9.0) && plane.origin == point);
    EXPECT_TRUE(readPoint(c, point) && point == koLinear::Point(5.0, 6.0, 7.0));
    EXPECT_FALSE(readPoint(c, point)); // nothing left in the chunk
    EXPECT_TRUE(c.ok()) << c.error().toString();
}

TEST(PacketValues, CamerasFrustaAndViewportsRoundTripEveryField) {
    Viewport viewport;
    viewport.setOrigin(-3.25, 12.0);
    viewport.setSize(640.0, 480.5);
    viewport.setDepthRange(0.125, 0.75);
    EyeSpaceFrustum frustum; // off-centre, so a depth change that keeps the angle would show
    frustum.setFrame({-1.0, -2.0}, {3.0, 0.5});
    frustum.setDepthRange(0.3, 250.0, false);
    frustum.setOrthographic(true);
    Camera camera;
    camera.setWorldToEye({1, 2, 3}, {10, -4, 7}, koLinear::Normal::unitZ());
    camera.setViewport(viewport);
    camera.setFrustum(frustum);
    camera.setOpenFrustum(true);

    const Bytes bytes = koGeomTest::packetBytes([&](ioWriteContext& c) {
        c.startPacket("test.view");
        writeViewport(c, viewport);
        writeEyeSpaceFrustum(c, frustum);
        writeCamera(c, camera);
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    ASSERT_TRUE(c.nextPacket());
    ReadInterface reader(c);
    Viewport readViewport;
    EyeSpaceFrustum readFrustum;
    Camera readCamera;
    ASSERT_TRUE(reader.readViewport(readViewport));
    ASSERT_TRUE(reader.readEyeSpaceFrustum(readFrustum));
    ASSERT_TRUE(reader.readCamera(readCamera));

    const auto viewportFields = [](const Viewport& v) {
        std::array<double, 6> f;
        v.getOrigin(f[0], f[1]);
        v.getSize(f[2], f[3]);
        v.getDepthRange(f[4], f[5]);
        return f;
    };
    const auto frustumFields = [](const EyeSpaceFrustum& e) {
        koLinear::Tuple2 leftBottom;
        koLinear::Tuple2 rightTop;
        e.getFrame(leftBottom, rightTop);
        return std::array<double, 7>{leftBottom.x,
                                     leftBottom.y,
                                     rightTop.x,
                                     rightTop.y,
                                     e.getNearDist(),
                                     e.getFarDist(),
                                     e.getOrthographic() ? 1.0 : 0.0};
    };
    EXPECT_EQ(viewportFields(readViewport), viewportFields(viewport));
    EXPECT_EQ(frustumFields(readFrustum), frustumFields(frustum));
    Viewport cameraViewport;
    EyeSpaceFrustum cameraFrustum[2];
    koLinear::AffineMatrix worldToEye[2];
    readCamera.getViewport(cameraViewport);
    readCamera.getFrustum(cameraFrustum[0]);
    camera.getFrustum(cameraFrustum[1]);
    readCamera.getWorldToEye(worldToEye[0]);
    camera.getWorldToEye(worldToEye[1]);
    EXPECT_EQ(viewportFields(cameraViewport), viewportFields(viewport));
    EXPECT_EQ(frustumFields(cameraFrustum[0]), frustumFields(cameraFrustum[1]));
    EXPECT_TRUE(sameObject(worldToEye[0], worldToEye[1]));
    EXPECT_TRUE(readCamera.getOpenFrustum());
    EXPECT_FALSE(reader.readViewport(readViewport)); // nothing left
}

} // namespace
} // namespace koGeom::packetFile
