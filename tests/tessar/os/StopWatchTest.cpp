#include "tessar/os/StopWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using koOS::StopWatch;

TEST(StopWatch, MeasuresSecondsAndRestarts) {
    StopWatch watch;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const double first = watch.stop();
    // A sleep lasts at least what was asked; the upper bound catches a wrong unit.
    EXPECT_GE(first, 0.300);
    EXPECT_LT(first, 5.0);

    // The watch keeps running after a reading, and a restart forgets the time before.
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_GE(watch.stop(), first + 0.010);
    watch.restart();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double afterRestart = watch.stop();
    EXPECT_GE(afterRestart, 0.020);
    EXPECT_LT(afterRestart, first);
}

} // namespace
