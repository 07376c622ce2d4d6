#pragma once

#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "geom/storage/ArrayAllocator.h"
#include "tessar/core/Reference.h"

namespace koGeom {

/// A mesh array of plain elements (floats, indices, mesh records) that lives either on the
/// heap or in a client's `ArrayAllocator`.
///
/// The storage is one block of `count() + 2` elements: a guard element, the elements, a guard
/// element. The guards are neither initialised nor checked. An empty array has no block.
///
/// With an allocator, the array's key is its own address, and its elements are fetched
/// through the allocator's `get` at each call of `base()` or `elements()`: never keep the
/// pointer across a resize, or across an unmap of a moveable allocator. Such an array must not
/// be moved in memory while it has storage.
///
/// Deliberate: copy construction adopts the source's allocator, copy assignment keeps the
/// target's own; and changing the allocator of a non-empty array leaves its copied contents
/// keyed by a temporary, so the array no longer reaches them. Change an array's allocator
/// while it is empty.
template <class T>
class Array {
    static_assert(std::is_trivially_copyable_v<T>, "mesh arrays hold plain elements");

public:
    Array() noexcept = default;

    /// Shares the source's allocator and copies its whole block, guards included.
    Array(const Array& other) : allocator_(other.allocator_) {
        setCount(other.count_);
        if (count_ != 0) {
            std::memcpy(static_cast<void*>(base()), other.base(), blockBytes(count_));
        }
    }

    /// Copies the elements (not the guards) into this array's own storage, keeping its own
    /// allocator. On the heap a failed allocation leaves the array as it was; in an allocator,
    /// where the storage is found by this array's own key and cannot be filled aside, the old
    /// elements are released first and a failure leaves the array empty.
    Array& operator=(const Array& other) {
        if (this == &other) {
            return *this;
        }
        if (!allocator_) {
            Array copy;
            copy.copyElementsFrom(other);
            swap(copy);
            return *this;
        }
        setCount(0);
        copyElementsFrom(other);
        return *this;
    }

    ~Array() {
        ::operator delete(data_);
        if (allocator_) {
            allocator_->free(this);
        }
    }

    /// Exchanges contents, heap blocks and allocators without telling any allocator: keys are
    /// not moved.
    void swap(Array& other) noexcept {
        std::swap(count_, other.count_);
        std::swap(data_, other.data_);
        allocator_.swap(other.allocator_);
    }

    /// The number of elements in use.
    int count() const noexcept { return count_; }

    /// The start of the block (the leading guard), or null when there is none.
    T* base() noexcept { return allocator_ ? static_cast<T*>(allocator_->get(this)) : data_; }
    const T* base() const noexcept {
        return allocator_ ? static_cast<const T*>(std::as_const(*allocator_).get(this)) : data_;
    }

    /// The first element, or null when the array is empty or its allocator does not know its
    /// key (an array in that state must not be used).
    T* elements() noexcept { return count_ == 0 ? nullptr : pastGuard(base()); }
    const T* elements() const noexcept { return count_ == 0 ? nullptr : pastGuard(base()); }

    /// Sets the number of elements; 0 or less releases the block. The first min(old, new)
    /// elements are kept and new ones are not initialised. Throws `std::bad_alloc` when the
    /// storage cannot be had, leaving the array as it was. O(elements kept).
    void setCount(int n) {
        if (n == count_) {
            return;
        }
        if (n <= 0) {
            releaseStorage();
            return;
        }
        if (allocator_) {
            allocator_->resize(this, blockBytes(n));
            count_ = n;
            return;
        }
        T* block = static_cast<T*>(::operator new(blockBytes(n)));
        if (count_ != 0) {
            const int kept = n < count_ ? n : count_;
            std::memcpy(static_cast<void*>(block + 1), data_ + 1,
                        sizeof(T) * static_cast<std::size_t>(kept));
            ::operator delete(data_);
        }
        data_ = block;
        count_ = n;
    }

    const ko::Reference<ArrayAllocator>& allocator() const noexcept { return allocator_; }

    /// Moves the array to `allocator` (null for the heap) by copying its elements into storage
    /// keyed by a temporary array and taking that array's place (see the class comment).
    void setAllocator(ko::Reference<ArrayAllocator> allocator) {
        if (!allocator_ && !allocator) {
            return;
        }
        Array moved;
        moved.allocator_ = std::move(allocator);
        moved = *this;
        swap(moved);
    }

private:
    // Sizes this empty array to `other`'s count and copies the elements, not the guards.
    void copyElementsFrom(const Array& other) {
        if (other.count_ >= 1) {
            setCount(other.count_);
            std::memcpy(static_cast<void*>(elements()), other.elements(),
                        sizeof(T) * static_cast<std::size_t>(count_));
        }
    }

    template <class Block>
    static Block* pastGuard(Block* block) noexcept {
        return block == nullptr ? nullptr : block + 1;
    }

    // The bytes of a block of n elements and two guards; a count too large for memory fails
    // as an allocation failure.
    static std::size_t blockBytes(int n) {
        const std::size_t elements = static_cast<std::size_t>(n) + 2;
        if (elements > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
            throw std::bad_alloc();
        }
        return elements * sizeof(T);
    }

    void releaseStorage() {
        if (count_ == 0) {
            return;
        }
        if (data_ != nullptr) {
            ::operator delete(data_);
            data_ = nullptr;
        } else if (allocator_) {
            allocator_->resize(this, 0);
        }
        count_ = 0;
    }

    int count_ = 0;
    T* data_ = nullptr;
    ko::Reference<ArrayAllocator> allocator_;
};

} // namespace koGeom
