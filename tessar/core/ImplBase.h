#pragma once

#include "tessar/TessarExport.h"

namespace ko {

/// A base for private implementation objects, so that an owner can hold and delete one
/// without knowing its type.
class TESSAR_EXPORT ImplBase {
public:
    ImplBase() = default;
    ImplBase(const ImplBase&) = default;
    ImplBase& operator=(const ImplBase&) = default;
    virtual ~ImplBase();
};

} // namespace ko
