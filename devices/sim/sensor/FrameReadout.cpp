#include "devices/sim/sensor/FrameReadout.h"

#include <algorithm>
#include <cstring>

#include "devices/sim/sensor/RawReadout.h"

namespace zel::sim {

void FrameReadout::ReadOut(FrameSource& source, const SensorSettings& settings, SensorFill fill, std::uint64_t frame,
                           int taps, bool packed, std::span<std::uint8_t> into) {
    const std::size_t w = source.Width();
    const unsigned h = source.Height();
    const unsigned steps = taps == 4 ? h / 2 : h;
    const std::size_t samples = taps == 4 ? 2 * w : w;  // of a step
    const std::size_t bytes = packed ? samples * 3 / 2 : samples * 2;
    m_Rows.resize(2 * w);
    m_Raw.resize(2 * w);
    const auto first = std::span(m_Rows).first(w);
    const auto second = std::span(m_Rows).last(w);
    source.Begin(settings, fill, frame);
    for (unsigned y = 0; y < steps && !into.empty(); ++y) {
        const bool in_place = !packed && into.size() >= bytes;
        const std::span raw(in_place ? reinterpret_cast<std::uint16_t*>(into.data()) : m_Raw.data(), samples);
        if (taps == 4) {
            ReadOutFourTaps(source.Row(y, first), source.Row(h - 1 - y, second), raw);
        } else if (taps == 2) {
            ReadOutTwoTaps(source.Row(y, first), raw);
        } else if (const auto row = source.Row(y, raw); row.data() != raw.data()) {
            std::copy(row.begin(), row.end(), raw.begin());
        }
        const std::size_t fits = std::min(into.size(), bytes);
        if (packed) {
            Pack12(raw, into.first(fits));
        } else if (!in_place) {
            std::memcpy(into.data(), raw.data(), fits);
        }
        into = into.subspan(fits);
    }
}

}  // namespace zel::sim
