#include "bench/support/SideTimer.h"

#include <time.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace formworkBench {

namespace {

std::map<std::pair<std::string, std::string>, std::vector<double>>& recorded() {
    static std::map<std::pair<std::string, std::string>, std::vector<double>> times;
    return times;
}

} // namespace

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void recordSeconds(const std::string& task, const std::string& side, double seconds) {
    recorded()[{task, side}].push_back(seconds);
}

std::optional<double> medianSeconds(const std::string& task, const std::string& side) {
    const auto found = recorded().find({task, side});
    if (found == recorded().end() || found->second.empty()) {
        return std::nullopt;
    }
    std::vector<double> values = found->second;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 != 0 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

} // namespace formworkBench
