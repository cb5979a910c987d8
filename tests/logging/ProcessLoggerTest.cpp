#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "sdk/Logger.h"
#include "tests/support/RecordedLog.h"

namespace zel {
namespace {

using testing::ElementsAre;

struct ProcessLoggers : testing::Test {
    void TearDown() override {
        for (ProcessLogger* logger : {&SdkLogger(), &CameraManagerLogger(), &CameraControlLogger()}) logger->Destroy();
        EXPECT_EQ(0, m_Log.LiveLogs());
    }
    static bool Log(ProcessLogger& logger, const char* text) {
        return logger.Get().Log(kLogTrace, "f", 1, "g", "%s", text);
    }
    test::RecordedLog m_Log;
};

TEST_F(ProcessLoggers, CanBeDestroyedUnderAThreadThatStillHoldsOne) {
    Logger& held = SdkLogger().Get();
    SdkLogger().Destroy();
    EXPECT_FALSE(held.Enabled() || held.Log(kLogError, "f", 1, "g", "dropped"));
    EXPECT_TRUE(Log(SdkLogger(), "kept"));
    EXPECT_THAT(m_Log.Messages(), ElementsAre("kept"));
}

// Of threads that make the logger at once whoever comes late replaces what came first: one is left, and it works.
TEST_F(ProcessLoggers, CanBeMadeAndDestroyedWhileOtherThreadsLog) {
    constexpr int kThreads = 6;
    int all_delivered = 0;
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> ready{0}, running{kThreads}, delivered{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&] {
                for (++ready; ready < kThreads;) std::this_thread::yield();
                Logger& stale = CameraControlLogger().Get();
                for (int line = 0; line < 20; ++line) {
                    delivered += stale.Log(kLogTrace, "f", 1, "g", "line") + Log(CameraControlLogger(), "line");
                }
                --running;
            });
        }
        // Half of the rounds leave the threads to themselves.
        for (; running > 0; std::this_thread::yield()) {
            if (round % 2 && ready == kThreads) CameraControlLogger().Destroy();
        }
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(all_delivered += delivered, m_Log.Count("line")) << "what was said to be delivered arrived";
        EXPECT_TRUE(Log(CameraControlLogger(), "after"));
        EXPECT_EQ(1, m_Log.LiveLogs());
        CameraControlLogger().Destroy();
    }
    EXPECT_GT(all_delivered, 0);
}

}  // namespace
}  // namespace zel
