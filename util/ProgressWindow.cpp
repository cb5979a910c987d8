#include "util/ProgressWindow.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

namespace zel {

void ProgressLine::Set(const char* full_text) {
    length = static_cast<std::uint32_t>(std::strlen(full_text));
    std::memcpy(text, full_text, std::min(length, kSize));
}

bool ProgressBar::Set(std::int32_t new_percent) {
    // The zero of a new bar has not been shown yet.
    if (HasLabel() && new_percent == percent) return false;
    percent = new_percent;
    text_length = static_cast<std::uint32_t>(std::snprintf(text, sizeof(text), "%d %% Complete", percent));
    return true;
}

std::optional<std::int32_t> ProgressPercent(std::int32_t done, std::int32_t total) {
    const auto product = static_cast<std::int32_t>(static_cast<std::uint32_t>(done) * 100u);
    if (total == 0 || (total == -1 && product == std::numeric_limits<std::int32_t>::min())) return std::nullopt;
    return product / total;
}

void ProgressWindow::SetLine(unsigned line, const char* text) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Contents.lines[line].Set(text);
    }
    Invalidate();
}

void ProgressWindow::SetProgress(std::int32_t done, std::int32_t total) {
    const std::optional<std::int32_t> percent = ProgressPercent(done, total);
    if (!percent) return;
    {
        const platform::ScopedLock lock(m_Lock);
        if (!m_HasBar || !m_Contents.bar.Set(*percent)) return;
    }
    Invalidate();
}

ProgressWindow::Contents ProgressWindow::Copy() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Contents;
}

void ProgressWindow::SetHasBar(bool has_bar) {
    const platform::ScopedLock lock(m_Lock);
    m_HasBar = has_bar;
}

}  // namespace zel
