#include "tessar/debugdraw/DebugDraw.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace {

// Each test uses names of its own: the registry is one for the whole process.

TEST(DebugDraw, UnknownNameGivesNull) {
    EXPECT_EQ(koDebugDraw::loadIFace("unknownTestIFace"), nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace(""), nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace(nullptr), nullptr);
}

TEST(DebugDraw, RegisterLoadReplaceRemove) {
    int first = 0;
    int second = 0;
    int other = 0;
    koDebugDraw::registerIFace("getMeshIFaceTest", &first);
    koDebugDraw::registerIFace("getOtherIFaceTest", &other);
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFaceTest"), &first);
    EXPECT_EQ(koDebugDraw::loadIFace("getOtherIFaceTest"), &other);
    // Names are matched whole.
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFace"), nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFaceTestX"), nullptr);

    // The lookup goes by the text of the name, not by the pointer that registered it.
    const std::string copy = "getMeshIFaceTest";
    EXPECT_EQ(koDebugDraw::loadIFace(copy.c_str()), &first);

    koDebugDraw::registerIFace("getMeshIFaceTest", &second);
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFaceTest"), &second);

    koDebugDraw::registerIFace("getMeshIFaceTest", nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFaceTest"), nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace("getOtherIFaceTest"), &other);

    // Removing what is not there, and registering under no name, change nothing.
    koDebugDraw::registerIFace("getMeshIFaceTest", nullptr);
    koDebugDraw::registerIFace(nullptr, &first);
    EXPECT_EQ(koDebugDraw::loadIFace("getMeshIFaceTest"), nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace("getOtherIFaceTest"), &other);

    koDebugDraw::registerIFace("getOtherIFaceTest", nullptr);
    EXPECT_EQ(koDebugDraw::loadIFace("getOtherIFaceTest"), nullptr);
}

TEST(DebugDraw, ThreadsRegisterAndLoadTogether) {
    constexpr int numThreads = 4;
    constexpr int namesPerThread = 200;
    std::vector<int> targets(numThreads * namesPerThread);
    std::vector<int> mismatches(numThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < numThreads; ++t) {
        threads.emplace_back([t, &targets, &mismatches] {
            for (int i = 0; i < namesPerThread; ++i) {
                const int index = t * namesPerThread + i;
                const std::string name = "threadIFace" + std::to_string(index);
                koDebugDraw::registerIFace(name.c_str(), &targets[index]);
                if (koDebugDraw::loadIFace(name.c_str()) != &targets[index]) {
                    ++mismatches[t];
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (int t = 0; t < numThreads; ++t) {
        EXPECT_EQ(mismatches[t], 0) << "thread " << t;
    }
    for (int index = 0; index < numThreads * namesPerThread; ++index) {
        const std::string name = "threadIFace" + std::to_string(index);
        EXPECT_EQ(koDebugDraw::loadIFace(name.c_str()), &targets[index]);
        koDebugDraw::registerIFace(name.c_str(), nullptr);
        EXPECT_EQ(koDebugDraw::loadIFace(name.c_str()), nullptr);
    }
}

} // namespace
