// The gate of the scratchpad callback alone: who waits for a frame that the application has there.
#include "image/ScratchpadGate.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

namespace zel::test {
namespace {

using Caller = ScratchpadGate::Caller;

class ScratchpadGateTest : public testing::Test {
  protected:
    bool Call(std::function<bool()> action) {
        const ScratchpadHook hook{
            [](ZelColorImage*, void* context) { return (*static_cast<std::function<bool()>*>(context))() ? 1 : 0; },
            &action};
        ScratchpadGate::Lock processing(m_Processing);
        return m_Gate.Call(hook, &m_Image, processing);
    }
    bool Await(
        const ZelImageInternal& image, Caller caller, const std::function<void()>& asking = [] {}) {
        ScratchpadGate::Lock processing(m_Processing);
        asking();
        return m_Gate.Await(&image, caller, processing);
    }
    ZelImageInternal m_Image, m_Other;
    platform::Mutex m_Processing;
    ScratchpadGate m_Gate;
};

TEST_F(ScratchpadGateTest, OthersWaitUntilTheCallbackReturns) {
    std::atomic<bool> asking{false}, answered{false};
    std::thread other;
    EXPECT_TRUE(Call([&] {
        EXPECT_TRUE(Await(m_Image, Caller::kApplication)) << "the thread's own frame";
        other = std::thread([&] {
            EXPECT_TRUE(Await(m_Other, Caller::kApplication)) << "another frame";
            EXPECT_TRUE(Await(m_Image, Caller::kApplication, [&] { asking = true; }));
            answered = true;
        });
        while (!asking) std::this_thread::yield();
        const platform::ScopedLock processing(m_Processing);  // given up by the other one: it waits
        EXPECT_FALSE(answered);
        return true;
    }));
    other.join();
    EXPECT_FALSE(Call([] { return false; }));
}

}  // namespace
}  // namespace zel::test
