#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "geom/storage/ArrayAllocator.h"

namespace koGeomTest {

/// An `ArrayAllocator` that keeps each key's block in its own heap vector and records every
/// request it receives, so that tests can check the exact keys and byte counts an array or
/// mesh asks for.
class RecordingAllocator : public koGeom::ArrayAllocator {
public:
    enum class Operation { Resize, Free };
    struct Request {
        Operation operation;
        const void* key;
        std::size_t bytes; // 0 for Free
        bool operator==(const Request&) const = default;
    };

    const void* get(const void* key) const override;
    void* get(const void* key) override;
    void resize(const void* key, std::size_t bytes) override;
    void free(const void* key) override;

    /// The requests so far, in order.
    std::vector<Request> requests;
    /// The bytes of each key that has a block.
    std::map<const void*, std::vector<std::byte>> blocks;
};

} // namespace koGeomTest
