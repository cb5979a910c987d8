#include "util/ProgressReporter.h"

#include <algorithm>
#include <new>

namespace zel {

namespace {

constexpr int kNoPercent = -1;

struct Receiver {
    ZelProgressCallback callback = nullptr;
    void* context = nullptr;
};

platform::Mutex s_ReceiverLock;
Receiver s_Receiver ZEL_GUARDED_BY(s_ReceiverLock);

Receiver CurrentReceiver() {
    const platform::ScopedLock lock(s_ReceiverLock);
    return s_Receiver;
}

// A status line with its terminator.
struct LineText {
    explicit LineText(const ProgressLine& line) { line.Visible().copy(text, ProgressLine::kSize); }

    char text[ProgressLine::kSize + 1] = {};
};

}  // namespace

std::unique_ptr<ProgressWindow> ProgressReporter::Make(const char*) {
    return std::unique_ptr<ProgressWindow>(new (std::nothrow) ProgressReporter);
}

ProgressReporter::~ProgressReporter() {
    const Receiver receiver = CurrentReceiver();
    if (m_Reported && receiver.callback) receiver.callback("", "", kNoPercent, receiver.context);
}

void ProgressReporter::SetCallback(ZelProgressCallback callback, void* context) {
    const platform::ScopedLock lock(s_ReceiverLock);
    s_Receiver = {callback, context};
}

bool ProgressReporter::HasCallback() { return CurrentReceiver().callback != nullptr; }

void ProgressReporter::Invalidate() {
    const Receiver receiver = CurrentReceiver();
    if (!receiver.callback) return;
    m_Reported = true;
    const Contents contents = Copy();
    const LineText line1(contents.lines[0]), line2(contents.lines[1]);
    const int percent = contents.bar.HasLabel() ? std::clamp(contents.bar.percent, 0, 100) : kNoPercent;
    receiver.callback(line1.text, line2.text, percent, receiver.context);
}

}  // namespace zel
