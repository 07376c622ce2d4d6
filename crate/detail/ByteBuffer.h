#pragma once

// A growable byte buffer that, unlike std::vector, does not zero what it grows into: the
// writer and the file reader fill every byte they take, and a packet file moves each byte
// through such a buffer once.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace crateWire {

class ByteBuffer {
public:
    std::uint8_t* data() noexcept { return bytes_.get(); }
    const std::uint8_t* data() const noexcept { return bytes_.get(); }
    std::size_t size() const noexcept { return size_; }
    std::size_t capacity() const noexcept { return capacity_; }
    void clear() noexcept { size_ = 0; }
    void resize(std::size_t size) {
        reserve(size);
        size_ = size;
    }

    /// Makes room for `count` more bytes and returns where they go; the size grows by `count`.
    std::uint8_t* extend(std::size_t count) {
        if (capacity_ - size_ < count) {
            reserve(size_ + count);
        }
        std::uint8_t* at = bytes_.get() + size_;
        size_ += count;
        return at;
    }

    void append(const void* from, std::size_t count) {
        if (count != 0) {
            std::memcpy(extend(count), from, count);
        }
    }

    /// Keeps the contents; grows geometrically so that appends are amortised O(1).
    void reserve(std::size_t capacity) {
        if (capacity <= capacity_) {
            return;
        }
        std::size_t grown = capacity_ < 256 ? 256 : capacity_ * 2;
        if (grown < capacity) {
            grown = capacity;
        }
        std::unique_ptr<std::uint8_t[]> bigger(new std::uint8_t[grown]);
        if (size_ != 0) {
            std::memcpy(bigger.get(), bytes_.get(), size_);
        }
        bytes_ = std::move(bigger);
        capacity_ = grown;
    }

private:
    std::unique_ptr<std::uint8_t[]> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

} // namespace crateWire
