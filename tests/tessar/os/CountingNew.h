#pragma once

#include <cstddef>

// The global operator new of the os test executable counts its calls and can be told to fail,
// so that tests can see every heap request a pool or allocator makes.
namespace countingNew {

/// Heap requests made through operator new since the program started.
std::size_t calls();
/// The size of the latest request.
std::size_t lastSize();
/// Lets `successes` more requests through, then fails each one until `stopFailing()`.
void failAfter(std::size_t successes);
void stopFailing();

/// Counts the requests made while it lives.
class Scope {
public:
    Scope() : start_(countingNew::calls()) {}
    std::size_t calls() const { return countingNew::calls() - start_; }

private:
    std::size_t start_;
};

/// Fails every request after the given number while it lives.
class FailureScope {
public:
    explicit FailureScope(std::size_t successes) { failAfter(successes); }
    ~FailureScope() { stopFailing(); }
    FailureScope(const FailureScope&) = delete;
    FailureScope& operator=(const FailureScope&) = delete;
};

}  // namespace countingNew
