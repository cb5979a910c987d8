#include "tools/zelcam/frames/Statistics.h"

#include <algorithm>
#include <cmath>

namespace zelcam {

double Percentile(std::vector<double> values, double percent) {
    if (values.empty()) return 0.0;
    const double count = static_cast<double>(values.size());
    const double rank = std::clamp(std::ceil(percent / 100.0 * count), 1.0, count);
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(rank) - 1;
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

void FrameCounter::Frame(std::uint32_t image_number, std::uint32_t arrival_ms) {
    // Numbers wrap at 2^32; one that goes back is a restart, not four thousand million lost frames.
    const std::uint32_t step = image_number - m_Last;
    if (m_Frames > 0 && step > 0 && step < 0x80000000u) m_Missing += step - 1;
    if (m_Frames == 0) m_FirstArrival = arrival_ms;
    m_LastArrival = arrival_ms;
    ++m_Frames;
    m_Last = image_number;
}

Drops FrameCounter::Count(std::uint64_t link_drops) const {
    Drops drops;
    drops.link = link_drops;
    drops.skipped = m_Skipped;
    const std::uint64_t known = link_drops + m_Skipped;
    drops.no_buffer = m_Missing > known ? m_Missing - known : 0;
    return drops;
}

double FrameCounter::CameraRate() const {
    const std::uint32_t span_ms = m_LastArrival - m_FirstArrival;
    return span_ms == 0 ? 0.0 : 1000.0 * static_cast<double>(m_Frames - 1 + m_Missing) / span_ms;
}

}  // namespace zelcam
