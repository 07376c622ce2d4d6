#pragma once

// Packet files built byte by byte, for tests that need what the writer never produces: a
// sealed packet (valid checksum) whose contents are hostile.

#include <cstdint>
#include <string_view>
#include <vector>

#include "fuzz/support/PacketSeals.h"

namespace crateTest {

using Bytes = std::vector<std::uint8_t>;
using formworkFuzz::resealPackets;

Bytes fileHeader(std::uint16_t major = 1, std::uint16_t minor = 0);
void appendVarint(Bytes& bytes, std::uint64_t value);
/// A chunk: its length, then `values`.
Bytes chunk(const Bytes& values);
/// Appends a sealed packet: type id (0 with `newName` introduces a type), object reference,
/// payload length, payload and checksum.
void appendPacket(Bytes& file, std::uint64_t typeId, std::string_view newName,
                  std::uint64_t reference, const Bytes& payload);
/// A small file as the library writes it: every value kind, chunks, nested sub-packets,
/// forward references, two types, an empty array and string.
Bytes sampleFile();

} // namespace crateTest
