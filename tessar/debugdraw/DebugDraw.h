#pragma once

#include "tessar/TessarExport.h"

namespace koDebugDraw {

/// \name Interface registry
/// The host registers the debug-drawing interfaces it offers, each under a name; the library
/// looks them up by name and draws through them when found. The registry holds plain
/// pointers: it neither owns nor checks them. Registration and lookup may run on several
/// threads at once; they take a lock, so look an interface up once and keep it rather than
/// on every draw.
/// @{

/// Makes `iface` the interface registered under `name`, replacing any earlier one; a null
/// `iface` removes the name. A null `name` is ignored. Cost: O(log n) in the number of names.
TESSAR_EXPORT void registerIFace(const char* name, void* iface);

/// The interface registered under `name`, or null if there is none (or `name` is null).
/// Cost: O(log n) in the number of names.
TESSAR_EXPORT void* loadIFace(const char* name);

/// @}

} // namespace koDebugDraw
