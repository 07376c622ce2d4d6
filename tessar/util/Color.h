#pragma once

#include <cstdint>

namespace koUtil {

/// \name Colours
/// Red, green, blue and alpha, in that order: `Color` in floats (0 to 1 for an ordinary
/// colour, not checked), `Color8` in bytes (0 to 255). Plain values, compared exactly.
/// @{

/// A colour with alpha in single-precision floats. A default colour is opaque black.
struct Color {
    float red = 0.0f;
    float green = 0.0f;
    float blue = 0.0f;
    float alpha = 1.0f;

    constexpr Color() noexcept = default;
    constexpr Color(float red, float green, float blue, float alpha = 1.0f) noexcept
        : red(red), green(green), blue(blue), alpha(alpha) {}

    friend constexpr bool operator==(const Color&, const Color&) noexcept = default;
};

/// A colour with alpha in bytes. A default colour is opaque black.
struct Color8 {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;
    std::uint8_t alpha = 255;

    constexpr Color8() noexcept = default;
    constexpr Color8(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                     std::uint8_t alpha = 255) noexcept
        : red(red), green(green), blue(blue), alpha(alpha) {}

    /// Sets all four channels.
    constexpr void setRGBA(std::uint8_t newRed, std::uint8_t newGreen, std::uint8_t newBlue,
                           std::uint8_t newAlpha) noexcept {
        red = newRed;
        green = newGreen;
        blue = newBlue;
        alpha = newAlpha;
    }

    friend constexpr bool operator==(const Color8&, const Color8&) noexcept = default;
};

/// @}

} // namespace koUtil
