#pragma once

#include <compare>
#include <cstddef>
#include <functional>
#include <utility>

namespace ko {

/// An intrusive handle that holds one reference to a `T`.
///
/// It calls `ref()` and `unref()` on the object itself, so any class with those two
/// operations can be held, including one that keeps its own reference slots instead of
/// deriving from `ReferenceCount`. Taking a handle to a new object (count 0) raises its count
/// to 1; dropping the last handle lets the object delete itself.
template <class T>
class Reference {
public:
    Reference() noexcept = default;
    Reference(std::nullptr_t) noexcept {}
    /// Takes a new reference to `object` (which may be null).
    Reference(T* object) noexcept : object_(object) { acquire(); }
    Reference(const Reference& other) noexcept : object_(other.object_) { acquire(); }
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

    /// Converts from a handle to a derived class.
    template <class U>
    requires std::is_convertible_v<U*, T*> Reference(const Reference<U>& other)
    noexcept : object_(other.get()) { acquire(); }

    ~Reference() { release(); }

    Reference& operator=(const Reference& other) noexcept {
        Reference(other).swap(*this);
        return *this;
    }
    Reference& operator=(Reference&& other) noexcept {
        Reference(std::move(other)).swap(*this);
        return *this;
    }
    Reference& operator=(T* object) noexcept {
        Reference(object).swap(*this);
        return *this;
    }

    /// Drops the held reference, if any, and holds `object` instead.
    void reset(T* object = nullptr) noexcept { Reference(object).swap(*this); }

    void swap(Reference& other) noexcept { std::swap(object_, other.object_); }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// A handle to the same object as a `U`, or a null handle when the object is not a `U`
    /// (checked with `dynamic_cast`).
    template <class U>
    Reference<U> cast() const noexcept {
        return Reference<U>(dynamic_cast<U*>(object_));
    }

    friend bool operator==(const Reference& a, const Reference& b) noexcept {
        return a.object_ == b.object_;
    }
    friend bool operator==(const Reference& a, const T* b) noexcept { return a.object_ == b; }
    friend bool operator==(const Reference& a, std::nullptr_t) noexcept {
        return a.object_ == nullptr;
    }
    friend std::strong_ordering operator<=>(const Reference& a, const Reference& b) noexcept {
        return std::compare_three_way()(a.object_, b.object_);
    }

private:
    void acquire() const noexcept {
        if (object_ != nullptr) {
            object_->ref();
        }
    }
    void release() const noexcept {
        if (object_ != nullptr) {
            object_->unref();
        }
    }

    T* object_ = nullptr;
};

} // namespace ko

/// \cond
template <class T>
struct std::hash<ko::Reference<T>> {
    std::size_t operator()(const ko::Reference<T>& reference) const noexcept {
        return std::hash<T*>()(reference.get());
    }
};
/// \endcond
