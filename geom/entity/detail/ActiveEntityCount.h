#pragma once

namespace koGeom::detail {

/// \name The entity side of the live-entity count
/// `Entity`'s constructor and destructor are the only callers.
/// @{
void countEntityIn();
void countEntityOut();
/// @}

} // namespace koGeom::detail
