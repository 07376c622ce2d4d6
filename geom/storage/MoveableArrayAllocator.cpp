#include "geom/storage/MoveableArrayAllocator.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace koGeom {

MoveableArrayAllocator::MoveableArrayAllocator(koOS::MoveableAllocator& allocator)
    : allocator_(allocator) {}

MoveableArrayAllocator::~MoveableArrayAllocator() {
    for (Entry& entry : entries_) {
        delete entry.chunk;
    }
}

const MoveableArrayAllocator::Entry* MoveableArrayAllocator::find(const void* key) const noexcept {
    for (const Entry& entry : entries_) {
        if (entry.key == key) {
            return &entry;
        }
    }
    return nullptr;
}

MoveableArrayAllocator::Entry* MoveableArrayAllocator::find(const void* key) noexcept {
    return const_cast<Entry*>(std::as_const(*this).find(key));
}

const void* MoveableArrayAllocator::get(const void* key) const {
    const Entry* entry = find(key);
    return entry != nullptr ? entry->address : nullptr;
}

void* MoveableArrayAllocator::get(const void* key) {
    Entry* entry = find(key);
    return entry != nullptr ? entry->address : nullptr;
}

void MoveableArrayAllocator::resize(const void* key, std::size_t bytes) {
    Entry* entry = find(key);
    if (entry == nullptr && bytes == 0) {
        return;
    }
    const std::uint64_t oldSize = entry != nullptr ? entry->size : 0;
    if (entry != nullptr && oldSize == bytes) {
        return;
    }

    // The new chunk is made and filled before the entry changes, so a failure leaves it as it
    // was.
    std::unique_ptr<koOS::MoveableChunk> chunk;
    void* address = nullptr;
    if (bytes != 0) {
        chunk.reset(allocator_.allocate(bytes));
        address = chunk ? chunk->map() : nullptr;
        if (address == nullptr) {
            throw std::bad_alloc();
        }
        if (oldSize != 0) {
            std::memcpy(address, entry->address,
                        static_cast<std::size_t>(std::min<std::uint64_t>(oldSize, bytes)));
        }
    }
    if (entry == nullptr) {
        entries_.push_back(Entry{key, nullptr, 0, nullptr});
        entry = &entries_.back();
    }
    delete entry->chunk;
    entry->chunk = chunk.release();
    entry->size = bytes;
    entry->address = address;
}

void MoveableArrayAllocator::free(const void* key) {
    Entry* entry = find(key);
    if (entry == nullptr) {
        return;
    }
    delete entry->chunk;
    entries_.erase(entries_.begin() + (entry - entries_.data()));
}

void MoveableArrayAllocator::map() {
    mapped_ = true;
    for (Entry& entry : entries_) {
        if (entry.chunk != nullptr) {
            entry.address = entry.chunk->map();
            if (entry.address == nullptr) {
                throw std::bad_alloc();
            }
        }
    }
}

void MoveableArrayAllocator::unmap() noexcept {
    mapped_ = false;
    for (Entry& entry : entries_) {
        if (entry.chunk != nullptr) {
            entry.chunk->unmap();
            entry.address = nullptr;
        }
    }
}

} // namespace koGeom
