#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstddef>

namespace formworkBench {

/// The seconds that `memcpy` takes on this machine to copy `bytes` between two buffers whose
/// pages are already touched: the best of several copies, measured once per size and run.
double memcpySeconds(std::size_t bytes);

/// Sets the benchmark's bytes per second over `bytes` per iteration, and the counter
/// "vs_memcpy": its time per iteration divided by `memcpySeconds(bytes)`, so that each figure
/// stands beside the machine's memory limit measured in the same run.
void reportAgainstMemcpy(benchmark::State& state, std::size_t bytes, double secondsPerIteration);

/// The loop of a benchmark registered with `UseManualTime()`: each iteration runs `prepare()`
/// untimed, then times `work()`, which processes `bytes`; reports against memcpy after.
template <class Prepare, class Work>
void runAgainstMemcpy(benchmark::State& state, std::size_t bytes, Prepare&& prepare, Work&& work) {
    double total = 0.0;
    for (auto _ : state) {
        prepare();
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(elapsed.count());
        total += elapsed.count();
    }
    reportAgainstMemcpy(state, bytes, total / static_cast<double>(state.iterations()));
}

} // namespace formworkBench
