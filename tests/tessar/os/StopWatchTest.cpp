#include "tessar/os/StopWatch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace {

using koOS::StopWatch;

TEST(StopWatch, MeasuresASleep) {
    StopWatch watch;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const double first = watch.stop();
    // A sleep lasts at least what was asked; the upper bound only guards against nonsense
    // such as milliseconds reported as seconds' worth of units.
    EXPECT_GE(first, 0.050);
    EXPECT_LT(first, 5.0);

    // The watch keeps running after a reading.
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const double second = watch.stop();
    EXPECT_GE(second, first + 0.010);
}

TEST(StopWatch, RestartForgetsTheTimeBefore) {
    StopWatch watch;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const double before = watch.stop();
    ASSERT_GE(before, 0.300);
    watch.restart();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const double after = watch.stop();
    EXPECT_GE(after, 0.020);
    EXPECT_LT(after, before);
}

} // namespace
