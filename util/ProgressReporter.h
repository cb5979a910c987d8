// The progress display that hands its contents to the application's callback, if there is one, and shows nothing
// itself.
#ifndef UTIL_PROGRESSREPORTER_H
#define UTIL_PROGRESSREPORTER_H

#include "include/ZelProgress.h"
#include "util/ProgressWindow.h"

namespace zel {

class ProgressReporter final : public ProgressWindow {
  public:
    static std::unique_ptr<ProgressWindow> Make(const char* title);
    ProgressReporter() { SetHasBar(true); }
    ~ProgressReporter() override;

    // The callback of the process, asked for anew with every report.
    static void SetCallback(ZelProgressCallback callback, void* context);
    static bool HasCallback();

    void DispatchMessages(const std::atomic<bool>&) override {}

  private:
    void Invalidate() override;

    bool m_Reported = false;
};

}  // namespace zel

#endif
