#pragma once

#include <cstdint>

namespace koOS {

/// A universally unique identifier kept as four unsigned 32-bit words, in the order they are
/// stored and compared. The zero identifier names nothing.
struct Uuid {
    std::uint32_t words[4] = {0, 0, 0, 0};

    /// True for the zero identifier.
    constexpr bool isNull() const noexcept {
        return (words[0] | words[1] | words[2] | words[3]) == 0;
    }

    friend constexpr bool operator==(const Uuid&, const Uuid&) noexcept = default;
};

} // namespace koOS
