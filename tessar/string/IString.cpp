#include "tessar/string/IString.h"

namespace koString {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;

constexpr char32_t firstSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t lastSurrogate = 0xDFFF;
constexpr char32_t firstSupplementary = 0x10000;

// Calls emit(c) for each code point of the UTF-8 bytes in order, with U+FFFD in place of each
// maximal ill-formed subpart. The accepted second bytes follow the table of well-formed UTF-8
// byte sequences: after E0 only A0..BF (shorter forms are overlong), after ED only 80..9F
// (higher ones encode surrogates), after F0 only 90..BF (overlong) and after F4 only 80..8F
// (beyond U+10FFFF). A byte that breaks a sequence is not consumed: it is read again as the
// start of the next one.
template <class Emit>
void decodeUtf8(std::string_view bytes, Emit&& emit) {
    const auto* byte = reinterpret_cast<const unsigned char*>(bytes.data());
    const std::size_t count = bytes.size();
    std::size_t i = 0;
    while (i < count) {
        const unsigned lead = byte[i++];
        if (lead < 0x80) {
            emit(static_cast<char32_t>(lead));
            continue;
        }
        std::size_t trailing = 0;
        char32_t codePoint = 0;
        unsigned low = 0x80;
        unsigned high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            trailing = 1;
            codePoint = lead & 0x1F;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            trailing = 2;
            codePoint = lead & 0x0F;
            low = lead == 0xE0 ? 0xA0 : low;
            high = lead == 0xED ? 0x9F : high;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            trailing = 3;
            codePoint = lead & 0x07;
            low = lead == 0xF0 ? 0x90 : low;
            high = lead == 0xF4 ? 0x8F : high;
        } else {
            emit(replacementCharacter);
            continue;
        }
        bool complete = true;
        for (std::size_t k = 0; k < trailing; ++k) {
            if (i == count || byte[i] < low || byte[i] > high) {
                complete = false;
                break;
            }
            codePoint = (codePoint << 6) | (byte[i++] & 0x3F);
            low = 0x80;
            high = 0xBF;
        }
        emit(complete ? codePoint : replacementCharacter);
    }
}

// Calls emit(c) for each code point of the UTF-16 units in order, with U+FFFD in place of
// each surrogate that is not part of a high-low pair.
template <class Emit>
void decodeUtf16(std::u16string_view units, Emit&& emit) {
    const std::size_t count = units.size();
    std::size_t i = 0;
    while (i < count) {
        const char32_t unit = units[i++];
        if (unit < firstSurrogate || unit > lastSurrogate) {
            emit(unit);
        } else if (unit < firstLowSurrogate && i < count && units[i] >= firstLowSurrogate &&
                   units[i] <= lastSurrogate) {
            const char32_t low = units[i++];
            emit(firstSupplementary + ((unit - firstSurrogate) << 10) + (low - firstLowSurrogate));
        } else {
            emit(replacementCharacter);
        }
    }
}

std::size_t utf16Length(char32_t codePoint) { return codePoint < firstSupplementary ? 1 : 2; }

std::size_t utf8Length(char32_t codePoint) {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < firstSupplementary ? 3 : 4;
}

// Both conversions count first and then write into storage of the exact size, so a long text
// is allocated once and holds no spare capacity.
std::u16string utf16FromUtf8(std::string_view bytes) {
    std::size_t length = 0;
    decodeUtf8(bytes, [&length](char32_t c) { length += utf16Length(c); });
    std::u16string units(length, u'\0');
    char16_t* out = units.data();
    decodeUtf8(bytes, [&out](char32_t c) {
        if (c < firstSupplementary) {
            *out++ = static_cast<char16_t>(c);
        } else {
            c -= firstSupplementary;
            *out++ = static_cast<char16_t>(firstSurrogate + (c >> 10));
            *out++ = static_cast<char16_t>(firstLowSurrogate + (c & 0x3FF));
        }
    });
    return units;
}

} // namespace

IString::IString(const char* utf8)
    : units_(utf8 != nullptr ? utf16FromUtf8(utf8) : std::u16string()) {}

IString::IString(std::string_view utf8) : units_(utf16FromUtf8(utf8)) {}

IString::IString(const CString& utf8) : units_(utf16FromUtf8(utf8.view())) {}

IString::IString(std::u16string_view units) : units_(units) {}

CString IString::toUtf8() const {
    std::size_t length = 0;
    decodeUtf16(units_, [&length](char32_t c) { length += utf8Length(c); });
    CString text;
    text.reserve(length);
    decodeUtf16(units_, [&text](char32_t c) {
        char bytes[4];
        const std::size_t size = utf8Length(c);
        if (size == 1) {
            bytes[0] = static_cast<char>(c);
        } else {
            // A lead byte 110xxxxx, 1110xxxx or 11110xxx, then 10xxxxxx for each other byte.
            constexpr unsigned char leadMarks[] = {0, 0, 0xC0, 0xE0, 0xF0};
            for (std::size_t k = size - 1; k > 0; --k) {
                bytes[k] = static_cast<char>(0x80 | (c & 0x3F));
                c >>= 6;
            }
            bytes[0] = static_cast<char>(leadMarks[size] | c);
        }
        text.append(bytes, size);
    });
    return text;
}

} // namespace koString
