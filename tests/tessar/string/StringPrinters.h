#pragma once

#include <cstdio>
#include <ostream>

#include "tessar/string/CString.h"
#include "tessar/string/IString.h"

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

inline void PrintTo(const IString& text, std::ostream* out) {
    *out << "u\"";
    for (char16_t unit : text.view()) {
        if (unit >= 0x20 && unit < 0x7F) {
            *out << static_cast<char>(unit);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\u%04X", static_cast<unsigned>(unit));
            *out << escaped;
        }
    }
    *out << '"';
}

} // namespace koString
