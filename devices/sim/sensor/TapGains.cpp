#include "devices/sim/sensor/TapGains.h"

#include <algorithm>
#include <cstdlib>
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

// Each step in which an entry does not grow by one like its sample changes their difference, usually by one.
int WindowsOf(const std::vector<std::uint16_t>& map) {
    const int size = static_cast<int>(map.size());
    const auto change = [&](int v) {
        return std::abs(map[static_cast<std::size_t>(v) + 1] - map[static_cast<std::size_t>(v)] - 1);
    };
    int changes = 0;
    for (int v = 0; v + 1 < size; ++v) {
        changes += change(v);
        if (v >= TapMap::kWindow - 1) changes -= change(v - TapMap::kWindow + 1);
        if (changes >= 128) return std::max(v + 2 - TapMap::kWindow, 0);
    }
    return std::max(size - TapMap::kWindow + 1, 0);
}

}  // namespace

bool TapGains::Build(const CalibrationData& data, const TapReadout& readout, int bits) noexcept {
    m_Maps.fill({});
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
            Tables& tables = m_Tables[tap];
            tables.entries = MapOf(table, tap, millivolts_per_count, largest, m_Ceiling);
            tables.beyond.clear();
            for (std::size_t v = 0; v < tables.entries.size(); ++v) {
                tables.beyond.push_back(static_cast<std::uint8_t>(tables.entries[v] - v));
            }
            m_Maps[tap] = {tables.entries.data(), tables.beyond.data(), WindowsOf(tables.entries)};
        }
    } catch (const std::bad_alloc&) {
        m_Maps.fill({});
        return false;
    }
    return true;
}

const TapMap& TapGains::Map(unsigned row, unsigned h, bool right) const {
    const bool lower = m_Taps == 4 && row >= h / 2;
    return m_Maps[lower ? (right ? 2 : 3) : (right ? 1 : 0)];
}

}  // namespace zel::sim
