// Whole sessions in which one thing goes wrong.
//
//     zel_campaign [--link NAME] [--fault NAME] [--OCCASION N] [--every K]
//     zel_campaign --list
//
// Without arguments each moment of a session is hit once with each fault, on each kind of link. --every takes each K-th
// of all these. One line per link and fault; a moment that is not survived has a line of its own, which is what repeats
// it.
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <mutex>

#include "include/ZelProgress.h"
#include "platform/Clock.h"
#include "platform/Random.h"
#include "platform/User.h"
#include "tests/campaign/FailingMemory.h"
#include "tests/campaign/Session.h"
#if defined(ZEL_CAMPAIGN_WITH_C)
#include "tests/campaign/CSession.h"
#endif
#include "tests/support/PageReservations.h"
#include "tests/support/Process.h"

namespace zel::campaign {
namespace {

// Each thread has a time of its own, which passes only when it sleeps. It begins shortly before the clock starts anew.
class SimulatedClock : public platform::ClockSource {
  public:
    SimulatedClock() { platform::SetClockSource(this); }
    ~SimulatedClock() override { platform::SetClockSource(nullptr); }
    std::uint32_t Milliseconds() override { return s_Now; }
    void Sleep(std::uint32_t milliseconds) override {
        s_Now += milliseconds;
        std::this_thread::yield();
    }

  private:
    static inline thread_local std::uint32_t s_Now = 0xFFFFFF00u;
};

// What repeats the moment that is under way. Printed when the program crashes, and it crashes when one takes a minute.
class Watchdog {
  public:
    Watchdog() {
        for (const int signal : {SIGSEGV, SIGABRT, SIGFPE, SIGILL}) std::signal(signal, OnSignal);
    }
    ~Watchdog() {
        {
            const std::lock_guard lock(m_Lock);
            m_Over = true;
        }
        m_Changed.notify_all();
        m_Thread.join();
    }
    void Begin(const std::string& what, const Session& session) {
        const std::lock_guard lock(m_Lock);
        std::snprintf(s_What, sizeof s_What, "%s", what.c_str());
        s_Session = &session;
        ++m_Begun;
    }

  private:
    static void OnSignal(int signal) {
        std::printf("NOT SURVIVED: zel_campaign %s   # signal %d in %s\n", s_What, signal,
                    s_Session ? s_Session->current.load() : "");
        std::fflush(stdout);
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    void Watch() {
        std::unique_lock lock(m_Lock);
        for (long seen = -1; seen != m_Begun;) {
            seen = m_Begun;
            if (m_Changed.wait_for(lock, std::chrono::minutes(1), [this] { return m_Over; })) return;
        }
        std::abort();
    }

    static inline char s_What[200] = "";
    static inline const Session* s_Session = nullptr;
    std::mutex m_Lock;
    std::condition_variable m_Changed;
    long m_Begun = 0;
    bool m_Over = false;
    std::thread m_Thread{[this] { Watch(); }};
};

// What a process must not keep. Threads and handles are the system's to count.
struct Holdings {
    long long allocations = LiveAllocations();
    long long pages = platform::LivePageReservations();
    int timers = platform::TimerResolution::LiveCount();
    int threads = platform::RunningThreads();
    int handles = platform::OpenHandles();

    // On Windows a lock that lives on takes a handle when it is first waited for.
#if defined(_WIN32)
    static constexpr int kOfLocks = 20;
#else
    static constexpr int kOfLocks = 0;
#endif

