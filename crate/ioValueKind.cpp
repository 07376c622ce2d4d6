#include "crate/ioValueKind.h"

const char* ioValueKindName(ioValueKind kind) noexcept {
    switch (kind) {
        case ioValueKind::none:
            return "none";
        case ioValueKind::int32:
            return "int32";
        case ioValueKind::uint32:
            return "uint32";
        case ioValueKind::int64:
            return "int64";
        case ioValueKind::float32:
            return "float";
        case ioValueKind::float64:
            return "double";
        case ioValueKind::boolean:
            return "bool";
        case ioValueKind::string:
            return "string";
        case ioValueKind::pointer:
            return "pointer";
        case ioValueKind::floatArray:
            return "float array";
        case ioValueKind::doubleArray:
            return "double array";
        case ioValueKind::int32Array:
            return "int32 array";
        case ioValueKind::uint32Array:
            return "uint32 array";
        case ioValueKind::byteArray:
            return "byte array";
        case ioValueKind::subPacket:
            return "sub-packet";
    }
    return "unknown";
}

bool ioValueKindIsArray(ioValueKind kind) noexcept {
    return kind >= ioValueKind::floatArray && kind <= ioValueKind::byteArray;
}
