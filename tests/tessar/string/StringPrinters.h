#pragma once

#include <cstdio>
#include <ostream>

#include "tessar/string/CString.h"

// Readable failure messages: GoogleTest finds these through the types' namespace.
namespace koString {

inline void PrintTo(const CString& text, std::ostream* out) {
    *out << '"';
    for (char byte : text.view()) {
        const auto value = static_cast<unsigned char>(byte);
        if (value >= 0x20 && value < 0x7F) {
            *out << byte;
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\x%02X", static_cast<unsigned>(value));
            *out << escaped;
        }
    }
    *out << '"';
}

} // namespace koString
