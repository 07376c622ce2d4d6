#pragma once

#include <atomic>

#include "tessar/TessarExport.h"

namespace ko {

/// An intrusive reference count for objects held through `Reference<T>`.
///
/// A new object starts with count 0: whoever first takes a `Reference` raises it. `unref()`
/// deletes the object through its virtual destructor when the count returns to 0. The count
/// belongs to the object, not to its value: copying or assigning an object never copies it.
/// Increments and decrements are atomic, so a read-only object may be shared across threads.
class TESSAR_EXPORT ReferenceCount {
public:
    /// Adds one reference.
    void ref() const noexcept { count_.fetch_add(1, std::memory_order_relaxed); }

    /// Drops one reference; deletes the object when none is left.
    void unref() const noexcept {
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            delete this;
        }
    }

    /// The number of references held now.
    int refs() const noexcept { return count_.load(std::memory_order_relaxed); }

protected:
    ReferenceCount() noexcept = default;
    // The count stays with the object: a copy is a new object with no holders yet.
    ReferenceCount(const ReferenceCount&) noexcept {}
    ReferenceCount& operator=(const ReferenceCount&) noexcept { return *this; }
    virtual ~ReferenceCount();

private:
    mutable std::atomic<int> count_{0};
};

} // namespace ko
