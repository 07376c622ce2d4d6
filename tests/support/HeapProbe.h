#pragma once

#include <cstddef>

// A test executable that links the test support library gets a global operator new that counts
// its calls and can be told to fail, so that tests can see every heap request the code makes
// and prove that a failed allocation leaves an object as it was.
namespace heapProbe {

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
    Scope() : start_(heapProbe::calls()) {}
    std::size_t calls() const { return heapProbe::calls() - start_; }

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

} // namespace heapProbe
