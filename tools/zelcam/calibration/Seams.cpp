#include "tools/zelcam/calibration/Seams.h"

#include <cmath>
#include <numeric>

namespace zelcam {

namespace {

struct Edge {
    double value;
    double variance;
};

// The straight line through values[0], values[1] ..., half a pixel before the first of them.
Edge LineAtEdge(std::span<const double> values) {
    const auto n = static_cast<double>(values.size());
    const double mean_x = (n - 1.0) / 2.0;
    const double mean_y = std::accumulate(values.begin(), values.end(), 0.0) / n;
    double xx = 0.0;
    double xy = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double x = static_cast<double>(i) - mean_x;
        xx += x * x;
        xy += x * (values[i] - mean_y);
    }
    const double slope = xy / xx;
    double squares = 0.0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double rest = values[i] - mean_y - slope * (static_cast<double>(i) - mean_x);
        squares += rest * rest;
    }
    const double reach = -0.5 - mean_x;
    return {mean_y + slope * reach, squares / (n - 2.0) * (1.0 / n + reach * reach / xx)};
}

}  // namespace

bool SeamMeter::Add(std::span<const std::uint16_t> pixels, unsigned w, unsigned h) {
    if (pixels.size() < std::size_t{w} * h) return false;
    if (m_Frames == 0) {
        m_Sums.assign(std::size_t{w} * h, 0);
        m_W = w;
        m_H = h;
    }
    if (w != m_W || h != m_H) return false;
    for (std::size_t i = 0; i < m_Sums.size(); ++i) m_Sums[i] += pixels[i];
    ++m_Frames;
    return true;
}

double SeamMeter::Level() const {
    if (m_Frames == 0 || m_Sums.empty()) return 0.0;
    const double sum = std::accumulate(m_Sums.begin(), m_Sums.end(), 0.0);
    return sum / static_cast<double>(m_Frames) / static_cast<double>(m_Sums.size());
}

std::vector<Seam> SeamMeter::Seams(int taps) const {
    if (m_Frames == 0 || m_W < 4 * kReach || m_H < 4 * kReach) return {};
    const unsigned x = m_W / 2;
    const unsigned y = m_H / 2;
    if (taps == 2) return {Across("1|2", {x, 0, 0, m_H}, true)};
    if (taps != 4) return {};
    // The square where four taps meet belongs to no seam of two.
    return {Across("1|2", {x, 0, 0, y - kReach}, true), Across("4|3", {x, y + kReach, 0, m_H - y - kReach}, true),
            Across("1|4", {0, y, x - kReach, 0}, false), Across("2|3", {x + kReach, y, m_W - x - kReach, 0}, false)};
}

// area: the line of the seam, of no width.
Seam SeamMeter::Across(const char* name, const Area& area, bool vertical) const {
    std::vector<double> before(kReach, 0.0);
    std::vector<double> behind(kReach, 0.0);
    const unsigned length = vertical ? area.h : area.w;
    for (unsigned along = 0; along < length; ++along) {
        for (unsigned i = 0; i < kReach; ++i) {
            const std::size_t near = vertical ? std::size_t{area.y + along} * m_W + area.x + i
                                              : std::size_t{area.y + i} * m_W + area.x + along;
            const std::size_t far = vertical ? near - 2 * std::size_t{i} - 1 : near - (2 * std::size_t{i} + 1) * m_W;
            behind[i] += static_cast<double>(m_Sums[near]);
            before[i] += static_cast<double>(m_Sums[far]);
        }
    }
    const double samples = static_cast<double>(length) * static_cast<double>(m_Frames);
    for (unsigned i = 0; i < kReach; ++i) {
        before[i] /= samples;
        behind[i] /= samples;
    }
    const Edge first = LineAtEdge(before);
    const Edge second = LineAtEdge(behind);
    return {name, second.value - first.value, std::sqrt(first.variance + second.variance)};
}

}  // namespace zelcam
