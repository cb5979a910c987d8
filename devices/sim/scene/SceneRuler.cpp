#include "devices/sim/scene/SceneRuler.h"

#include <algorithm>
#include <string>

#include "devices/sim/scene/Digits.h"

namespace zel::sim {
namespace {

constexpr unsigned kSmallestFrame = 200;  // pixels of the shorter side
constexpr float kLine = 0.75f;
constexpr float kBandLight = 0.35f;  // of the field behind

}  // namespace

SceneRuler::SceneRuler(unsigned width, unsigned height) {
    const unsigned side = std::min(width, height);
    if (side < kSmallestFrame) return;
    m_Dot = 1 + side / 900;
    m_Band = 15 * m_Dot;
    m_LeftBand = 31 * m_Dot;
}

// A short tick every 10 pixels, a longer one every 50, and every 100 the longest with its number beside it. `along`
// runs along the ruler, `across` away from the frame's edge.
bool SceneRuler::Marked(unsigned along, unsigned across, bool vertical) const {
    const unsigned length = along % 100 == 0 ? 14 : along % 50 == 0 ? 7 : along % 10 == 0 ? 4 : 0;
    if (across < length * m_Dot && length > 0) return true;
    // The number stands right of a tick from above, and below a tick from the left.
    const unsigned hundreds = along / 100 * 100;
    if (hundreds == 0) return false;
    const double beside = (static_cast<double>(along - hundreds) + 0.5) / m_Dot - 2.0;
    const double away = (static_cast<double>(across) + 0.5) / m_Dot - (vertical ? 5.0 : 6.0);
    const std::string number = std::to_string(hundreds);
    return vertical ? OnDigits(number, away, beside) : OnDigits(number, beside, away);
}

void SceneRuler::Row(unsigned y, std::span<Rgb> row) const {
    if (m_Dot == 0) return;
    const std::size_t reach = y < m_Band ? row.size() : std::min<std::size_t>(row.size(), m_LeftBand);
    for (std::size_t i = 0; i < reach; ++i) {
        const auto x = static_cast<unsigned>(i);
        const bool top = y < m_Band && x >= m_LeftBand;
        const bool corner = y < m_Band && x < m_LeftBand;
        const bool marked = !corner && (top ? Marked(x, y, false) : Marked(y, x, true));
        const Rgb& field = row[i];
        row[i] =
            marked ? Rgb{kLine, kLine, kLine} : Rgb{field.r * kBandLight, field.g * kBandLight, field.b * kBandLight};
    }
}

}  // namespace zel::sim
