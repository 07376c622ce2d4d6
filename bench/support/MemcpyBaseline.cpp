#include "bench/support/MemcpyBaseline.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>

namespace formworkBench {

double memcpySeconds(std::size_t bytes) {
    static std::map<std::size_t, double> measured;
    auto found = measured.find(bytes);
    if (found != measured.end()) {
        return found->second;
    }
    auto source = std::make_unique<unsigned char[]>(bytes);
    auto target = std::make_unique<unsigned char[]>(bytes);
    std::memset(source.get(), 1, bytes);
    std::memset(target.get(), 2, bytes);
    double best = 1e300;
    for (int run = 0; run < 7; ++run) {
        const auto start = std::chrono::steady_clock::now();
        std::memcpy(target.get(), source.get(), bytes);
        benchmark::ClobberMemory();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        best = std::min(best, elapsed.count());
    }
    benchmark::DoNotOptimize(target.get());
    measured[bytes] = best;
    return best;
}

void reportAgainstMemcpy(benchmark::State& state, std::size_t bytes, double secondsPerIteration) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(bytes));
    state.counters["vs_memcpy"] = secondsPerIteration / memcpySeconds(bytes);
}

} // namespace formworkBench
