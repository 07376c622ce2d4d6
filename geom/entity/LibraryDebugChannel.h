#pragma once

#include "geom/FormworkExport.h"
#include "tessar/os/DebugChannel.h"

namespace koGeom {

/// The library's one debug channel, through which all of its diagnostic prints go (the
/// octree statistics line, the camera, lens, frustum and viewport prints). It is made,
/// disabled, on the first call (safe from several threads at once) and lives until the
/// process exits; the host enables it and may give it a sink.
FORMWORK_EXPORT koOS::DebugChannel& debugChannel();

} // namespace koGeom
