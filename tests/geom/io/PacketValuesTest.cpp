#include "geom/io/PacketValues.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <vector>

#include "geom/io/PacketFile.h"
#include "geom/io/ReadInterface.h"
#include "geom/view/Camera.h"
#include "tests/geom/io/MeshFileSupport.h"

namespace koGeom::packetFile {
namespace {

using koGeomTest::Bytes;

// A quiet NaN with a payload and a signalling one: both must keep their bits.
const double nan = std::bit_cast<double>(0x7ff8dead0000beefull);
const double snan = std::bit_cast<double>(0x7ff0000000000123ull);
const float nanFlt = std::bit_cast<float>(0x7fc0abcdu);

// Writes `value` alone into a packet and reads it back; the bytes of the two must match.
template <class T>
void expectRoundTrip(const T& value, void (*write)(ioWriteContext&, const T&),
                     bool (*read)(ioReadContext&, T&)) {
    const Bytes bytes = koGeomTest::packetBytes([&](ioWriteContext& c) {
        c.startPacket("test.value");
        write(c, value);
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    T got{};
    ASSERT_TRUE(c.nextPacket() && read(c, got));
    if constexpr (std::is_trivially_copyable_v<T>) {
        EXPECT_EQ(std::memcmp(&got, &value, sizeof(T)), 0) << typeid(T).name();
    } else {
        EXPECT_TRUE(got == value);
    }
}

TEST(PacketValues, EveryValueRoundTripsBitForBit) {
    using namespace koLinear;
    double values[16];
    for (int i = 0; i < 16; ++i) {
        values[i] = i == 5 ? nan : i == 9 ? snan : i / 7.0 - 1.0;
    }
    const Point point(nan, -0.0, 4.9e-324);
    const Vector vector(snan, 1.0 / 3.0, -2.0);
    const Normal normal(0.6, -0.0, 0.8);
    expectRoundTrip(point, writePoint, readPoint);
    expectRoundTrip(vector, writeVector, readVector);
    expectRoundTrip(normal, writeNormal, readNormal);
    expectRoundTrip(Point2(nan, -7.5), writePoint2, readPoint2);
    expectRoundTrip(Tuple2(1e300, -0.0), writeTuple2, readTuple2);
    expectRoundTrip(Point2Flt(nanFlt, -0.0f), writePoint2Flt, readPoint2Flt);
    expectRoundTrip(Vector2Flt(1e-45f, 3.0f), writeVector2Flt, readVector2Flt);
    expectRoundTrip(AffineMatrix(std::span<const double, 12>(values, 12)), writeAffineMatrix,
                    readAffineMatrix);
    expectRoundTrip(ProjMatrix(std::span<const double, 16>(values)), writeProjMatrix,
                    readProjMatrix);
    expectRoundTrip(Line(point, normal), writeLine, readLine);
    expectRoundTrip(Plane(Point(1, 2, 3), Normal(0.0, 0.0, -1.0)), writePlane, readPlane);
    expectRoundTrip(ParamLine(point, vector), writeParamLine, readParamLine);
    expectRoundTrip(ParamPlane(Point(-1, 0, 1), normal, vector, Vector(0, nan, 2)), writeParamPlane,
                    readParamPlane);
    expectRoundTrip(koOS::Uuid{{0xdeadbeefu, 0u, 0xffffffffu, 42u}}, koOS::writeUuid,
                    koOS::readUuid);
    expectRoundTrip(koUtil::Color(nanFlt, 0.5f, -0.0f, 1.0f), koUtil::writeColor,
                    koUtil::readColor);
    expectRoundTrip(koUtil::Color8(1, 128, 255, 7), koUtil::writeColor8, koUtil::readColor8);
    expectRoundTrip(koString::CString(std::string_view("name\0with nul", 13)),
                    koString::writeCString, koString::readCString);
    expectRoundTrip(koString::IString(u"gr\u00fc\u00dfe \U0001F600"), koString::writeIString,
                    koString::readIString);
}

TEST(PacketValues, AValueOfAnotherShapeIsRefusedAndSkipped) {
    const Bytes bytes = koGeomTest::packetBytes([](ioWriteContext& c) {
        c.startPacket("test.values");
        writePoint2(c, koLinear::Point2(1.0, 2.0)); // found by argument-dependent lookup
        writeLine(c, koLinear::Line());
        writePoint(c, koLinear::Point(5.0, 6.0, 7.0));
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    ASSERT_TRUE(c.nextPacket());
    koLinear::Point point(9.0, 9.0, 9.0);
    koLinear::ParamPlane plane;
    EXPECT_FALSE(readPoint(c, point));      // two doubles where three are due
    EXPECT_FALSE(readParamPlane(c, plane)); // a line: no vectors after its point and normal
    EXPECT_TRUE(point == koLinear::Point(9.0, 9.0, 9.0) && plane == koLinear::ParamPlane());
    EXPECT_TRUE(readPoint(c, point) && point == koLinear::Point(5.0, 6.0, 7.0));
    EXPECT_FALSE(readPoint(c, point)); // nothing left in the chunk
    EXPECT_TRUE(c.ok()) << c.error().toString();
}

// Every field of a camera as its getters give it.
std::vector<double> fields(const Camera& camera) {
    Viewport viewport;
    EyeSpaceFrustum frustum;
    koLinear::AffineMatrix worldToEye;
    camera.getViewport(viewport);
    camera.getFrustum(frustum);
    camera.getWorldToEye(worldToEye);
    std::vector<double> f(worldToEye.data(), worldToEye.data() + 12);
    f.resize(18);
    viewport.getOrigin(f[12], f[13]);
    viewport.getSize(f[14], f[15]);
    viewport.getDepthRange(f[16], f[17]);
    koLinear::Tuple2 leftBottom;
    koLinear::Tuple2 rightTop;
    frustum.getFrame(leftBottom, rightTop);
    f.insert(f.end(), {leftBottom.x, leftBottom.y, rightTop.x, rightTop.y, frustum.getNearDist(),
                       frustum.getFarDist(), frustum.getOrthographic() ? 1.0 : 0.0,
                       camera.getOpenFrustum() ? 1.0 : 0.0});
    return f;
}

// Every field set to a value no default has (the frustum off-centre, so that a depth change
// keeping the angle would show) reads back, and the camera's sub-packet is read whole.
TEST(PacketValues, CamerasWithTheirViewportsAndFrustaRoundTripEveryField) {
    Viewport viewport;
    viewport.setOrigin(-3.25, 12.0);
    viewport.setSize(640.0, 480.5);
    viewport.setDepthRange(0.125, 0.75);
    EyeSpaceFrustum frustum;
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
        writeCamera(c, camera);
        c.endPacket();
    });
    ioReadContext c(bytes.data(), bytes.size());
    ASSERT_TRUE(c.nextPacket());
    ReadInterface reader(c);
    Camera read;
    ASSERT_TRUE(reader.readCamera(read));
    EXPECT_FALSE(reader.readViewport(viewport)); // nothing left
    EXPECT_EQ(fields(read), fields(camera));
}

} // namespace
} // namespace koGeom::packetFile
