#include "image/ColorTable.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace zel {

namespace {
constexpr unsigned kSamples = 65536;
constexpr unsigned kReadBeyond = 2;  // a vector gather reads these and does not use them

// What one channel's entries do. The subtraction that the last zero and the last entry suggest counts only when every
// entry is what it gives.
kernels::SampleMap MapOf(const std::vector<std::uint16_t>& entries) {
    const auto first_above = std::ranges::find_if(entries, [](std::uint16_t entry) { return entry != 0; });
    const unsigned zeros = static_cast<unsigned>(first_above - entries.begin());
    kernels::SampleMap map;
    map.floor = static_cast<std::uint16_t>(std::clamp(zeros, 1u, kSamples) - 1);
    map.ceiling = entries[kSamples - 1];
    for (unsigned sample = 0; sample < kSamples; ++sample) {
        const unsigned above = sample > map.floor ? sample - map.floor : 0;
        if (entries[sample] != std::min<unsigned>(above, map.ceiling)) return {.table = entries.data()};
    }
    return map;
}
}  // namespace

std::shared_ptr<const ColorTable> ColorTable::Make(const unsigned short* entries, unsigned num_values,
                                                   unsigned channels) {
    try {
        auto table = std::make_shared<ColorTable>();
        if (channels != 3) return table;
        const unsigned count = std::min(num_values, kSamples);
        for (unsigned k = 0; k < 3; ++k) {
            std::vector<std::uint16_t> channel;
            channel.reserve(kSamples + kReadBeyond);
            for (unsigned value = 0; value < count; ++value) channel.push_back(entries[std::size_t{3} * value + k]);
            channel.resize(kSamples + kReadBeyond, channel.back());
            table->Take(k, std::move(channel));
        }
        table->m_Usable = true;
        return table;
    } catch (const std::exception&) {
        return nullptr;
    }
}

void ColorTable::Take(unsigned channel, std::vector<std::uint16_t>&& entries) {
    for (unsigned other = 0; other < channel; ++other) {
        if (m_Entries[other] != entries) continue;
        m_Maps[channel] = m_Maps[other];
        return;
    }
    m_Maps[channel] = MapOf(entries);
    if (m_Maps[channel].table) m_Entries[channel] = std::move(entries);
}

}  // namespace zel
