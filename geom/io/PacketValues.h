#pragma once

#include "tessar/linear/AffineMatrix.h"
#include "tessar/linear/Line.h"
#include "tessar/linear/Normal.h"
#include "tessar/linear/ParamLine.h"
#include "tessar/linear/ParamPlane.h"
#include "tessar/linear/Plane.h"
#include "tessar/linear/Point.h"
#include "tessar/linear/Point2.h"
#include "tessar/linear/ProjMatrix.h"
#include "tessar/linear/Tuple2.h"
#include "tessar/linear/Vector.h"
#include "tessar/os/Uuid.h"
#include "tessar/string/CString.h"
#include "tessar/string/IString.h"
#include "tessar/util/Color.h"

#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"

#include "geom/FormworkExport.h"

/// \file
/// Packet encodings of the platform's value types, for any packet code that stores them.
///
/// Each helper sits in the namespace of its type, so a call such as
/// `writePoint(context, point)` finds it by argument-dependent lookup. A writer writes into
/// the packet or sub-packet that is open; its reader reads the same values in the same order.
/// Except for the strings, each value is one sub-packet:
///
/// | Value | Inside its sub-packet |
/// |---|---|
/// | `Point`, `Vector`, `Normal` | double array of 3 (x, y, z), then bool true |
/// | `Point2`, `Tuple2` | double array of 2, then bool true |
/// | `Point2Flt`, `Vector2Flt` | float array of 2, then bool true |
/// | `AffineMatrix` | double array of 12 (row order), then bool true |
/// | `ProjMatrix` | double array of 16 (row order), then bool true |
/// | `Line`, `Plane` | a point sub-packet, then a normal sub-packet |
/// | `ParamLine` | a point sub-packet, then a vector sub-packet |
/// | `ParamPlane` | point, normal, u edge and v edge sub-packets |
/// | `Uuid` | unsigned 32-bit array of 4 |
/// | `Color` | float array of 4 (red, green, blue, alpha) |
/// | `Color8` | byte array of 4 (red, green, blue, alpha) |
///
/// `CString` is one string value of all its bytes; `IString` one string value of its text as
/// UTF-8. The trailing bool of the linear types is written true and ignored on reading.
///
/// Every value round-trips bit for bit (NaN payloads and the sign of zero included); a
/// `Normal` is read as stored, not normalised again.
///
/// A reader returns true when it read the whole value. It returns false, leaving the value
/// unchanged, when the chunk has no value left, when the sub-packet holds an array of another
/// length than the value's, or when the context has failed; the rest of the sub-packet is
/// then skipped, so the enclosing packet can be read on. A value of another kind than the
/// encoding has at its place (an integer where the sub-packet or the array is due) is an
/// error of the context, which stops the read.

namespace koLinear {

/// \name Linear types
/// @{
FORMWORK_EXPORT void writePoint(ioWriteContext& context, const Point& point);
FORMWORK_EXPORT bool readPoint(ioReadContext& context, Point& point);
FORMWORK_EXPORT void writeVector(ioWriteContext& context, const Vector& vector);
FORMWORK_EXPORT bool readVector(ioReadContext& context, Vector& vector);
FORMWORK_EXPORT void writeNormal(ioWriteContext& context, const Normal& normal);
FORMWORK_EXPORT bool readNormal(ioReadContext& context, Normal& normal);
FORMWORK_EXPORT void writePoint2(ioWriteContext& context, const Point2& point);
FORMWORK_EXPORT bool readPoint2(ioReadContext& context, Point2& point);
FORMWORK_EXPORT void writeTuple2(ioWriteContext& context, const Tuple2& tuple);
FORMWORK_EXPORT bool readTuple2(ioReadContext& context, Tuple2& tuple);
FORMWORK_EXPORT void writePoint2Flt(ioWriteContext& context, const Point2Flt& point);
FORMWORK_EXPORT bool readPoint2Flt(ioReadContext& context, Point2Flt& point);
FORMWORK_EXPORT void writeVector2Flt(ioWriteContext& context, const Vector2Flt& vector);
FORMWORK_EXPORT bool readVector2Flt(ioReadContext& context, Vector2Flt& vector);
FORMWORK_EXPORT void writeAffineMatrix(ioWriteContext& context, const AffineMatrix& matrix);
FORMWORK_EXPORT bool readAffineMatrix(ioReadContext& context, AffineMatrix& matrix);
FORMWORK_EXPORT void writeProjMatrix(ioWriteContext& context, const ProjMatrix& matrix);
FORMWORK_EXPORT bool readProjMatrix(ioReadContext& context, ProjMatrix& matrix);
FORMWORK_EXPORT void writeLine(ioWriteContext& context, const Line& line);
FORMWORK_EXPORT bool readLine(ioReadContext& context, Line& line);
FORMWORK_EXPORT void writePlane(ioWriteContext& context, const Plane& plane);
FORMWORK_EXPORT bool readPlane(ioReadContext& context, Plane& plane);
FORMWORK_EXPORT void writeParamLine(ioWriteContext& context, const ParamLine& line);
FORMWORK_EXPORT bool readParamLine(ioReadContext& context, ParamLine& line);
FORMWORK_EXPORT void writeParamPlane(ioWriteContext& context, const ParamPlane& plane);
FORMWORK_EXPORT bool readParamPlane(ioReadContext& context, ParamPlane& plane);
/// @}

} // namespace koLinear

namespace koOS {

FORMWORK_EXPORT void writeUuid(ioWriteContext& context, const Uuid& uuid);
FORMWORK_EXPORT bool readUuid(ioReadContext& context, Uuid& uuid);

} // namespace koOS

namespace koUtil {

/// \name Colours
/// @{
FORMWORK_EXPORT void writeColor(ioWriteContext& context, const Color& color);
FORMWORK_EXPORT bool readColor(ioReadContext& context, Color& color);
FORMWORK_EXPORT void writeColor8(ioWriteContext& context, const Color8& color);
/// Sets the colour through `Color8::setRGBA`.
FORMWORK_EXPORT bool readColor8(ioReadContext& context, Color8& color);
/// @}

} // namespace koUtil

namespace koString {

/// \name Strings
/// @{
FORMWORK_EXPORT void writeCString(ioWriteContext& context, const CString& text);
FORMWORK_EXPORT bool readCString(ioReadContext& context, CString& text);
/// Writes the text as UTF-8 (an unpaired surrogate as U+FFFD); reading decodes it again.
FORMWORK_EXPORT void writeIString(ioWriteContext& context, const IString& text);
FORMWORK_EXPORT bool readIString(ioReadContext& context, IString& text);
/// @}

} // namespace koString
