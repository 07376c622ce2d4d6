#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "crate/CrateExport.h"
#include "crate/ioValueKind.h"

/// What a walk over a packet file (`walkPacketFile`) reports, in file order, without knowing
/// any packet type: each packet, its chunks and sub-packets, and every value with its kind and
/// offset. Override what you need; every call does nothing by default.
///
/// Calls nest: `startPacket`, then for each chunk `startChunk` and its values, where a
/// sub-packet value brings `startSubPacket`, its own chunks, and `endSubPacket`; then
/// `endPacket`. A walk stopped by damage ends in the middle; the context holds the error.
class CRATE_EXPORT ioPacketVisitor {
public:
    /// A packet as its prefix describes it.
    struct Packet {
        std::int64_t index;
        std::uint64_t offset;
        std::string_view typeName;
        /// The object the packet defines, 0 for none.
        int objectReference;
        std::uint64_t payloadLength;
    };

    /// A chunk: its index in its packet or sub-packet, the offset of its first value (just
    /// after its length) and the bytes of its values.
    struct Chunk {
        int index;
        std::uint64_t offset;
        std::uint64_t length;
    };

    /// One value. Only the fields of its kind are set.
    struct Value {
        ioValueKind kind = ioValueKind::none;
        /// Offset of the value's tag byte.
        std::uint64_t offset = 0;
        /// int32, int64, bool (0 or 1) and pointer (the reference, 0 for null).
        std::int64_t integer = 0;
        /// uint32.
        std::uint64_t unsignedInteger = 0;
        /// float (exactly widened) and double.
        double real = 0.0;
        /// The bytes of a string (not checked to be UTF-8).
        std::string_view text;
        /// The element count of an array.
        std::uint64_t count = 0;
        /// The first `headCount` elements of an array (`float`, `double`, `std::int32_t`,
        /// `std::uint32_t` or `std::uint8_t`, by kind), valid during the call.
        const void* head = nullptr;
        std::size_t headCount = 0;
    };

    ioPacketVisitor() = default;
    ioPacketVisitor(const ioPacketVisitor&) = default;
    ioPacketVisitor& operator=(const ioPacketVisitor&) = default;
    virtual ~ioPacketVisitor();

    virtual void startPacket(const Packet& packet);
    virtual void startChunk(const Chunk& chunk);
    /// Every value but a sub-packet, which comes as `startSubPacket`.
    virtual void value(const Value& value);
    /// `offset` is that of the sub-packet's tag byte.
    virtual void startSubPacket(std::uint64_t offset);
    virtual void endSubPacket();
    virtual void endPacket();
};
