#include "tessar/os/DebugChannel.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using koOS::DebugChannel;

// A sink that keeps every message it receives.
struct Recorder {
    std::vector<std::string> messages;

    DebugChannel::Sink sink() {
        return [this](std::string_view message) { messages.emplace_back(message); };
    }
};

TEST(DebugChannel, PrintsOnlyWhenEnabled) {
    DebugChannel channel;
    EXPECT_FALSE(channel.enabled());
    Recorder recorder;
    channel.setSink(recorder.sink());

    channel.print("hidden %d\n", 1);
    EXPECT_TRUE(recorder.messages.empty());

    channel.setEnabled(true);
    EXPECT_TRUE(channel.enabled());
    channel.print(
        "Octree: vertices(%d) vertsPerLeaf(%d) numNodes(%d)\n        maxDepth(%d): %f s\n", 1200, 8,
        341, 6, 0.25);
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0],
              "Octree: vertices(1200) vertsPerLeaf(8) numNodes(341)\n        maxDepth(6): "
              "0.250000 s\n");

    channel.setEnabled(false);
    channel.print("hidden again\n");
    EXPECT_EQ(recorder.messages.size(), 1u);

    // An empty message reaches nobody.
    channel.setEnabled(true);
    channel.print("%s", "");
    EXPECT_EQ(recorder.messages.size(), 1u);
}

TEST(DebugChannel, LongMessagesArriveWhole) {
    DebugChannel channel;
    channel.setEnabled(true);
    Recorder recorder;
    channel.setSink(recorder.sink());

    // Lengths around the size of the formatting buffer on the stack, and far past it.
    for (std::size_t length : {510u, 511u, 512u, 513u, 100000u}) {
        SCOPED_TRACE(length);
        std::string text(length, 'a');
        for (std::size_t i = 0; i < length; ++i) {
            text[i] = static_cast<char>('a' + i % 26);
        }
        recorder.messages.clear();
        channel.print("[%s|%zu]", text.c_str(), length);
        ASSERT_EQ(recorder.messages.size(), 1u);
        EXPECT_EQ(recorder.messages[0], "[" + text + "|" + std::to_string(length) + "]");
    }
}

TEST(DebugChannel, DefaultsToStandardError) {
    DebugChannel channel;
    testing::internal::CaptureStderr();
    channel.print("not shown %s\n", "while disabled");
    channel.setEnabled(true);
    channel.print("camera %s: %.3f\n", "main", 1.5);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "camera main: 1.500\n");

    // A sink takes the output away from standard error; an empty one gives it back.
    Recorder recorder;
    channel.setSink(recorder.sink());
    testing::internal::CaptureStderr();
    channel.print("to the sink\n");
    channel.setSink({});
    channel.print("back to stderr\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "back to stderr\n");
    ASSERT_EQ(recorder.messages.size(), 1u);
    EXPECT_EQ(recorder.messages[0], "to the sink\n");
}

} // namespace
