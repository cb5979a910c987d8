#include "util/ProgressControl.h"

#include "platform/Clock.h"
#include "util/ProgressReporter.h"

namespace zel {

namespace {

constexpr std::uint32_t kWindowPollMs = 100;
constexpr std::uint32_t kWindowBudgetMs = 5000;
constexpr std::uint32_t kMessagePollMs = 50;

}  // namespace

ProgressControl::~ProgressControl() { EndProgress(this); }

bool StartProgress(ProgressControl* control) {
    if (!control || control->running) return false;
    control->running = true;
    if (!control->make_window || ProgressReporter::HasCallback()) {
        control->window = ProgressReporter::Make(control->title).release();
    } else if (control->thread.Start(&ProgressThread, control)) {
        for (std::uint32_t waited = 0; waited < kWindowBudgetMs; waited += kWindowPollMs) {
            if (control->window || control->failed) break;
            platform::SleepMilliseconds(kWindowPollMs);
        }
    }
    return control->window != nullptr;
}

int SetProgressText(ProgressControl* control, unsigned line, const char* text) {
    ProgressWindow* const window = control ? control->window.load() : nullptr;
    if (!window || line >= 2 || !text) return 0;
    window->SetLine(line, text);
    return 1;
}

void UpdateProgress(void* control, std::int32_t done, std::int32_t total) {
    ProgressWindow* const window = control ? static_cast<ProgressControl*>(control)->window.load() : nullptr;
    if (window) window->SetProgress(done, total);
}

void EndProgress(ProgressControl* control) {
    if (!control) return;
    control->running = false;
    control->thread.Join();
    delete control->window.exchange(nullptr);
    control->failed = false;
}

// On purpose: nothing is destroyed here. The system takes the windows of a thread that ends.
void ProgressThread(void* control) {
    auto* const shared = static_cast<ProgressControl*>(control);
    ProgressWindow* const window = shared->make_window(shared->title).release();
    shared->window = window;
    shared->failed = window == nullptr;
    while (shared->running) {
        if (window) window->DispatchMessages(shared->running);
        platform::SleepMilliseconds(kMessagePollMs);
    }
}

}  // namespace zel
