// Cameras, camera objects and the SDK come and go in any order: checked against a model on one thread, and for crashes,
// hangs and leaks with six further threads and all callbacks, which do all that there is to do at the same cameras.
//
// ZEL_TEST_SEED chooses the order, ZEL_TEST_STEPS its length. scripts/threads.sh runs it under the thread sanitizer.
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <optional>

#include "platform/Clock.h"
#include "platform/User.h"
#include "tests/system/AnyOperation.h"
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

// A shared lock that a thread takes once, however deep its callbacks are. Inside a callback it waits for nobody.
class Turn {
  public:
    Turn(std::shared_mutex& mutex, bool& held, bool inside) : m_Lock(mutex, std::defer_lock), m_Held(held) {
        if (held) return;
        inside ? static_cast<void>(m_Lock.try_lock()) : m_Lock.lock();
        if (m_Lock) held = m_Took = true;
    }
    ~Turn() {
        if (m_Took) m_Held = false;
    }
    explicit operator bool() const { return m_Held; }

  private:
    std::shared_lock<std::shared_mutex> m_Lock;
    bool& m_Held;
    bool m_Took = false;
};

// Threads that call any operation of the SDK and of cameras that the driver opens, closes, plugs and unplugs. Every
// callback does so as well, with its own camera.
class Crowd {
  public:
    Crowd(LifetimeDriver& driver, unsigned threads, unsigned seed) : m_Driver(driver), m_Seed(seed * 1000) {
        platform::SetEnvironment("XDG_DATA_HOME", (m_Folder / "data").string().c_str());
        std::filesystem::create_directories(m_Folder);
        m_Calibrates = platform::CalibrationFolderPath().starts_with(m_Folder.string());
        driver.Callbacks().always = [this](Place place, const CallbackSet& set, ZelImage* image) {
            CallInside(place, set, image);
        };
        for (unsigned i = 0; i < threads; ++i) m_Threads.emplace_back([this] { CallUntilEnd(); });
    }
    // The SDK is closed.
    ~Crowd() {
        m_Driver.Callbacks().always = nullptr;
        platform::SetEnvironment("XDG_DATA_HOME", nullptr);
        std::filesystem::remove_all(m_Folder);
    }
    void End() {
        m_End = true;
        for (std::thread& thread : m_Threads) thread.join();
        std::printf("%lu operations, %lu of them inside callbacks\n", m_Calls.load(), m_Inside.load());
    }

  private:
    Caller NewCaller() {
        const unsigned number = ++m_Seed;
        return {std::minstd_rand(number), (m_Folder / std::to_string(number % 64)).string(), m_Calibrates};
    }
    void CallUntilEnd() {
        Caller by = NewCaller();
        while (!m_End) {
            while (m_Driver.ending) std::this_thread::yield();
            Call(by, by.Roll(LifetimeModel::kCameras), false);
        }
    }
    void CallInside(Place place, const CallbackSet& set, ZelImage* image) {
        Caller by = NewCaller();
        if (m_End || m_Driver.ending || s_Inside || by.Roll(2) == 0) return;
        s_Inside = true;
        const auto own = static_cast<unsigned>(m_Driver.CameraOf(set));
        const bool saves = place == kImage && by.Roll(8) == 0;
        if (saves) Save(by, image);
        if (!saves && Call(by, place == kConnect ? by.Roll(LifetimeModel::kCameras) : own, true)) ++m_Inside;
        s_Inside = false;
    }
    // True when it did.
    bool Call(Caller& by, unsigned at, bool inside) {
        if (at >= LifetimeModel::kCameras || by.Roll(8) == 0) {
            const Turn turn(m_Driver.using_sdk, s_UsingSdk, inside);
            ZelSDK* const sdk = turn ? m_Driver.sdk.load() : nullptr;
            if (sdk) kSdkOperations[by.Roll(std::size(kSdkOperations))](*sdk, by), ++m_Calls;
            return sdk;
        }
        const Turn turn(m_Driver.calling, s_Calling, inside);
        ZelCamera* const camera = turn ? m_Driver.objects[at].load() : nullptr;
        if (!camera) return false;
        by.set = &m_Driver.SetOf(at);
        auto& all = static_cast<ZelCameraInternal&>(*camera);
        by.Roll(2) ? kFrameOperations[by.Roll(std::size(kFrameOperations))](all, by)
                   : kCameraOperations[by.Roll(std::size(kCameraOperations))](all, by);
        ++m_Calls;
        return true;
    }
    void Save(Caller& by, ZelImage* image) {
        const Turn turn(m_Driver.using_sdk, s_UsingSdk, true);
        ZelSDK* const sdk = turn ? m_Driver.sdk.load() : nullptr;
        if (!sdk) return;
        by.Roll(2) ? sdk->GetUtil()->SavePNG(by.file.c_str(), image) : sdk->GetUtil()->SaveTIFF(by.file.c_str(), image);
        ++m_Calls;
    }

    static inline thread_local bool s_Inside = false, s_Calling = false, s_UsingSdk = false;

    LifetimeDriver& m_Driver;
    const std::filesystem::path m_Folder = std::filesystem::path(testing::TempDir()) / "zel_crowd";
    bool m_Calibrates = false;  // on Windows the files would be the user's own
    std::atomic<unsigned> m_Seed;
    std::atomic<unsigned long> m_Calls{0}, m_Inside{0};
    std::atomic<bool> m_End{false};
    std::vector<std::thread> m_Threads;
};

unsigned Number(const char* variable, unsigned otherwise) {
    const char* const text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

// Keeps a thread that uses the SDK for a moment from being its last user.
struct OneMoreUser {
    OneMoreUser() { zel_retain_sdk(); }
    ~OneMoreUser() { zel_release_sdk(); }
};

class LifetimeModelTest : public testing::TestWithParam<unsigned> {};

TEST_P(LifetimeModelTest, EveryOrderOfStepsEndsWell) {
    const unsigned threads = GetParam();
    const unsigned seed = Number("ZEL_TEST_SEED", 1);
    const unsigned steps = Number("ZEL_TEST_STEPS", threads == 0 ? 3000 : 60);
    ThreadClock clock;
    Trace trace("ZEL_TEST_SEED " + std::to_string(seed) + ", " + std::to_string(threads) + " further threads");
    std::optional<OneMoreUser> user;
    LifetimeDriver driver(seed, [&](const std::string& text) { trace.Note(text); });
    driver.CleanSession();
    const int running = platform::RunningThreads();
    const int handles = platform::OpenHandles();

    driver.alone = threads == 0;
    std::optional<Crowd> crowd;
    if (!driver.alone) user.emplace(), crowd.emplace(driver, threads, seed);
    for (unsigned step = 0; step < steps && !HasFailure(); ++step) driver.Step();
    if (crowd) crowd->End();
    if (HasFailure()) trace.Print();
    driver.CleanSession();

    trace.Note("threads end");
    while (platform::RunningThreads() > running) std::this_thread::yield();
    // On Windows a lock that lives on takes a handle when it is first waited for; a leak in any step would be many
    // more.
    EXPECT_LE(platform::OpenHandles(), handles + 20);
}

INSTANTIATE_TEST_SUITE_P(FurtherThreads, LifetimeModelTest, testing::Values(0u, 6u));

}  // namespace
}  // namespace zel::test
