#include "geom/io/PacketValues.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "geom/io/detail/ArrayIo.h"

namespace {

using koGeom::packetFile::detail::readArray;
using koGeom::packetFile::detail::writeArray;

// Whether a value of the linear types carries the trailing flag after its array.
enum class Flag : bool { none, trailing };

// One sub-packet holding an array of N elements, then the flag when asked.
template <class T, std::size_t N>
void writeArrayPacket(ioWriteContext& context, const T (&values)[N], Flag flag) {
    context.startSubPacket();
    writeArray(context, values, N);
    if (flag == Flag::trailing) {
        context.writeBool(true);
    }
    context.endSubPacket();
}

// Reads the sub-packet of `writeArrayPacket` into `values`; false, with `values` partly
// written or not, unless the array had exactly N elements. The trailing flag is skipped with
// the rest of the sub-packet: it carries nothing.
template <class T, std::size_t N>
bool readArrayPacket(ioReadContext& context, T (&values)[N]) {
    if (!context.startSubPacket()) {
        return false;
    }
    const bool whole = context.peekArrayCount() == N && readArray(context, values, N) == N;
    context.endSubPacket();
    return whole && context.ok();
}

// Reads a sub-packet holding the values that `parts` reads one after another.
template <class Parts>
bool readComposite(ioReadContext& context, Parts parts) {
    if (!context.startSubPacket()) {
        return false;
    }
    const bool whole = parts();
    context.endSubPacket();
    return whole && context.ok();
}

template <class Xyz>
void writeXyz(ioWriteContext& context, const Xyz& value) {
    const double values[3] = {value.x, value.y, value.z};
    writeArrayPacket(context, values, Flag::trailing);
}

template <class Xyz>
bool readXyz(ioReadContext& context, Xyz& value) {
    double values[3];
    if (!readArrayPacket(context, values)) {
        return false;
    }
    value = Xyz(values[0], values[1], values[2]);
    return true;
}

template <class Xy>
void writeXy(ioWriteContext& context, const Xy& value) {
    const decltype(value.x) values[2] = {value.x, value.y};
    writeArrayPacket(context, values, Flag::trailing);
}

template <class Xy>
bool readXy(ioReadContext& context, Xy& value) {
    decltype(value.x + 0) values[2];
    if (!readArrayPacket(context, values)) {
        return false;
    }
    value = Xy(values[0], values[1]);
    return true;
}

template <std::size_t N, class Matrix>
void writeMatrix(ioWriteContext& context, const Matrix& matrix) {
    double values[N];
    for (std::size_t i = 0; i < N; ++i) {
        values[i] = matrix.data()[i];
    }
    writeArrayPacket(context, values, Flag::trailing);
}

template <std::size_t N, class Matrix>
bool readMatrix(ioReadContext& context, Matrix& matrix) {
    double values[N];
    if (!readArrayPacket(context, values)) {
        return false;
    }
    matrix = Matrix(std::span<const double, N>(values));
    return true;
}

} // namespace

