#pragma once

#include <cstddef>
#include <cstdint>

#include "crate/ioReadContext.h"
#include "crate/ioWriteContext.h"

namespace koGeom::packetFile::detail {

// The array write and read of each element kind, so that one template serves them all.
inline void writeArray(ioWriteContext& context, const double* values, std::size_t count) {
    context.writeDoubleArray(values, count);
}
inline void writeArray(ioWriteContext& context, const float* values, std::size_t count) {
    context.writeFloatArray(values, count);
}
inline void writeArray(ioWriteContext& context, const std::int32_t* values, std::size_t count) {
    context.writeIntArray(values, count);
}
inline void writeArray(ioWriteContext& context, const std::uint32_t* values, std::size_t count) {
    context.writeUIntArray(values, count);
}
inline void writeArray(ioWriteContext& context, const std::uint8_t* values, std::size_t count) {
    context.writeByteArray(values, count);
}

inline std::size_t readArray(ioReadContext& context, double* values, std::size_t room) {
    return context.readDoubleArray(values, room);
}
inline std::size_t readArray(ioReadContext& context, float* values, std::size_t room) {
    return context.readFloatArray(values, room);
}
inline std::size_t readArray(ioReadContext& context, std::int32_t* values, std::size_t room) {
    return context.readIntArray(values, room);
}
inline std::size_t readArray(ioReadContext& context, std::uint32_t* values, std::size_t room) {
    return context.readUIntArray(values, room);
}
inline std::size_t readArray(ioReadContext& context, std::uint8_t* values, std::size_t room) {
    return context.readByteArray(values, room);
}

} // namespace koGeom::packetFile::detail
