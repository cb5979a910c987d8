// Cameras, camera objects and the SDK come and go in any order: checked against a model on one thread, and for crashes,
// hangs and leaks with further threads at the same cameras.
//
// ZEL_TEST_SEED chooses the order, ZEL_TEST_STEPS its length.
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>

#include "platform/Clock.h"
#include "tests/system/LifetimeDriver.h"

namespace zel::test {
namespace {

// The last steps. Printed when the test crashes, and it crashes when there is none for a minute.
class Trace {
  public:
    explicit Trace(std::string title) : m_Title(std::move(title)) {
        s_Current = this;
        s_Earlier = std::signal(SIGSEGV, OnSignal);
        std::signal(SIGABRT, OnSignal);
    }
    ~Trace() {
        {
            const std::lock_guard lock(m_Lock);
            m_Over = true;
        }
        m_Ended.notify_all();
        m_Watcher.join();
        std::signal(SIGSEGV, s_Earlier);
        s_Current = nullptr;
    }
    void Note(const std::string& text) {
        const std::lock_guard lock(m_Lock);
        m_Notes.push_back(std::to_string(++m_Count) + " " + text);
        if (m_Notes.size() > 24) m_Notes.pop_front();
    }
    void Print() {
        std::printf("%s, after these steps:\n", m_Title.c_str());
        for (const std::string& note : m_Notes) std::printf("  %s\n", note.c_str());
        std::fflush(stdout);
    }

  private:
    // The crash goes on when this returns; a sanitizer has its say.
    static void OnSignal(int signal) {
        std::signal(signal, signal == SIGSEGV ? s_Earlier : SIG_DFL);
        if (s_Current) s_Current->Print();
    }
    void Watch() {
        std::unique_lock lock(m_Lock);
        for (long seen = -1; seen != m_Count;) {
            seen = m_Count;
            if (m_Ended.wait_for(lock, std::chrono::minutes(1), [this] { return m_Over; })) return;
        }
        std::abort();
    }

    inline static Trace* s_Current = nullptr;
    inline static void (*s_Earlier)(int) = SIG_DFL;
    const std::string m_Title;
    std::mutex m_Lock;
    std::condition_variable m_Ended;
    std::deque<std::string> m_Notes;
    long m_Count = 0;
    bool m_Over = false;
    std::thread m_Watcher{[this] { Watch(); }};
};

// A clock on which no sleep costs time: each thread has its own time, the system's (ten times as fast, for cameras that
// do not answer) and what the thread has slept. A wait of one thread does not use up the patience of another.
class ThreadClock : public platform::ClockSource {
  public:
    ThreadClock() { platform::SetClockSource(this); }
    ~ThreadClock() override { platform::SetClockSource(nullptr); }
    std::uint32_t Milliseconds() override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch() * 10;
        return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count()) + s_Slept;
    }
    void Sleep(std::uint32_t milliseconds) override {
        s_Slept += milliseconds;
        std::this_thread::yield();
    }

  private:
    static inline thread_local std::uint32_t s_Slept = 0;
};

// What other threads do with a camera that the driver opens, closes, plugs and unplugs.
constexpr void (*kCalls[])(ZelColorCamera&) = {
    [](ZelColorCamera& camera) { camera.FreeImage(camera.GetPendingImage()); },
    [](ZelColorCamera& camera) { camera.FreeImage(camera.GetLastPendingImage()); },
    [](ZelColorCamera& camera) { camera.FreeColorImage(camera.GetPendingColorImage()); },
    [](ZelColorCamera& camera) { camera.FreeAllPendingImages(); },
    [](ZelColorCamera& camera) { camera.GetParameterValue(ZEL_PARAM_EXPOSURE_TIME); },
    [](ZelColorCamera& camera) { camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 6); },
    [](ZelColorCamera& camera) { camera.SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 8); },
    [](ZelColorCamera& camera) { camera.GetCameraName(); },
    [](ZelColorCamera& camera) { camera.SetImageCallback(nullptr, nullptr); },
    [](ZelColorCamera& camera) { camera.SoftwareTrigger(); },
    [](ZelColorCamera& camera) { camera.StartTriggerAcquisition(); },
    [](ZelColorCamera& camera) { camera.StopTriggerAcquisition(0); },
    [](ZelColorCamera& camera) { camera.Open() && camera.Start(); },
    [](ZelColorCamera& camera) { camera.Start(); },
    [](ZelColorCamera& camera) { camera.Stop(); },
    [](ZelColorCamera& camera) { camera.Close(); },
    [](ZelColorCamera& camera) { camera.Open(); },
};

void CallUntil(const std::atomic<bool>& end, LifetimeDriver& driver, unsigned seed) {
    std::minstd_rand random(seed);
    while (!end) {
        const std::size_t at = random() % LifetimeModel::kCameras;
        const auto call = kCalls[random() % std::size(kCalls)];
        while (driver.ending) std::this_thread::yield();
        if (random() % 8 != 0) {
            const std::shared_lock calling(driver.calling);
            ZelCamera* const camera = driver.objects[at];
            if (camera) call(static_cast<ZelColorCamera&>(*camera));
            continue;
        }
        const std::shared_lock using_sdk(driver.using_sdk);
        ZelSDK* const sdk = driver.sdk;
        if (sdk && random() % 2 == 0) sdk->GetNumberOfCameras();
        if (sdk) sdk->GetCameraName(static_cast<int>(at));
    }
}

unsigned Number(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

class LifetimeModelTest : public testing::TestWithParam<unsigned> {};

TEST_P(LifetimeModelTest, EveryOrderOfStepsEndsWell) {
    const unsigned threads = GetParam();
    const unsigned seed = Number("ZEL_TEST_SEED", 1);
    const unsigned steps = Number("ZEL_TEST_STEPS", threads == 0 ? 3000 : 600);
    ThreadClock clock;
    Trace trace("ZEL_TEST_SEED " + std::to_string(seed) + ", " + std::to_string(threads) + " further threads");
    LifetimeDriver driver(seed, [&](const std::string& text) { trace.Note(text); });
    driver.CleanSession();
    const int running = platform::RunningThreads();
    const int handles = platform::OpenHandles();

    driver.alone = threads == 0;
    std::atomic<bool> end{false};
    std::vector<std::thread> callers;
    for (unsigned i = 0; i < threads; ++i) {
        callers.emplace_back([&, i] { CallUntil(end, driver, seed * 100 + i); });
    }
    for (unsigned step = 0; step < steps && !HasFailure(); ++step) driver.Step();
    end = true;
    for (std::thread& caller : callers) caller.join();
    if (HasFailure()) trace.Print();
    driver.CleanSession();

    trace.Note("threads end");
    while (platform::RunningThreads() > running) std::this_thread::yield();
    // On Windows a lock that lives on takes a handle when it is first waited for; a leak in any step would be many
    // more.
    EXPECT_LE(platform::OpenHandles(), handles + 20);
}

INSTANTIATE_TEST_SUITE_P(FurtherThreads, LifetimeModelTest, testing::Values(0u, 3u));

}  // namespace
}  // namespace zel::test
