#include "tessar/debugdraw/DebugDraw.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

using koDebugDraw::loadIFace;
using koDebugDraw::registerIFace;

// Each test uses names of its own: the registry is one for the whole process.

TEST(DebugDraw, RegisterLoadReplaceRemove) {
    int first = 0;
    int second = 0;
    EXPECT_EQ(loadIFace(nullptr), nullptr);
    registerIFace("getMeshIFaceTest", &first);
    // Names are matched whole, by their text rather than by the pointer that registered them.
    EXPECT_EQ(loadIFace(std::string("getMeshIFaceTest").c_str()), &first);
    EXPECT_EQ(loadIFace("getMeshIFace"), nullptr);
    registerIFace("getMeshIFaceTest", &second);
    EXPECT_EQ(loadIFace("getMeshIFaceTest"), &second);
    registerIFace(nullptr, &first); // ignored
    registerIFace("getMeshIFaceTest", nullptr);
    EXPECT_EQ(loadIFace("getMeshIFaceTest"), nullptr);
}

TEST(DebugDraw, ThreadsRegisterAndLoadTogether) {
    std::vector<int> targets(800);
    std::vector<std::thread> threads;
    const auto name = [](int i) { return "threadIFace" + std::to_string(i); };
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t, &targets, &name] {
            for (int i = t; i < 800; i += 4) {
                registerIFace(name(i).c_str(), &targets[i]);
                loadIFace(name(i - i % 4).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 800; ++i) {
        ASSERT_EQ(loadIFace(name(i).c_str()), &targets[i]);
    }
}

} // namespace
