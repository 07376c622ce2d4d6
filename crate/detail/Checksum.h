#pragma once

// The packet checksum, XXH3-64 (seed 0), computed with the widest vector instructions the
// processor has: one definition for the writer, the reader and anything that seals packets.

#include <cstddef>
#include <cstdint>

namespace crateWire {

std::uint64_t checksum(const void* bytes, std::size_t size) noexcept;

} // namespace crateWire
