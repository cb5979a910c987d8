#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "sdk/Logger.h"
#include "tests/support/RecordedLog.h"

namespace zel {
namespace {

using test::RecordedLog;
using testing::ElementsAre;

class ProcessLoggers : public testing::Test {
  protected:
    void TearDown() override {
        SdkLogger().Destroy();
        CameraManagerLogger().Destroy();
        CameraControlLogger().Destroy();
        EXPECT_EQ(0, m_Log.LiveLogs());
    }
    RecordedLog m_Log;
};

TEST_F(ProcessLoggers, AreMadeOnFirstUseUnderTheirNames) {
    EXPECT_EQ(0, m_Log.LiveLogs());
    int live = 0;
    for (ProcessLogger* logger : {&SdkLogger(), &CameraManagerLogger(), &CameraControlLogger()}) {
        EXPECT_TRUE(logger->Get().Log(kLogError, "f", 1, "g", "first"));
        EXPECT_EQ(++live, m_Log.LiveLogs());
        EXPECT_EQ(&logger->Get(), &logger->Get());
        EXPECT_EQ(live, m_Log.LiveLogs());
    }
    std::vector<std::string> sources;
    for (const test::RecordedLine& line : m_Log.Lines()) sources.push_back(line.source + "/" + line.instance);
    EXPECT_THAT(sources, ElementsAre("ZEL_SDK/", "ZelCameraManager/", "ZelCameraControl/"));
}

TEST_F(ProcessLoggers, CanBeDestroyedUnderAThreadThatStillHoldsOne) {
    Logger& held = SdkLogger().Get();
    SdkLogger().Destroy();
    EXPECT_FALSE(held.Enabled());
    EXPECT_FALSE(held.Log(kLogError, "f", 1, "g", "dropped"));
    EXPECT_TRUE(SdkLogger().Get().Log(kLogError, "f", 1, "g", "kept"));
    EXPECT_THAT(m_Log.Messages(), ElementsAre("kept"));
}

// Whoever comes late replaces the logger of whoever came first: one is left, and it works.
TEST_F(ProcessLoggers, AreOneAfterSeveralThreadsMadeThemAtOnce) {
    constexpr int kThreads = 6;
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                ++ready;
                while (ready < kThreads) std::this_thread::yield();
                Logger& logger = CameraManagerLogger().Get();
                ZEL_LOG(logger, kLogTrace, "f", "raced");
            });
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(1, m_Log.LiveLogs());
        EXPECT_TRUE(CameraManagerLogger().Get().Log(kLogTrace, "f", 1, "g", "after"));
        CameraManagerLogger().Destroy();
        EXPECT_EQ(0, m_Log.LiveLogs());
    }
    EXPECT_EQ(50, m_Log.Count("after"));
}

TEST_F(ProcessLoggers, CanBeDestroyedWhileOtherThreadsLog) {
    constexpr int kThreads = 3, kRounds = 400;
    std::atomic<int> running{kThreads};
    std::atomic<int> delivered{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            Logger& stale = CameraControlLogger().Get();
            for (int round = 0; round < kRounds; ++round) {
                delivered += stale.Log(kLogTrace, "f", 1, "g", "line");
                delivered += CameraControlLogger().Get().Log(kLogTrace, "f", 1, "g", "line");
            }
            --running;
        });
    }
    while (running > 0) {
        CameraControlLogger().Destroy();
        std::this_thread::yield();
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(delivered, m_Log.Count("line")) << "what was said to be delivered arrived, and whole";
    EXPECT_GT(delivered, 0);
    EXPECT_TRUE(CameraControlLogger().Get().Log(kLogTrace, "f", 1, "g", "after"));
}

}  // namespace
}  // namespace zel
