#pragma once

// Packet files built byte by byte, for tests that need what the writer never produces: a
// sealed packet (valid checksum) whose contents are hostile; the sample file; a directory for
// files on disk.

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support/PacketSeals.h"

namespace crateTest {

using Bytes = std::vector<std::uint8_t>;
using formworkFuzz::resealPackets;

void appendVarint(Bytes& bytes, std::uint64_t value);
/// A chunk: its length, then `values`.
Bytes chunk(const Bytes& values);
/// A file of one sealed packet: type id (0 with `newName` introduces a type), object
/// reference, payload length, payload and checksum.
Bytes sealedFile(std::uint64_t typeId, std::string_view newName, std::uint64_t reference,
                 const Bytes& payload);
/// A directory of its own for the running test, removed with the object.
class TempDir {
public:
    TempDir();
    ~TempDir();
    std::string file(const char* name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// A small file as the library writes it: every value kind, chunks, nested sub-packets,
/// forward references, two types, an empty array and string.
Bytes sampleFile();

} // namespace crateTest