    // Empty when there is nothing more now than in `before`.
    std::string MoreThan(const Holdings& before) const {
        if (allocations > before.allocations) return std::to_string(allocations - before.allocations) + " allocations";
        if (pages > before.pages) return std::to_string(pages - before.pages) + " page reservations";
        if (timers > before.timers) return "a raised timer";
        if (threads > before.threads) return "a thread";
        if (handles > before.handles + kOfLocks) return std::to_string(handles - before.handles) + " handles";
        return "";
    }
};

// A thread that has ended may be listed for a moment more.
std::string Kept(const Holdings& before) {
    std::string kept;
    for (int i = 0; i < 200; ++i) {
        kept = Holdings().MoreThan(before);
        if (kept.empty()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return kept;
}

struct Options {
    const char* link = nullptr;
    const char* fault = nullptr;
    int at = 0;
    int every = 1;
};

std::unique_ptr<Session> MakeSession(const LinkUnderTest& link, FaultyLink& faults) {
#if defined(ZEL_CAMPAIGN_WITH_C)
    if (link.through_c) return std::make_unique<CSession>(link, faults);
#endif
    return std::make_unique<Session>(link, faults);
}

class Campaign {
  public:
    Campaign(const LinkUnderTest& link, const Options& options)
        : m_Link(link), m_Options(options), m_Faults(link), m_SessionMade(MakeSession(link, m_Faults)) {
        std::uint8_t name[4] = {};
        platform::RandomBytes(name);
        m_Folder = std::filesystem::temp_directory_path() /
                   ("zel-campaign-" + std::to_string(name[0] << 24 ^ name[1] << 16 ^ name[2] << 8 ^ name[3]));
        platform::SetEnvironment("XDG_DATA_HOME", m_Folder.string().c_str());
        m_Watchdog.Begin("--link " + std::string(link.name) + "   # no fault", m_Session);
        for (int i = 0; i < 3; ++i) {  // the first ones also make what lives as long as the process
            ForgetCalibration();
            m_Faults.Plan(nullptr, 0);
            m_Session.Run(i == 0, true);
            m_Faults.Mend();
            for (int k = 0; k < kOccasions; ++k) m_Moments[k] = m_Faults.Count(static_cast<Occasion>(k));
            m_Moments[static_cast<int>(Occasion::kFrame)] = 61;
            m_Reference = m_Session.Run(true, false);
            m_Session.DestroySdk();
        }
        m_Before = Holdings();
        if (!m_Session.Complaint().empty())
            std::printf("NOT SURVIVED: no fault at all   # %s\n", m_Session.Complaint().c_str());
        std::printf("%s: %d calls in a session; %d exchanges, %d operations, %d frames, %d allocations\n", link.name,
                    static_cast<int>(m_Reference.size()), m_Moments[0], m_Moments[1], m_Moments[2], m_Moments[3]);
    }
    ~Campaign() {
        ForgetCalibration();
        std::filesystem::remove_all(m_Folder);
    }

    bool Sound() const { return m_Session.Complaint().empty(); }
    // How many moments were not survived.
    int Run(const FaultKind& kind) {
        int injected = 0, survived = 0, unsound = 0;
        Session::Slowest slowest;
        const auto begin = std::chrono::steady_clock::now();
        const int moments = m_Moments[static_cast<int>(kind.occasion)];
        for (int at = 1; at <= std::max(moments, m_Options.at); ++at) {
            if (m_Options.at ? at != m_Options.at : ++s_Passed % m_Options.every != 0) continue;
            const std::string problem = Inject(kind, at);
            injected += m_Happened ? 1 : 0;
            if (m_FaultySlowest.milliseconds > slowest.milliseconds) slowest = m_FaultySlowest;
            if (problem.empty()) {
                survived += m_Happened ? 1 : 0;
            } else {
                ++unsound;
                std::printf("NOT SURVIVED: zel_campaign %s   # %s\n", Arguments(kind, at).c_str(), problem.c_str());
                std::fflush(stdout);
            }
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
        if (injected == 0 && m_Options.at > 0) {
            std::printf("no such moment\n");
            return 1;
        }
        if (injected == 0) return unsound;
        std::printf("%-12s %-18s injected %5d  survived %5d  longest call %7.1f s (%s)  took %.1f s\n", m_Link.name,
                    kind.name, injected, survived, slowest.milliseconds / 1000.0, slowest.call, took.count());
        std::fflush(stdout);
        return unsound;
    }

  private:
    std::string Arguments(const FaultKind& kind, int at) const {
        return std::string("--link ") + m_Link.name + " --fault " + kind.name + " --" +
               kOccasionNames[static_cast<int>(kind.occasion)] + " " + std::to_string(at);
    }
    void ForgetCalibration() const {
        const std::string folder = platform::CalibrationFolderPath();
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            // On Windows the folder is the user's: only files of simulated cameras.
            if (entry.path().filename().string().find("01_") != std::string::npos)
                std::filesystem::remove(entry.path(), error);
        }
    }

    // What is kept the first time alone is no leak: it is there once in a process.
    std::string Inject(const FaultKind& kind, int at) {
        const std::string problem = InjectOnce(kind, at);
        return problem.starts_with(kKeeps) ? InjectOnce(kind, at) : problem;
    }
    // The session with the fault, one without on the same SDK, the end of that SDK. Empty when all was well.
    std::string InjectOnce(const FaultKind& kind, int at) {
        m_Watchdog.Begin(Arguments(kind, at), m_Session);
        ForgetCalibration();
        m_Faults.Plan(&kind, at);
        m_Session.traced = m_Options.at > 0;
        m_Session.Run(false, kind.closes_sdk);
        m_Happened = m_Faults.Happened();
        m_Faults.Mend();
        m_FaultySlowest = m_Session.SlowestCall();
        std::string problem = m_Session.Complaint();
        if (problem.empty() && m_FaultySlowest.milliseconds > LongestCallMs(kind))
            problem =
                std::string(m_FaultySlowest.call) + " takes " + std::to_string(m_FaultySlowest.milliseconds) + " ms";
        const std::vector<Session::Answer>& answers = m_Session.Run(true, false);
        if (problem.empty()) problem = m_Session.Complaint();
        if (problem.empty()) problem = Difference(answers);
        m_Session.DestroySdk();
        const std::string kept = Kept(m_Before);
        if (!kept.empty()) {
            if (problem.empty()) problem = kKeeps + kept;
            m_Before = Holdings();
        }
        return problem;
    }
    std::string Difference(const std::vector<Session::Answer>& answers) const {
        for (std::size_t i = 0; i < std::min(answers.size(), m_Reference.size()); ++i) {
            if (answers[i] == m_Reference[i]) continue;
            return "the next session: " + std::string(answers[i].call) + " (call " + std::to_string(i) + ") answers " +
                   std::to_string(answers[i].value);
        }
        return answers.size() == m_Reference.size() ? "" : "the next session ends early";
    }

    static constexpr const char* kKeeps = "it keeps ";
    static inline int s_Passed = 0;  // moments, of all links and faults

    // By the simulated clock. Each exchange without a reply costs a stage of 5 s; a dead link each one of the call.
    static std::uint32_t LongestCallMs(const FaultKind& kind) {
        if (kind.effect == Effect::kUnplug || kind.effect == Effect::kDead || kind.amount == kForEver) return 300000;
        return kind.effect == Effect::kSilence && kind.amount == 4 ? 25000 : 10000;
    }

    const LinkUnderTest& m_Link;
    const Options m_Options;
    SimulatedClock m_Clock;
    FaultyLink m_Faults;
    const std::unique_ptr<Session> m_SessionMade;
    Session& m_Session = *m_SessionMade;
    Watchdog m_Watchdog;
    std::filesystem::path m_Folder;
    std::vector<Session::Answer> m_Reference;
    int m_Moments[kOccasions] = {};
    Session::Slowest m_FaultySlowest;
    bool m_Happened = false;
    Holdings m_Before;
};

}  // namespace
}  // namespace zel::campaign

int main(int count, char** arguments) {
    using namespace zel::campaign;
    Options options;
    const bool list = count == 2 && std::strcmp(arguments[1], "--list") == 0;
    for (int i = 1; i < count && !list; i += 2) {
        const std::string name = arguments[i];
        const bool occasion =
            std::ranges::any_of(kOccasionNames, [&](const char* one) { return name == std::string("--") + one; });
        if (i + 1 == count || !(occasion || name == "--link" || name == "--fault" || name == "--every")) {
            std::printf("zel_campaign [--link NAME] [--fault NAME] [--OCCASION N] [--every K] | --list\n");
            return 2;
        }
        if (name == "--link") options.link = arguments[i + 1];
        if (name == "--fault") options.fault = arguments[i + 1];
        if (name == "--every") options.every = std::max(1, std::atoi(arguments[i + 1]));
        if (occasion) options.at = std::atoi(arguments[i + 1]);
    }
    zel::platform::SetEnvironment("ZEL_SIM_PACE", "none");
    zel::platform::SetEnvironment("ZEL_SIM_SIZE", "64x48");
    zel::platform::SetEnvironment("ZEL_SIM_FILL", "none");
    // Instead of a window, whose thread has a clock of its own.
    zel_set_progress_callback([](const char*, const char*, int, void*) {}, nullptr);
    int runs = 0, lost = 0;
    for (const LinkUnderTest& link : kLinks) {
        for (const FaultKind& kind : kFaultKinds) {
            if (list) std::printf("%s %s\n", link.name, kind.name);
        }
        if (list || (options.link && std::strcmp(options.link, link.name) != 0)) continue;
        Campaign campaign(link, options);
        lost += campaign.Sound() ? 0 : 1;
        for (const FaultKind& kind : kFaultKinds) {
            if (options.fault && std::strcmp(options.fault, kind.name) != 0) continue;
            lost += campaign.Run(kind);
            ++runs;
        }
    }
    if (runs == 0 && !list) std::printf("no such link or fault\n");
    return lost == 0 && (runs > 0 || list) ? 0 : 1;
}
