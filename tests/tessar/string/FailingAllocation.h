#pragma once

namespace koStringTest {

/// While alive, the `n`th request (counting from 1) to the global `operator new` of this
/// program throws `std::bad_alloc`; every other request is served by `malloc`. Only one may be
/// alive at a time.
class FailingAllocation {
public:
    explicit FailingAllocation(long n);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    /// True once the chosen request has been refused.
    bool failed() const;
};

} // namespace koStringTest
