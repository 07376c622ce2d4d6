#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "tessar/TessarExport.h"
#include "tessar/string/CString.h"

namespace koString {

/// Text held as UTF-16 code units (`char16_t`), made from and turned back into UTF-8.
///
/// Code points above U+FFFF take two units (a surrogate pair), so `size()` counts units, not
/// characters.
///
/// Reading UTF-8 never fails and never reads past the input: every well-formed sequence gives
/// its code point, and each ill-formed part becomes one U+FFFD (REPLACEMENT CHARACTER), one
/// per maximal subpart as Unicode recommends. A maximal subpart is either a byte that can
/// start no sequence (a continuation byte 80..BF where a lead byte is due, C0, C1, F5..FF),
/// or a lead byte followed by the longest run of bytes that could still begin a well-formed
/// sequence, cut short by a byte that cannot continue it or by the end of the input. That
/// byte is then read afresh. So overlong forms, encoded surrogates and code points above
/// U+10FFFF give one U+FFFD per byte (`E0 80 80`, `ED A0 80`, `F4 90 80 80`: three, three,
/// four), while a sequence cut short gives one (`F0 9F 98` then the end, or then `41`: one
/// U+FFFD, then the `41`).
///
/// Units given directly (from a `std::u16string_view`) are kept as they are, even a surrogate
/// without its partner; `toUtf8()` writes each such unpaired surrogate as U+FFFD.
class TESSAR_EXPORT IString {
public:
    /// \name Construction
    /// Those from UTF-8 decode as described above, in O(n); only `std::bad_alloc` may escape.
    /// @{
    IString() noexcept = default;
    /// Decodes NUL-terminated UTF-8; null gives the empty text.
    IString(const char* utf8);
    explicit IString(std::string_view utf8);
    explicit IString(const CString& utf8);
    /// Keeps the code units as given, unpaired surrogates included.
    explicit IString(std::u16string_view units);

    IString(const IString& other) = default;
    /// Leaves `other` empty.
    IString(IString&& other) noexcept : units_(std::move(other.units_)) { other.units_.clear(); }
    ~IString() = default;

    /// Copies into a temporary and swaps: if the copy fails, this text is left unchanged.
    IString& operator=(const IString& other) {
        IString copy(other);
        swap(copy);
        return *this;
    }
    /// Leaves `other` empty (or unchanged when it is this text).
    IString& operator=(IString&& other) noexcept {
        if (this != &other) {
            units_ = std::move(other.units_);
            other.units_.clear();
        }
        return *this;
    }

    void swap(IString& other) noexcept { units_.swap(other.units_); }
    friend void swap(IString& a, IString& b) noexcept { a.swap(b); }
    /// @}

    /// \name Access
    /// @{
    /// The text as UTF-8, each unpaired surrogate written as U+FFFD (`EF BF BD`). O(n).
    CString toUtf8() const;
    /// The `size()` code units, followed by a zero unit.
    const char16_t* data() const noexcept { return units_.data(); }
    /// The length in UTF-16 code units.
    std::size_t size() const noexcept { return units_.size(); }
    bool empty() const noexcept { return units_.empty(); }
    std::u16string_view view() const noexcept { return units_; }
    /// @}

    /// \name Comparison
    /// Exact, unit by unit. The order is that of the code units, which differs from code point
    /// order only where a surrogate pair (U+10000 and above) meets a unit from U+E000..U+FFFF:
    /// the pair sorts first. O(length of the common prefix).
    /// @{
    friend bool operator==(const IString& a, const IString& b) noexcept {
        return a.view() == b.view();
    }
    friend std::strong_ordering operator<=>(const IString& a, const IString& b) noexcept {
        return a.view() <=> b.view();
    }
    /// @}

private:
    std::u16string units_;
};

} // namespace koString

/// Hashes the code units, so that equal texts hash alike.
/// \cond
template <>
struct std::hash<koString::IString> {
    std::size_t operator()(const koString::IString& text) const noexcept {
        return std::hash<std::u16string_view>()(text.view());
    }
};
/// \endcond
