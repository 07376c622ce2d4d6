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
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "camera main: 1.500\nback to stderr\n");
    EXPECT_EQ(messages, std::vector<std::string>{"vertices(1200) maxDepth(6): 0.250000 s\n"});
}

TEST(DebugChannel, LongMessagesArriveWhole) {
    DebugChannel channel;
    channel.setEnabled(true);
    std::vector<std::string> messages;
    channel.setSink([&messages](std::string_view message) { messages.emplace_back(message); });
    // Lengths around the 512-byte formatting buffer on the stack (511 characters and the
    // terminator fill it), and far past it.
    for (std::size_t length : {510u, 511u, 512u, 513u, 100000u}) {
        SCOPED_TRACE(length);
        const std::string text(length, 'x');
        messages.clear();
        channel.print("%s", text.c_str());
        EXPECT_EQ(messages, std::vector<std::string>{text});
    }
}

} // namespace
