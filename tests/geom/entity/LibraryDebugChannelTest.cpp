#include "geom/entity/LibraryDebugChannel.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace koGeom {
namespace {

TEST(LibraryDebugChannel, OneSharedChannelMadeOnceAndSilentUntilEnabled) {
    // The first calls race from several threads and must all get the same channel.
    std::vector<koOS::DebugChannel*> seen(4, nullptr);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&seen, i] { seen[i] = &debugChannel(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (koOS::DebugChannel* channel : seen) {
        EXPECT_EQ(channel, &debugChannel());
    }

    koOS::DebugChannel& channel = debugChannel();
    EXPECT_FALSE(channel.enabled());
    std::string printed;
    channel.setSink([&printed](std::string_view text) { printed += text; });
    channel.print("Octree: vertices(%d)\n", 8);
    EXPECT_EQ(printed, "");
    channel.setEnabled(true);
    channel.print("Octree: vertices(%d)\n", 8);
    EXPECT_EQ(printed, "Octree: vertices(8)\n");
    channel.setEnabled(false);
    channel.setSink(nullptr);
}

} // namespace
} // namespace koGeom
