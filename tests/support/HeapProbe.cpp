#include "tests/support/HeapProbe.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace heapProbe {

namespace {

std::atomic<std::size_t> callCount{0};
std::atomic<std::size_t> latestSize{0};
// Requests still allowed before failures start; the maximum means never fail.
std::atomic<std::size_t> allowance{std::numeric_limits<std::size_t>::max()};

void* request(std::size_t size) noexcept {
    callCount.fetch_add(1, std::memory_order_relaxed);
    latestSize.store(size, std::memory_order_relaxed);
    std::size_t left = allowance.load(std::memory_order_relaxed);
    while (left != std::numeric_limits<std::size_t>::max()) {
        if (left == 0) {
            return nullptr;
        }
        if (allowance.compare_exchange_weak(left, left - 1, std::memory_order_relaxed)) {
            break;
        }
    }
    return std::malloc(size == 0 ? 1 : size);
}

void* requestOrThrow(std::size_t size) {
    void* p = request(size);
    if (p == nullptr) {
        throw std::bad_alloc();
    }
    return p;
}

} // namespace

std::size_t calls() { return callCount.load(std::memory_order_relaxed); }
std::size_t lastSize() { return latestSize.load(std::memory_order_relaxed); }
void failAfter(std::size_t successes) { allowance.store(successes, std::memory_order_relaxed); }
void stopFailing() {
    allowance.store(std::numeric_limits<std::size_t>::max(), std::memory_order_relaxed);
}

} // namespace heapProbe

// Every unaligned form is replaced, so that each allocation and its release meet the same
// malloc and free; the aligned forms stay the runtime's own pairs.
void* operator new(std::size_t size) { return heapProbe::requestOrThrow(size); }
void* operator new[](std::size_t size) { return heapProbe::requestOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return heapProbe::request(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return heapProbe::request(size);
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { std::free(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { std::free(p); }
