// The gate of the scratchpad callback alone: who waits for a frame that the application has there.
#include "image/ScratchpadGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace zel::test {
namespace {

struct ScratchpadGateTest : testing::Test {
    bool Await(const ZelImageInternal& image) {
        ScratchpadGate::Lock processing(m_Processing);
        m_Asking = &image == &m_Image;
        return m_Gate.Await(&image, ScratchpadGate::Caller::kApplication, processing);
    }
    static int Callback(ZelColorImage*, void* test) { return static_cast<ScratchpadGateTest*>(test)->Inside(), 0; }
    void Inside() {
        EXPECT_TRUE(Await(m_Image)) << "the thread's own frame";
        EXPECT_TRUE(m_Asking.exchange(false));
        m_Thread = std::thread([this] {
            EXPECT_TRUE(Await(m_Other) && Await(m_Image));
            m_Answered = true;
        });
        while (!m_Asking) std::this_thread::yield();
        const platform::ScopedLock processing(m_Processing);  // given up by the other one: it waits
        EXPECT_FALSE(m_Answered);
    }

    ZelImageInternal m_Image, m_Other;
    platform::Mutex m_Processing;
    ScratchpadGate m_Gate;
    std::atomic<bool> m_Asking{false}, m_Answered{false};
    std::thread m_Thread;
};

TEST_F(ScratchpadGateTest, OthersWaitUntilTheCallbackReturns) {
    ScratchpadGate::Lock processing(m_Processing);
    m_Gate.Call({&Callback, this}, &m_Image, processing);
    processing.unlock();
    m_Thread.join();
}

}  // namespace
}  // namespace zel::test
