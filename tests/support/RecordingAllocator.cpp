#include "tests/support/RecordingAllocator.h"

#include <algorithm>

namespace koGeomTest {

const void* RecordingAllocator::get(const void* key) const {
    auto found = blocks.find(key);
    return found == blocks.end() ? nullptr : found->second.data();
}

void* RecordingAllocator::get(const void* key) {
    auto found = blocks.find(key);
    return found == blocks.end() ? nullptr : found->second.data();
}

void RecordingAllocator::resize(const void* key, std::size_t bytes) {
    requests.push_back({Operation::Resize, key, bytes});
    if (bytes == 0) {
        blocks.erase(key);
        return;
    }
    // A fresh vector for every resize, as a moving allocator would give: the prefix is kept
    // and the rest is filled with a marker so that reads of unset elements stand out.
    std::vector<std::byte> block(bytes, std::byte{0xA5});
    auto old = blocks.find(key);
    if (old != blocks.end()) {
        std::copy_n(old->second.begin(), std::min(bytes, old->second.size()), block.begin());
    }
    blocks[key] = std::move(block);
}

void RecordingAllocator::free(const void* key) {
    requests.push_back({Operation::Free, key, 0});
    blocks.erase(key);
}

} // namespace koGeomTest
