#pragma once

#include "geom/FormworkExport.h"

namespace koGeom {

/// \name The process-wide count of live entities
/// Every `Entity` adds one when its construction ends and removes one as its destructor
/// begins. The count is a plain integer without atomic operations or locks: entities are
/// made and destroyed on the host's thread.
/// @{

/// The number of entities counted now.
FORMWORK_EXPORT int numberOfActiveEntities();

/// Lowers the count by one and does nothing else. The library never calls it; a client that
/// does can bring the count below the true number of live entities, and below zero.
FORMWORK_EXPORT void decrementActiveEntities();

/// @}

} // namespace koGeom
