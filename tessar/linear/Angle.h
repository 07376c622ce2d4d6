#pragma once

#include <numbers>

namespace koLinear {

/// \name Angle units
/// @{

/// `degrees` converted to radians.
constexpr double toRadians(double degrees) noexcept { return degrees * (std::numbers::pi / 180.0); }

/// `radians` converted to degrees.
constexpr double toDegrees(double radians) noexcept { return radians * (180.0 / std::numbers::pi); }

/// @}

} // namespace koLinear
