// The terminal's form of what the SDK reports while it works at a camera by itself.
#ifndef ZELCAM_PROGRESSBAR_H
#define ZELCAM_PROGRESSBAR_H

#include <atomic>
#include <string>

#include "ZelProgress.h"
#include "tools/zelcam/text/Progress.h"

namespace zelcam {

// Shows the SDK's progress for as long as it lives; one at a time. Made before a camera is opened whose calibration
// data may have to be loaded:
//
//     const ProgressBar bar("camera 0");
//     zel::Camera camera = sdk.open(m_Camera);
//
// Draws nothing when the error stream is no terminal. The SDK opens no window of its own in either case.
class ProgressBar {
  public:
    explicit ProgressBar(std::string label, bool enabled = true);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Whether the SDK has worked at a camera by itself since: it loaded the calibration data.
    bool Reported() const { return m_Reported; }

  private:
    static void ZEL_CALL Report(const char* line1, const char* line2, int percent, void* context);

    Progress m_Progress;
    std::atomic<bool> m_Reported{false};
};

// "Loading primary data... [########............] 42 %"; no bar before there is a percentage, and nothing at
// all when the work has ended.
std::string ProgressText(const std::string& line1, const std::string& line2, int percent);

}  // namespace zelcam

#endif
