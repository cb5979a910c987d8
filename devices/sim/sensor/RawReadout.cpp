#include "devices/sim/sensor/RawReadout.h"

#include <algorithm>
#include <cstddef>

namespace zel::sim {
namespace {

using Samples = std::span<const std::uint16_t>;

// a = left column k, b = right column w - 1 - k: a b a b ...
void ReadOutTwoTaps(Samples picture, std::size_t w, std::size_t h, std::span<std::uint16_t> raw) {
    for (std::size_t y = 0; y < h; ++y) {
        const std::uint16_t* row = picture.data() + y * w;
        std::uint16_t* out = raw.data() + y * w;
        for (std::size_t k = 0; k < w / 2; ++k) {
            out[2 * k] = row[k];
            out[2 * k + 1] = row[w - 1 - k];
        }
    }
}

void ReadOutFourTaps(Samples picture, std::size_t w, std::size_t h, std::span<std::uint16_t> raw) {
    std::uint16_t* out = raw.data();
    for (std::size_t y = 0; y < h / 2; ++y) {
        const std::uint16_t* top = picture.data() + y * w;
        const std::uint16_t* bottom = picture.data() + (h - 1 - y) * w;
        for (std::size_t k = 0; k < w / 2; ++k) {
            *out++ = top[k];
            *out++ = top[w - 1 - k];
            *out++ = bottom[k];
            *out++ = bottom[w - 1 - k];
        }
    }
}

}  // namespace

void ReadOutTaps(std::span<const std::uint16_t> picture, unsigned w, unsigned h, int taps,
                 std::span<std::uint16_t> raw) {
    const std::uint64_t samples = std::uint64_t{w} * h;
    if (picture.size() < samples || raw.size() < samples) return;
    if (taps == 2) {
        ReadOutTwoTaps(picture, w, h, raw);
    } else if (taps == 4) {
        ReadOutFourTaps(picture, w, h, raw);
    } else {
        std::copy_n(picture.data(), static_cast<std::size_t>(samples), raw.data());
    }
}

void Pack12(std::span<const std::uint16_t> samples, std::span<std::uint8_t> packed) {
    const std::size_t pairs = std::min(samples.size() / 2, packed.size() / 3);
    const std::uint16_t* in = samples.data();
    std::uint8_t* out = packed.data();
    for (std::size_t i = 0; i < pairs; ++i, in += 2, out += 3) {
        out[0] = static_cast<std::uint8_t>(in[0] >> 4);
        out[1] = static_cast<std::uint8_t>((in[1] & 0x0F) << 4 | (in[0] & 0x0F));
        out[2] = static_cast<std::uint8_t>(in[1] >> 4);
    }
}

}  // namespace zel::sim
