#pragma once

#include <cstddef>

#include "crate/CrateExport.h"
#include "crate/ioPacketVisitor.h"
#include "crate/ioReadContext.h"

/// Walks every packet left in `context` and every value in them, telling `visitor` (see
/// `ioPacketVisitor` for the order), without a registry: the base of file listings and of
/// generic checks. Arrays are shown by their first `arrayHead` elements. Returns
/// `context.ok()`: false when damage stopped the walk, which then ends at the damaged packet.
///
/// Cost: one pass over the file; each array is copied once into a buffer kept for the walk.
CRATE_EXPORT bool walkPacketFile(ioReadContext& context, ioPacketVisitor& visitor,
                                 std::size_t arrayHead = 8);
