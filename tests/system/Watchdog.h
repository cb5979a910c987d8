// Tells where a random test stands when it crashes, or makes no step for a minute, which ends it.
#ifndef TESTS_SYSTEM_WATCHDOG_H
#define TESTS_SYSTEM_WATCHDOG_H

#include <array>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace zel::test {

class Watchdog {
  public:
    explicit Watchdog(std::string title) : m_Title(std::move(title)) {
        s_Current = this;
        const auto earlier = std::signal(SIGSEGV, OnCrash);
        if (earlier != SIG_DFL) std::signal(SIGSEGV, earlier);  // a sanitizer knows better
        m_Thread = std::thread([this] { Watch(); });
    }
    ~Watchdog() {
        {
            const std::lock_guard lock(m_Lock);
            m_Ended = true;
        }
        m_Changed.notify_all();
        m_Thread.join();
        s_Current = nullptr;
    }

    // Each step begins with one call; further calls within it say how far it has come.
    void Note(const std::string& text) {
        const std::lock_guard lock(m_Lock);
        m_Notes[m_Count++ % m_Notes.size()] = text;
    }
    // The last notes, the newest at the end.
    void Print(const char* why) {
        std::printf("%s: %s after these steps:\n", m_Title.c_str(), why);
        const std::size_t shown = m_Count < m_Notes.size() ? m_Count : m_Notes.size();
        for (std::size_t i = m_Count - shown; i != m_Count; ++i) {
            std::printf("  %zu %s\n", i, m_Notes[i % m_Notes.size()].c_str());
        }
        std::fflush(stdout);
    }

  private:
    void Watch() {
        std::unique_lock lock(m_Lock);
        std::size_t seen = m_Count;
        while (!m_Changed.wait_for(lock, std::chrono::seconds(60), [this] { return m_Ended; })) {
            if (m_Count == seen) {
                Print("no progress for a minute");
                std::abort();
            }
            seen = m_Count;
        }
    }
    static void OnCrash(int signal) {
        std::signal(signal, SIG_DFL);
        if (s_Current) s_Current->Print("crash");
        std::raise(signal);
    }

    inline static Watchdog* s_Current = nullptr;
    const std::string m_Title;
    std::mutex m_Lock;
    std::condition_variable m_Changed;
    std::array<std::string, 24> m_Notes;
    std::size_t m_Count = 0;
    bool m_Ended = false;
    std::thread m_Thread;
};

}  // namespace zel::test

#endif