namespace koLinear {

void writePoint(ioWriteContext& context, const Point& point) { writeXyz(context, point); }
bool readPoint(ioReadContext& context, Point& point) { return readXyz(context, point); }
void writeVector(ioWriteContext& context, const Vector& vector) { writeXyz(context, vector); }
bool readVector(ioReadContext& context, Vector& vector) { return readXyz(context, vector); }
void writeNormal(ioWriteContext& context, const Normal& normal) { writeXyz(context, normal); }
bool readNormal(ioReadContext& context, Normal& normal) { return readXyz(context, normal); }
void writePoint2(ioWriteContext& context, const Point2& point) { writeXy(context, point); }
bool readPoint2(ioReadContext& context, Point2& point) { return readXy(context, point); }
void writeTuple2(ioWriteContext& context, const Tuple2& tuple) { writeXy(context, tuple); }
bool readTuple2(ioReadContext& context, Tuple2& tuple) { return readXy(context, tuple); }
void writePoint2Flt(ioWriteContext& context, const Point2Flt& point) { writeXy(context, point); }
bool readPoint2Flt(ioReadContext& context, Point2Flt& point) { return readXy(context, point); }
void writeVector2Flt(ioWriteContext& context, const Vector2Flt& vector) {
    writeXy(context, vector);
}
bool readVector2Flt(ioReadContext& context, Vector2Flt& vector) { return readXy(context, vector); }

void writeAffineMatrix(ioWriteContext& context, const AffineMatrix& matrix) {
    writeMatrix<12>(context, matrix);
}
bool readAffineMatrix(ioReadContext& context, AffineMatrix& matrix) {
    return readMatrix<12>(context, matrix);
}
void writeProjMatrix(ioWriteContext& context, const ProjMatrix& matrix) {
    writeMatrix<16>(context, matrix);
}
bool readProjMatrix(ioReadContext& context, ProjMatrix& matrix) {
    return readMatrix<16>(context, matrix);
}

void writeLine(ioWriteContext& context, const Line& line) {
    context.startSubPacket();
    writePoint(context, line.origin);
    writeNormal(context, line.direction);
    context.endSubPacket();
}
bool readLine(ioReadContext& context, Line& line) {
    Line read;
    if (!readComposite(context, [&] {
            return readPoint(context, read.origin) && readNormal(context, read.direction);
        })) {
        return false;
    }
    line = read;
    return true;
}

void writePlane(ioWriteContext& context, const Plane& plane) {
    context.startSubPacket();
    writePoint(context, plane.origin);
    writeNormal(context, plane.normal);
    context.endSubPacket();
}
bool readPlane(ioReadContext& context, Plane& plane) {
    Plane read;
    if (!readComposite(context, [&] {
            return readPoint(context, read.origin) && readNormal(context, read.normal);
        })) {
        return false;
    }
    plane = read;
    return true;
}

void writeParamLine(ioWriteContext& context, const ParamLine& line) {
    context.startSubPacket();
    writePoint(context, line.origin);
    writeVector(context, line.direction);
    context.endSubPacket();
}
bool readParamLine(ioReadContext& context, ParamLine& line) {
    ParamLine read;
    if (!readComposite(context, [&] {
            return readPoint(context, read.origin) && readVector(context, read.direction);
        })) {
        return false;
    }
    line = read;
    return true;
}

void writeParamPlane(ioWriteContext& context, const ParamPlane& plane) {
    context.startSubPacket();
    writePoint(context, plane.origin);
    writeNormal(context, plane.normal);
    writeVector(context, plane.uEdge);
    writeVector(context, plane.vEdge);
    context.endSubPacket();
}
bool readParamPlane(ioReadContext& context, ParamPlane& plane) {
    ParamPlane read;
    if (!readComposite(context, [&] {
            return readPoint(context, read.origin) && readNormal(context, read.normal) &&
                   readVector(context, read.uEdge) && readVector(context, read.vEdge);
        })) {
        return false;
    }
    plane = read;
    return true;
}

} // namespace koLinear

namespace koOS {

void writeUuid(ioWriteContext& context, const Uuid& uuid) {
    writeArrayPacket(context, uuid.words, Flag::none);
}
bool readUuid(ioReadContext& context, Uuid& uuid) {
    Uuid read;
    if (!readArrayPacket(context, read.words)) {
        return false;
    }
    uuid = read;
    return true;
}

} // namespace koOS

namespace koUtil {

void writeColor(ioWriteContext& context, const Color& color) {
    const float values[4] = {color.red, color.green, color.blue, color.alpha};
    writeArrayPacket(context, values, Flag::none);
}
bool readColor(ioReadContext& context, Color& color) {
    float values[4];
    if (!readArrayPacket(context, values)) {
        return false;
    }
    color = Color(values[0], values[1], values[2], values[3]);
    return true;
}

void writeColor8(ioWriteContext& context, const Color8& color) {
    const std::uint8_t values[4] = {color.red, color.green, color.blue, color.alpha};
    writeArrayPacket(context, values, Flag::none);
}
bool readColor8(ioReadContext& context, Color8& color) {
    std::uint8_t values[4];
    if (!readArrayPacket(context, values)) {
        return false;
    }
    color.setRGBA(values[0], values[1], values[2], values[3]);
    return true;
}

} // namespace koUtil

namespace koString {

void writeCString(ioWriteContext& context, const CString& text) {
    context.writeString(text.view());
}
bool readCString(ioReadContext& context, CString& text) {
    const std::string read = context.readString();
    if (!context.ok()) {
        return false;
    }
    text = CString(std::string_view(read));
    return true;
}

void writeIString(ioWriteContext& context, const IString& text) {
    context.writeString(text.toUtf8().view());
}
bool readIString(ioReadContext& context, IString& text) {
    const std::string read = context.readString();
    if (!context.ok()) {
        return false;
    }
    text = IString(std::string_view(read));
    return true;
}

} // namespace koString
