#include "tests/tessar/string/FailingAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

// Requests left before the refused one; 0 when no refusal is armed.
std::atomic<long> requestsLeft{0};
std::atomic<bool> refused{false};

void* allocate(std::size_t size) {
    long left = requestsLeft.load();
    while (left > 0 && !requestsLeft.compare_exchange_weak(left, left - 1)) {
    }
    if (left == 1) {
        refused = true;
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

namespace koStringTest {

FailingAllocation::FailingAllocation(long n) {
    refused = false;
    requestsLeft = n;
}

FailingAllocation::~FailingAllocation() { requestsLeft = 0; }

bool FailingAllocation::failed() const { return refused; }

} // namespace koStringTest

// Every plain form of the global allocation functions is replaced, so that memory from one
// form is never released by another provider's (the sanitizer runtime brings its own).
void* operator new(std::size_t size) {
    void* block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }
