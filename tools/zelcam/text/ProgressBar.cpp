#include "tools/zelcam/text/ProgressBar.h"

#include <exception>

namespace zelcam {

ProgressBar::ProgressBar(std::string label, bool enabled) : m_Progress(std::move(label), enabled) {
    zel_set_progress_callback(&Report, this);
}

ProgressBar::~ProgressBar() { zel_set_progress_callback(nullptr, nullptr); }

void ZEL_CALL ProgressBar::Report(const char* line1, const char* line2, int percent, void* context) {
    auto* const bar = static_cast<ProgressBar*>(context);
    Progress& progress = bar->m_Progress;
    bar->m_Reported = true;
    try {
        const std::string text = ProgressText(line1, line2, percent);
        text.empty() ? progress.Wipe() : progress.ShowText(text);
    } catch (const std::exception&) {
        // A bar that can't be drawn is no reason to end the work that it shows.
    }
}

std::string ProgressText(const std::string& line1, const std::string& line2, int percent) {
    constexpr int kWidth = 20;
    std::string text = line1;
    if (!line2.empty()) text += (text.empty() ? "" : ", ") + line2;
    if (percent < 0) return text;
    if (!text.empty()) text += " ";
    return text + BarText(static_cast<std::uint64_t>(percent), 100, kWidth) + " " + std::to_string(percent) + " %";
}

}  // namespace zelcam
