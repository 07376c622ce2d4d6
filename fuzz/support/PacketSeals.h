#pragma once

// Checksums put right on damaged packet files, so that a fuzz target (or a test) reaches the
// parser behind them: a mutated file would otherwise almost always stop at its first checksum.

#include <cstdint>
#include <vector>

namespace formworkFuzz {

/// Recomputes the checksum of every packet of `file` whose framing still parses, up to the
/// first that does not; the rest is left as it is.
void resealPackets(std::vector<std::uint8_t>& file);

} // namespace formworkFuzz
