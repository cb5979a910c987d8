#include "util/PngRows.h"

#include <algorithm>
#include <cstring>

namespace zel {

namespace {

void PutBigEndian(std::uint8_t* out, unsigned value) {
    const auto swapped = static_cast<std::uint16_t>(value << 8 | value >> 8);
    std::memcpy(out, &swapped, 2);
}

// Rows of 16-bit samples; the first and the third of every three change places in a color picture.
template <unsigned kChannels>
void PutRow16(const std::uint8_t* in, std::size_t pixels, unsigned shift, std::uint8_t* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        for (unsigned channel = 0; channel < kChannels; ++channel) {
            std::uint16_t sample;
            std::memcpy(&sample, in + 2 * (kChannels - 1 - channel), 2);
            PutBigEndian(out + 2 * channel, std::min(static_cast<unsigned>(sample) << shift, 0xFFFFu));
        }
        in += 2 * kChannels;
        out += 2 * kChannels;
    }
}

template <unsigned kChannels>
void PutRow8(const std::uint8_t* in, std::size_t pixels, std::uint8_t* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        for (unsigned channel = 0; channel < 3; ++channel) out[channel] = in[2 - channel];
        if (kChannels == 4) out[3] = 0xFF;
        in += kChannels;
        out += kChannels;
    }
}

}  // namespace

void MakePngRows(const PngPicture& picture, std::size_t first, std::size_t count, PngFilter filter,
                 std::span<std::uint8_t> out) {
    const auto bytes = static_cast<std::size_t>(picture.BytesPerRow());
    const std::size_t pixel = picture.BytesPerPixel();
    const unsigned shift = std::min(picture.shift, 15u);
    const std::uint8_t* in = static_cast<const std::uint8_t*>(picture.pixels) + first * bytes;
    std::uint8_t* to = out.data();
    for (std::size_t row = 0; row < count; ++row, in += bytes, to += bytes) {
        *to++ = static_cast<std::uint8_t>(filter);
        switch (picture.format) {
            case PngFormat::kGrey16:
                PutRow16<1>(in, picture.width, shift, to);
                break;
            case PngFormat::kRgb16:
                PutRow16<3>(in, picture.width, shift, to);
                break;
            case PngFormat::kRgb8:
                PutRow8<3>(in, picture.width, to);
                break;
            case PngFormat::kRgba8:
                PutRow8<4>(in, picture.width, to);
                break;
        }
        if (filter == PngFilter::kNone) continue;
        for (std::size_t i = bytes - 1; i >= pixel; --i) to[i] = static_cast<std::uint8_t>(to[i] - to[i - pixel]);
    }
}

}  // namespace zel
