#include "image/ColorTable.h"

#include <algorithm>
#include <exception>

namespace zel {

namespace {
constexpr unsigned kSamples = 65536;
constexpr unsigned kReadBeyond = 2;  // a vector gather reads these and does not use them
}  // namespace

std::shared_ptr<const ColorTable> ColorTable::Make(const unsigned short* entries, unsigned num_values,
                                                   unsigned channels) {
    try {
        auto table = std::make_shared<ColorTable>();
        if (channels != 3) return table;
        const unsigned count = std::min(num_values, kSamples);
        for (unsigned k = 0; k < 3; ++k) {
            auto& channel = table->m_Channels[k];
            channel.reserve(kSamples + kReadBeyond);
            for (unsigned value = 0; value < count; ++value) channel.push_back(entries[std::size_t{3} * value + k]);
            channel.resize(kSamples + kReadBeyond, channel.back());
        }
        table->m_Usable = true;
        return table;
    } catch (const std::exception&) {
        return nullptr;
    }
}

}  // namespace zel
