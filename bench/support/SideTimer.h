#pragma once

#include <benchmark/benchmark.h>

#include <optional>
#include <string>

namespace formworkBench {

/// The CPU seconds this thread has used, user and system (page faults and the kernel's file
/// copies included). Tasks are timed by it rather than by the wall clock, which on a machine
/// shared with other work also counts the time the thread waits for a core.
double threadSeconds();

/// \name Sides of one task
/// A program that runs one task on several sides (our library, a peer, a raw baseline) records
/// each side's seconds per iteration, so that a later side can report its ratio to an earlier
/// one measured in the same run.
/// @{
void recordSeconds(const std::string& task, const std::string& side, double seconds);
/// The median of the recorded repetitions of (task, side); nothing when none was recorded.
std::optional<double> medianSeconds(const std::string& task, const std::string& side);
/// @}

/// The loop of a benchmark registered with `UseManualTime()`: each iteration runs `prepare()`
/// untimed, times `work()` in thread seconds, then runs `finish()` untimed, which checks the
/// result, frees it and returns an error text or an empty string. Returns the seconds per
/// iteration, or nothing after skipping the benchmark with the first error.
template <class Prepare, class Work, class Finish>
std::optional<double> runTimed(benchmark::State& state, Prepare&& prepare, Work&& work,
                               Finish&& finish) {
    double total = 0.0;
    for (auto _ : state) {
        prepare();
        const double start = threadSeconds();
        work();
        benchmark::ClobberMemory();
        const double elapsed = threadSeconds() - start;
        state.SetIterationTime(elapsed);
        total += elapsed;
        const std::string error = finish();
        if (!error.empty()) {
            state.SkipWithError(error.c_str());
            return std::nullopt;
        }
    }
    return total / static_cast<double>(state.iterations());
}

} // namespace formworkBench
