#include "kernels/ScalarKernels.h"

#include <algorithm>
#include <cstring>

namespace zel::kernels::scalar {

void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples) {
    const std::size_t pairs = samples.size() / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
        const std::uint8_t* b = &packed[3 * i];
        samples[2 * i] = static_cast<std::uint16_t>(b[0] * 16 + (b[1] & 0x0F));
        samples[2 * i + 1] = static_cast<std::uint16_t>(b[2] * 16 + (b[1] >> 4));
    }
    if (samples.size() % 2 != 0) {
        const std::uint8_t* b = &packed[3 * pairs];
        samples[2 * pairs] = static_cast<std::uint16_t>(b[0] * 16 + (b[1] & 0x0F));
    }
}

void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row) {
    const std::size_t w = row.size();
    for (std::size_t k = 0; 2 * k < w; ++k) {
        row[k] = raw[2 * k];
        if (2 * k + 1 < w) row[w - 1 - k] = raw[2 * k + 1];
    }
}

void ReorderFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> picture, unsigned w, unsigned h) {
    std::size_t next = 0;
    for (unsigned pair = 0; pair < h / 2; ++pair) {
        std::uint16_t* top = &picture[std::size_t{pair} * w];
        std::uint16_t* bottom = &picture[std::size_t{h - 1 - pair} * w];
        for (unsigned k = 0; k < w / 2; ++k) {
            top[k] = raw[next];
            top[w - 1 - k] = raw[next + 1];
            bottom[k] = raw[next + 2];
            bottom[w - 1 - k] = raw[next + 3];
            next += 4;
        }
    }
}

void Crop(std::span<std::uint16_t> frame, unsigned w, unsigned c0, unsigned r0, unsigned rw, unsigned rh) {
    if (rw == 0) return;
    for (unsigned row = 0; row < rh; ++row) {
        const std::size_t source = std::size_t{r0 + row} * w + c0;
        std::memmove(&frame[std::size_t{row} * rw], &frame[source], rw * sizeof(std::uint16_t));
    }
}

namespace {
std::uint16_t AddClamped(std::uint16_t a, std::uint16_t b, unsigned ceiling) {
    return static_cast<std::uint16_t>(std::min<unsigned>(unsigned{a} + b, ceiling));
}
}  // namespace

void BinHorizontal(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned factor, unsigned ceiling) {
    const unsigned new_width = w / factor;
    std::size_t out = 0;
    for (unsigned row = 0; row < h; ++row) {
        for (unsigned column = 0; column < new_width; ++column, ++out) {
            const std::size_t first = std::size_t{row} * w + std::size_t{column} * factor;
            for (std::size_t source = first; source < first + factor; ++source) {
                frame[out] = AddClamped(frame[out], frame[source], ceiling);
                frame[source] = source == out ? static_cast<std::uint16_t>(frame[out] / 2) : std::uint16_t{0};
            }
            if (out + 1 < frame.size()) frame[out + 1] = 0;
        }
    }
}

void BinVertical(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned factor, unsigned ceiling) {
    const unsigned new_height = h / factor;
    for (unsigned column = 0; column < w; ++column) {
        for (unsigned row = 0; row < new_height; ++row) {
            const std::size_t out = std::size_t{row} * w + column;
            for (unsigned k = 0; k < factor; ++k) {
                const std::size_t source = (std::size_t{row} * factor + k) * w + column;
                frame[out] = AddClamped(frame[out], frame[source], ceiling);
                frame[source] = 0;
            }
            if (row + 1 < h) frame[out + w] = 0;
        }
    }
}

void Average(std::span<const std::uint16_t* const> ring, std::span<std::uint16_t> frame) {
    const auto count = static_cast<std::uint32_t>(ring.size());
    for (std::size_t i = 0; i < frame.size(); ++i) {
        std::uint32_t sum = 0;
        for (const std::uint16_t* slot : ring) sum += slot[i];
        frame[i] = static_cast<std::uint16_t>(sum / count);
    }
}

}  // namespace zel::kernels::scalar
