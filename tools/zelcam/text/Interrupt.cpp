#include "tools/zelcam/text/Interrupt.h"

#include <atomic>

#include "platform/Terminal.h"

namespace zelcam {

namespace {
std::atomic<bool> s_Interrupted{false};
}  // namespace

void CatchInterrupts() {
    zel::platform::InstallInterruptHandler([] { s_Interrupted = true; });
}

bool Interrupted() { return s_Interrupted; }

}  // namespace zelcam
