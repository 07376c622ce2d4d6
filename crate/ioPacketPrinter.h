#pragma once

#include <cstddef>
#include <cstdio>
#include <iosfwd>

#include "crate/CrateExport.h"
#include "crate/ioReadContext.h"

/// How `printPacketFile` lists a file.
struct ioPrintOptions {
    /// A JSON document instead of the indented text listing.
    bool json = false;
    /// Arrays are shown by this many first elements; the rest are counted, not shown.
    std::size_t maxArrayElements = 8;
};

/// Lists every packet left in `context` and every value in them, without a registry: packet
/// index, offset, type name, object reference and payload length; each chunk and sub-packet;
/// each value with its kind, offset and contents. Floats and doubles are shown in the
/// shortest form that reads back to the same bits (NaN with its payload bits); strings are
/// escaped (text: C-style; JSON: invalid UTF-8 bytes as U+FFFD).
///
/// The text listing ends with a line that counts the packets, or with "error: " and the
/// error (`ioError::toString`); the JSON document has an "error" member (null when none).
/// Returns `context.ok()`.
CRATE_EXPORT bool printPacketFile(ioReadContext& context, std::ostream& out,
                                  const ioPrintOptions& options = {});
/// The same, written to a C stream.
CRATE_EXPORT bool printPacketFile(ioReadContext& context, std::FILE* out,
                                  const ioPrintOptions& options = {});
