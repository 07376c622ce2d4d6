#pragma once

#include <cstdint>
#include <string>

#include "crate/CrateExport.h"

/// What went wrong in a packet file, and where. A default error is "no error".
///
/// Errors are values: no operation of the packet-file library throws (other than
/// `std::bad_alloc`). A context keeps its first error; every read or write after it does
/// nothing and returns a zero value.
struct CRATE_EXPORT ioError {
    /// What was wrong, in one line ("checksum mismatch", "array of 4000 floats exceeds the
    /// room of 3000"); empty when there is no error.
    std::string message;
    /// Index of the packet (0 for the first after the file header); -1 outside any packet.
    std::int64_t packetIndex = -1;
    /// The packet's type name, when it was known at the time of the error.
    std::string typeName;
    /// Offset from the start of the file (or buffer) of the byte where the fault was found.
    std::uint64_t byteOffset = 0;

    bool isSet() const noexcept { return !message.empty(); }
    /// One line for a person: "packet 12 (ko.tz.mesh.vertices) at byte 4711: checksum
    /// mismatch", or "at byte 3: not a packet file" outside any packet.
    std::string toString() const;
};
