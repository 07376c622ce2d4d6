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
    int other = 0;
    EXPECT_EQ(loadIFace("getMeshIFaceTest"), nullptr);
    EXPECT_EQ(loadIFace(nullptr), nullptr);
    registerIFace("getMeshIFaceTest", &first);
    registerIFace("getOtherIFaceTest", &other);
    // Names are matched whole, by their text rather than by the pointer that registered them.
    EXPECT_EQ(loadIFace(std::string("getMeshIFaceTest").c_str()), &first);
    EXPECT_EQ(loadIFace("getMeshIFace"), nullptr);
    EXPECT_EQ(loadIFace("getMeshIFaceTestX"), nullptr);

    registerIFace("getMeshIFaceTest", &second);
    EXPECT_EQ(loadIFace("getMeshIFaceTest"), &second);
    registerIFace(nullptr, &first); // ignored
    registerIFace("getMeshIFaceTest", nullptr);
    EXPECT_EQ(loadIFace("getMeshIFaceTest"), nullptr);
    EXPECT_EQ(loadIFace("getOtherIFaceTest"), &other);
}

TEST(DebugDraw, ThreadsRegisterAndLoadTogether) {
    constexpr int numThreads = 4;
    constexpr int namesPerThread = 200;
    std::vector<int> targets(numThreads * namesPerThread);
    std::vector<int> mismatches(numThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < numThreads; ++t) {
        threads.emplace_back([t, &targets, &mismatches] {
            for (int i = t * namesPerThread; i < (t + 1) * namesPerThread; ++i) {
                const std::string name = "threadIFace" + std::to_string(i);
                registerIFace(name.c_str(), &targets[i]);
                mismatches[t] += loadIFace(name.c_str()) != &targets[i];
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mismatches, std::vector<int>(numThreads, 0));
    for (int i = 0; i < numThreads * namesPerThread; ++i) {
        const std::string name = "threadIFace" + std::to_string(i);
        EXPECT_EQ(loadIFace(name.c_str()), &targets[i]);
    }
}

} // namespace
