#pragma once

#include <chrono>

namespace koOS {

/// Measures elapsed wall time on the steady clock, which never jumps with changes to the
/// system time.
class StopWatch {
public:
    /// Starts the watch.
    StopWatch() noexcept : start_(Clock::now()) {}

    /// The seconds since the watch was made or last restarted. The watch keeps running: a
    /// later call returns a larger time.
    double stop() const noexcept {
        return std::chrono::duration<double>(Clock::now() - start_).count();
    }

    /// Starts timing again from now.
    void restart() noexcept { start_ = Clock::now(); }

private:
    using Clock = std::chrono::steady_clock;

    Clock::time_point start_;
};

} // namespace koOS
