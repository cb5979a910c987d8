#include "tools/zelcam/text/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>

#include "platform/Terminal.h"

namespace zelcam {

namespace {
constexpr int kBarWidth = 30;
constexpr int kWidestLine = 79;

// One column stays free: a line that fills the last one would begin another. Read anew, since windows change.
int LineWidth() {
    const int columns = zel::platform::TerminalColumns();
    return columns > 1 ? std::min(columns - 1, kWidestLine) : kWidestLine;
}
}  // namespace

Progress::Progress(std::string label, bool enabled)
    : m_Label(std::move(label)), m_Enabled(enabled && zel::platform::StderrIsTerminal()) {}

Progress::~Progress() { Wipe(); }

void Progress::Wipe() {
    if (m_Drawn) std::fputs(fmt::format("\r{:{}}\r", "", LineWidth()).c_str(), stderr);
    m_Drawn = false;
}

void Progress::Show(std::uint64_t done, std::uint64_t total, const std::string& text) {
    const auto now = std::chrono::steady_clock::now();
    if (m_Drawn && now - m_Last < std::chrono::milliseconds(100) && (total == 0 || done < total)) return;
    m_Last = now;
    std::string line;
    if (total != 0) {
        line = fmt::format("{} {}/{}{}", BarText(done, total, kBarWidth), done, total, text.empty() ? "" : " ");
    }
    ShowText(line + text);
}

void Progress::ShowText(const std::string& text) {
    if (!m_Enabled) return;
    m_Drawn = true;
    const std::string line = m_Label + " " + text;
    std::fputs(fmt::format("\r{0:{1}.{1}}", line, LineWidth()).c_str(), stderr);
    std::fflush(stderr);
}

std::string BarText(std::uint64_t done, std::uint64_t total, int width) {
    const double share = total == 0 ? 0.0 : std::min(1.0, static_cast<double>(done) / static_cast<double>(total));
    const auto filled = static_cast<std::size_t>(share * width);
    return "[" + std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '.') + "]";
}

}  // namespace zelcam
