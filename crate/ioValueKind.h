#pragma once

#include <cstdint>

#include "crate/CrateExport.h"

/// The kinds of value a chunk of a packet holds, as a generic reader meets them (see
/// `ioReadContext::peekValueKind`). The numbers are the tag bytes of the file format.
enum class ioValueKind : std::uint8_t {
    /// No value: the chunk has none left.
    none = 0,
    int32 = 1,
    uint32 = 2,
    int64 = 3,
    float32 = 4,
    float64 = 5,
    boolean = 6,
    string = 7,
    pointer = 8,
    floatArray = 9,
    doubleArray = 10,
    int32Array = 11,
    uint32Array = 12,
    byteArray = 13,
    subPacket = 14,
};

/// The kind's name as listings show it ("int32", "float array", "sub-packet"; "none").
CRATE_EXPORT const char* ioValueKindName(ioValueKind kind) noexcept;
/// True for the five array kinds.
CRATE_EXPORT bool ioValueKindIsArray(ioValueKind kind) noexcept;
