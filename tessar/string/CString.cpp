#include "tessar/string/CString.h"

#include <cstdio>

namespace koString {

CString CString::format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    CString result = vformat(fmt, args);
    va_end(args);
    return result;
}

CString CString::vformat(const char* fmt, va_list args) {
    // Most messages and names fit the stack buffer and are formatted once; a longer result
    // is formatted again straight into a string of the exact length the first pass reported.
    char buffer[256];
    va_list firstPass;
    va_copy(firstPass, args);
    const int length = std::vsnprintf(buffer, sizeof(buffer), fmt, firstPass);
    va_end(firstPass);
    if (length < 0) {
        return CString();
    }
    const auto size = static_cast<std::size_t>(length);
    if (size < sizeof(buffer)) {
        return CString(buffer, size);
    }

    CString result;
    // resize() keeps a NUL at text_[size], so the terminator that vsnprintf writes there
    // replaces a NUL with a NUL.
    result.text_.resize(size);
    va_list secondPass;
    va_copy(secondPass, args);
    std::vsnprintf(result.text_.data(), size + 1, fmt, secondPass);
    va_end(secondPass);
    return result;
}

} // namespace koString
