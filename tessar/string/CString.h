#pragma once

#include <compare>
#include <cstdarg>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "tessar/TessarExport.h"

namespace koString {

/// An owned string of bytes, meant as UTF-8 text: channel names, object names, messages.
///
/// The bytes are not checked for valid UTF-8 and may include NUL; `c_str()` then ends at the
/// first one for C interfaces, while `size()`, `view()` and the comparisons see every byte.
/// Comparison is exact and byte-wise, bytes taken as unsigned (the order of
/// `std::string_view`), so it is case-sensitive and never depends on the locale. Short
/// strings, such as the usual channel names, are kept inside the object without a heap block.
class TESSAR_EXPORT CString {
public:
    /// \name Construction
    /// Each copies the bytes it is given; O(n). Only `std::bad_alloc` may escape.
    /// @{
    CString() noexcept = default;
    /// Copies a NUL-terminated string; null gives the empty string.
    CString(const char* text) : text_(text != nullptr ? text : "") {}
    explicit CString(std::string_view text) : text_(text) {}
    /// Copies `length` bytes from `bytes`, NULs included; `bytes` may be null only when
    /// `length` is 0.
    CString(const char* bytes, std::size_t length)
        : text_(length != 0 ? std::string_view(bytes, length) : std::string_view()) {}

    CString(const CString& other) = default;
    /// Leaves `other` empty.
    CString(CString&& other) noexcept : text_(std::move(other.text_)) { other.text_.clear(); }
    ~CString() = default;

    /// Copies into a temporary and swaps: if the copy fails, this string is left unchanged.
    CString& operator=(const CString& other) {
        CString copy(other);
        swap(copy);
        return *this;
    }
    /// Leaves `other` empty (or unchanged when it is this string).
    CString& operator=(CString&& other) noexcept {
        if (this != &other) {
            text_ = std::move(other.text_);
            other.text_.clear();
        }
        return *this;
    }

    /// The text made from a printf-style format (not null) and its arguments, of any length.
    /// A format that the C library rejects gives the empty string. O(length of the result);
    /// formats twice when the result is longer than a small stack buffer.
    static CString format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));
    /// As `format`, with the arguments in a `va_list`. It reads them through its own copies,
    /// so `args` is not consumed; the caller still ends it with `va_end`.
    static CString vformat(const char* fmt, va_list args) __attribute__((format(printf, 1, 0)));
    /// @}

    /// \name Access
    /// @{
    /// Never null; NUL-terminated; valid until this string is next changed or destroyed.
    const char* c_str() const noexcept { return text_.c_str(); }
    /// The `size()` bytes, followed by a NUL.
    const char* data() const noexcept { return text_.data(); }
    /// The length in bytes (not in characters).
    std::size_t size() const noexcept { return text_.size(); }
    bool empty() const noexcept { return text_.empty(); }
    std::string_view view() const noexcept { return text_; }
    operator std::string_view() const noexcept { return text_; }
    /// @}

    /// \name Changing
    /// Appending is amortised O(length appended); if it fails, the string is unchanged.
    /// @{
    CString& append(std::string_view text) {
        text_.append(text);
        return *this;
    }
    /// Appends `length` bytes from `bytes`, which may be null only when `length` is 0.
    CString& append(const char* bytes, std::size_t length) {
        if (length != 0) {
            text_.append(bytes, length);
        }
        return *this;
    }
    CString& operator+=(std::string_view text) { return append(text); }
    CString& operator+=(char byte) {
        text_.push_back(byte);
        return *this;
    }
    /// Makes room for `capacity` bytes in all, so that appending up to that length needs no
    /// further allocation. Never shrinks; the text is unchanged.
    void reserve(std::size_t capacity) { text_.reserve(capacity); }
    /// Makes the string empty; keeps any heap block for reuse.
    void clear() noexcept { text_.clear(); }
    void swap(CString& other) noexcept { text_.swap(other.text_); }
    friend void swap(CString& a, CString& b) noexcept { a.swap(b); }
    /// @}

    /// \name Comparison
    /// Exact, byte-wise, case-sensitive; O(length of the common prefix). A null `const char*`
    /// compares as the empty string.
    /// @{
    friend bool operator==(const CString& a, const CString& b) noexcept {
        return a.view() == b.view();
    }
    friend bool operator==(const CString& a, std::string_view b) noexcept { return a.view() == b; }
    friend bool operator==(const CString& a, const char* b) noexcept {
        return a.view() == viewOf(b);
    }
    friend std::strong_ordering operator<=>(const CString& a, const CString& b) noexcept {
        return a.view() <=> b.view();
    }
    friend std::strong_ordering operator<=>(const CString& a, std::string_view b) noexcept {
        return a.view() <=> b;
    }
    friend std::strong_ordering operator<=>(const CString& a, const char* b) noexcept {
        return a.view() <=> viewOf(b);
    }
    /// @}

private:
    static std::string_view viewOf(const char* text) noexcept {
        return text != nullptr ? std::string_view(text) : std::string_view();
    }

    std::string text_;
};

/// True when `a` and `b` hold exactly the same bytes (case-sensitive).
inline bool equal(const CString& a, const CString& b) noexcept { return a == b; }

} // namespace koString

/// Hashes the bytes, so that equal strings hash alike. It also takes a `std::string_view` (or
/// anything that converts to one, such as a string literal) with the same result, for
/// heterogeneous lookup in a set whose equality is `std::equal_to<>`.
/// \cond
template <>
struct std::hash<koString::CString> {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
};
/// \endcond
