#include "tools/zelcam/text/Interrupt.h"

#include <atomic>

#include "platform/Terminal.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {
std::atomic<int> s_Signal{0};
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

}  // namespace zelcam
