#include "tools/zelcam/text/Interrupt.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

#include "platform/Terminal.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {
std::atomic<int> s_Signal{0};

// How long a signal may go unnoticed.
constexpr std::chrono::milliseconds kSignalCheck{50};
}  // namespace

void CatchInterrupts() {
    zel::platform::InstallInterruptHandler([](int signal) { s_Signal = signal; });
}

bool Interrupted() { return s_Signal != 0; }

void FailIfInterrupted(const std::string& done) {
    if (!Interrupted()) return;
    FailureKind kind = kInterrupted;
    kind.exit_code += s_Signal;
    throw Failure("interrupted", done, "", kind);
}

OnInterrupt::OnInterrupt(std::function<void()> action)
    : m_Watcher([action = std::move(action)](const std::stop_token& stop) {
          std::mutex mutex;
          std::condition_variable_any ended;
          std::unique_lock lock(mutex);
          while (!Interrupted()) {
              if (ended.wait_for(lock, stop, kSignalCheck, [&] { return stop.stop_requested(); })) return;
          }
          action();
      }) {}

}  // namespace zelcam
