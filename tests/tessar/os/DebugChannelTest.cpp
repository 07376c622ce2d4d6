#include "tessar/os/DebugChannel.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using koOS::DebugChannel;

TEST(DebugChannel, PrintsOnlyWhenEnabledToTheSinkOrStandardError) {
    DebugChannel channel;
    std::vector<std::string> messages;
    testing::internal::CaptureStderr();
    channel.print("hidden %d\n", 1);
    channel.setEnabled(true);
    channel.print("camera %s: %.3f\n", "main", 1.5);
    // A sink takes the output away from standard error; an empty one gives it back.
    channel.setSink([&messages](std::string_view message) { messages.emplace_back(message); });
    channel.print("vertices(%d) maxDepth(%d): %f s\n", 1200, 6, 0.25);
    channel.print("%s", ""); // an empty message reaches nobody
    channel.setEnabled(false);
    channel.print("hidden again\n");
    channel.setEnabled(true);
    channel.setSink({});
    channel.print("back to stderr\n");
    // Lengths around the 512-byte formatting buffer on the stack, and far past it.
    channel.setSink([&messages](std::string_view message) { messages.emplace_back(message); });
    for (std::size_t length : {511u, 512u, 100000u}) {
        channel.print("%s", std::string(length, 'x').c_str());
        EXPECT_EQ(messages.back(), std::string(length, 'x'));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "camera main: 1.500\nback to stderr\n");
    EXPECT_EQ(messages.size(), 4u);
    EXPECT_EQ(messages.front(), "vertices(1200) maxDepth(6): 0.250000 s\n");
}

} // namespace
