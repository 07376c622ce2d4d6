#include "tessar/core/ReferenceCount.h"

namespace ko {

// Out of line so that the class has one home for its vtable and type information.
ReferenceCount::~ReferenceCount() = default;

} // namespace ko
