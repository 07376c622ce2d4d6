#pragma once

#include <cstddef>

#include "geom/FormworkExport.h"
#include "tessar/core/ReferenceCount.h"

namespace koGeom {

/// Storage that a client supplies for a mesh's big arrays, so that they can live outside the
/// ordinary heap.
///
/// The allocator receives every allocation, resize and release of every array that uses it,
/// keyed by the identity of the array (its address, see `Array`). An array reaches its
/// contents through `get` at each access and never keeps the address, so an allocator may
/// move or unmap a block between accesses. A mesh and each of its arrays share the allocator
/// by reference count.
class FORMWORK_EXPORT ArrayAllocator : public ko::ReferenceCount {
public:
    /// The block of `key`, or null when the key has no block (or it is not reachable now).
    virtual const void* get(const void* key) const = 0;
    virtual void* get(const void* key) = 0;

    /// Gives `key` a block of `bytes` bytes, keeping the smaller of the old and new sizes of
    /// its contents from the block's start. A size of 0 leaves the key without a block.
    /// Throws `std::bad_alloc` when the storage cannot be had.
    virtual void resize(const void* key, std::size_t bytes) = 0;

    /// Releases the block of `key`; an unknown key is ignored.
    virtual void free(const void* key) = 0;

protected:
    ArrayAllocator() = default;
    ~ArrayAllocator() override;
};

} // namespace koGeom
