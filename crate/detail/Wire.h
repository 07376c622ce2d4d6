#pragma once

// The byte layout of a packet file: constants, little-endian loads and stores, and varints.
// Shared by the writer, the reader and the walker so that all three agree on every byte.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace crateWire {

/// "FWPK", the major version this code writes and reads, and the minor version it writes.
inline constexpr std::uint8_t magic[4] = {'F', 'W', 'P', 'K'};
inline constexpr std::uint16_t majorVersion = 1;
inline constexpr std::uint16_t minorVersion = 0;
inline constexpr std::size_t fileHeaderSize = 16;

inline constexpr std::size_t maxTypeNameLength = 255;
inline constexpr std::size_t maxVarintSize = 10;
/// Sub-packets nest at most this deep (the writer refuses deeper, the reader reports it).
inline constexpr std::size_t maxSubPacketDepth = 255;
inline constexpr std::size_t checksumSize = 8;
/// The longest packet prefix: type id 0, name length, name, object reference, payload length.
inline constexpr std::size_t maxPacketPrefix = 4 * maxVarintSize + maxTypeNameLength;

/// The tag byte before each value.
enum Tag : std::uint8_t {
    tagInt32 = 1,
    tagUInt32 = 2,
    tagInt64 = 3,
    tagFloat = 4,
    tagDouble = 5,
    tagBool = 6,
    tagString = 7,
    tagPointer = 8,
    tagFloatArray = 9,
    tagDoubleArray = 10,
    tagInt32Array = 11,
    tagUInt32Array = 12,
    tagByteArray = 13,
    tagSubPacket = 14,
};
inline constexpr std::uint8_t lastTag = tagSubPacket;

/// Bytes of one element of an array tag, 0 for a tag that is not an array.
constexpr std::size_t arrayElementSize(std::uint8_t tag) {
    switch (tag) {
        case tagFloatArray:
            return 4;
        case tagDoubleArray:
            return 8;
        case tagInt32Array:
            return 4;
        case tagUInt32Array:
            return 4;
        case tagByteArray:
            return 1;
        default:
            return 0;
    }
}

/// Bytes after the tag of a fixed-size value, 0 for a tag whose size is written in the value.
constexpr std::size_t scalarSize(std::uint8_t tag) {
    switch (tag) {
        case tagInt32:
            return 4;
        case tagUInt32:
            return 4;
        case tagInt64:
            return 8;
        case tagFloat:
            return 4;
        case tagDouble:
            return 8;
        case tagBool:
            return 1;
        default:
            return 0;
    }
}

/// Little-endian loads and stores of 2, 4 and 8 byte values, and copies of whole arrays of
/// them. On a little-endian host each is one memcpy; a big-endian host swaps the bytes.
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
inline constexpr bool hostIsLittleEndian = false;
#else
inline constexpr bool hostIsLittleEndian = true;
#endif

/// Copies `count` elements of `size` bytes from host order at `from` to little-endian at
/// `to` (or back: the swap is its own inverse).
inline void copyLittleEndian(void* to, const void* from, std::size_t count, std::size_t size) {
    if (count == 0) {
        return;
    }
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    auto* out = static_cast<std::uint8_t*>(to);
    const auto* in = static_cast<const std::uint8_t*>(from);
    for (std::size_t i = 0; i < count; ++i, out += size, in += size) {
        for (std::size_t b = 0; b < size; ++b) {
            out[b] = in[size - 1 - b];
        }
    }
#else
    std::memcpy(to, from, count * size);
#endif
}

template <class T>
inline T load(const std::uint8_t* bytes) {
    T value;
    copyLittleEndian(&value, bytes, 1, sizeof(T));
    return value;
}

template <class T>
inline std::uint8_t* store(std::uint8_t* bytes, T value) {
    copyLittleEndian(bytes, &value, 1, sizeof(T));
    return bytes + sizeof(T);
}

/// Bytes of the unsigned LEB128 encoding of `value`.
constexpr std::size_t varintSize(std::uint64_t value) {
    std::size_t size = 1;
    while (value >= 0x80) {
        value >>= 7;
        ++size;
    }
    return size;
}

inline std::uint8_t* storeVarint(std::uint8_t* bytes, std::uint64_t value) {
    while (value >= 0x80) {
        *bytes++ = static_cast<std::uint8_t>(value | 0x80);
        value >>= 7;
    }
    *bytes++ = static_cast<std::uint8_t>(value);
    return bytes;
}

enum class VarintStatus { ok, truncated, tooLong };

/// Decodes a varint at `*cursor` that must end before `end`; advances the cursor on success.
/// A varint runs at most 10 bytes and its value must fit 64 bits.
inline VarintStatus loadVarint(const std::uint8_t*& cursor, const std::uint8_t* end,
                               std::uint64_t& value) {
    const std::uint8_t* p = cursor;
    if (p < end && *p < 0x80) { // the common one-byte case
        value = *p;
        cursor = p + 1;
        return VarintStatus::ok;
    }
    std::uint64_t result = 0;
    for (unsigned shift = 0; shift < 70; shift += 7) {
        if (p == end) {
            return VarintStatus::truncated;
        }
        const std::uint8_t byte = *p++;
        if (shift == 63 && byte > 1) {
            return VarintStatus::tooLong;
        }
        result |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
        if (byte < 0x80) {
            value = result;
            cursor = p;
            return VarintStatus::ok;
        }
    }
    return VarintStatus::tooLong;
}

} // namespace crateWire
