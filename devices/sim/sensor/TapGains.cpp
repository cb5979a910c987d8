#include "devices/sim/sensor/TapGains.h"

#include <algorithm>
#include <new>

#include "devices/sim/scene/PlainMath.h"

namespace zel::sim {

namespace {

// A tap sees sample r where an even sensor would give r / gain(level of r). Walks through all r and keeps, for each
// even sample, the r that lies nearest.
std::vector<std::uint16_t> MapOf(const CalibrationTable& table, std::size_t tap, double millivolts_per_count,
                                 unsigned largest, unsigned ceiling) {
    std::vector<std::uint16_t> map(std::size_t{ceiling} + 1, static_cast<std::uint16_t>(largest));
    const auto even = [&](unsigned r) { return r / table.Gain(tap, r * millivolts_per_count); };
    double below = 0.0;
    std::size_t next = 1;
    map[0] = 0;
    for (unsigned r = 1; r <= largest && next < map.size(); ++r) {
        const double here = even(r);
        for (; next < map.size() && static_cast<double>(next) <= here; ++next) {
            const bool nearer_below = static_cast<double>(next) - below < here - static_cast<double>(next);
            map[next] = static_cast<std::uint16_t>(nearer_below ? r - 1 : r);
        }
        below = here;
    }
    return map;
}

void Through(const std::vector<std::uint16_t>& map, std::span<std::uint16_t> samples) {
    const std::uint16_t* const entries = map.data();
    const auto last = static_cast<std::uint16_t>(map.size() - 1);
    for (std::uint16_t& sample : samples) sample = entries[std::min(sample, last)];
}

}  // namespace

bool TapGains::Build(const CalibrationData& data, const TapReadout& readout, int bits) noexcept {
    for (auto& map : m_Maps) map.clear();
    m_Taps = readout.taps;
    const unsigned largest = (1u << std::clamp(bits, 1, 16)) - 1u;
    m_Ceiling = largest;
    const CalibrationTable& table = data.tables[readout.clock_mhz == 40 ? 1 : 0];
    if ((m_Taps != 2 && m_Taps != 4) || table.gains.size() < static_cast<std::size_t>(m_Taps)) return true;
    const double amplification = PlainPow(10.0, (std::clamp(readout.vga_gain, 0.0, 4000.0) * 0.0358 + 5.5) / 20.0);
    const double millivolts_per_count = 2000.0 / largest / amplification;
    m_Ceiling = std::min(largest + largest / 4, 0xFFFFu);
    try {
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(m_Taps); ++tap) {
            m_Maps[tap] = MapOf(table, tap, millivolts_per_count, largest, m_Ceiling);
        }
    } catch (const std::bad_alloc&) {
        for (auto& map : m_Maps) map.clear();
        return false;
    }
    return true;
}

void TapGains::Apply(std::span<std::uint16_t> image, unsigned w, unsigned h) const {
    if (Even() || image.size() < std::size_t{w} * h) return;
    for (std::size_t row = 0; row < h; ++row) {
        const bool lower = m_Taps == 4 && row >= h / 2;
        const std::span<std::uint16_t> samples = image.subspan(row * w, w);
        Through(m_Maps[lower ? 3 : 0], samples.first(w / 2));
        Through(m_Maps[lower ? 2 : 1], samples.subspan(w / 2));
    }
}

}  // namespace zel::sim
