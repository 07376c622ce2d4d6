#include "tessar/core/ImplBase.h"

namespace ko {

ImplBase::~ImplBase() = default;

} // namespace ko
