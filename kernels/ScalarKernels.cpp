#include "kernels/ScalarKernels.h"

#include <algorithm>
#include <cstring>

namespace zel::kernels::scalar {

namespace {
// Sample number i of a packed run.
std::uint16_t PackedSample(std::span<const std::uint8_t> packed, std::size_t i) {
    const std::uint8_t* b = &packed[i / 2 * 3];
    return static_cast<std::uint16_t>(i % 2 == 0 ? b[0] * 16 + (b[1] & 0x0F) : b[2] * 16 + (b[1] >> 4));
}

// A row, or a pair of rows, from the samples that `sample(i)` gives.
template <class Sample>
void OrderTwoTaps(Sample sample, std::span<std::uint16_t> row) {
    const std::size_t w = row.size();
    for (std::size_t k = 0; 2 * k < w; ++k) {
        row[k] = sample(2 * k);
        if (2 * k + 1 < w) row[w - 1 - k] = sample(2 * k + 1);
    }
}

template <class Sample>
void OrderFourTaps(Sample sample, std::span<std::uint16_t> top, std::span<std::uint16_t> bottom) {
    const std::size_t w = top.size();
    for (std::size_t k = 0; k < w / 2; ++k) {
        top[k] = sample(4 * k);
        top[w - 1 - k] = sample(4 * k + 1);
        bottom[k] = sample(4 * k + 2);
        bottom[w - 1 - k] = sample(4 * k + 3);
    }
}
}  // namespace

void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples) {
    const std::size_t pairs = samples.size() / 2;
    for (std::size_t i = 0; i < pairs; ++i) {
        const std::uint8_t* b = &packed[3 * i];
        samples[2 * i] = static_cast<std::uint16_t>(b[0] * 16 + (b[1] & 0x0F));
        samples[2 * i + 1] = static_cast<std::uint16_t>(b[2] * 16 + (b[1] >> 4));
    }
    if (samples.size() % 2 != 0) samples.back() = PackedSample(packed, samples.size() - 1);
}

void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row) {
    OrderTwoTaps([&](std::size_t i) { return raw[i]; }, row);
}

void UnpackRowTwoTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> row) {
    OrderTwoTaps([&](std::size_t i) { return PackedSample(packed, i); }, row);
}

void ReorderRowPairFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> top,
                            std::span<std::uint16_t> bottom) {
    OrderFourTaps([&](std::size_t i) { return raw[i]; }, top, bottom);
}

void UnpackRowPairFourTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> top,
                           std::span<std::uint16_t> bottom) {
    OrderFourTaps([&](std::size_t i) { return PackedSample(packed, i); }, top, bottom);
}

void LookUp(std::span<std::uint16_t> samples, const std::uint16_t* table, std::uint16_t index_mask,
            std::uint16_t value_mask) {
    for (std::uint16_t& sample : samples) {
        sample = static_cast<std::uint16_t>(table[sample & index_mask] & value_mask);
    }
}

void LookUpByLines(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable&,
                   std::uint16_t index_mask, std::uint16_t value_mask) {
    LookUp(samples, table, index_mask, value_mask);
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

void Bin(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned horizontal, unsigned vertical,
         unsigned ceiling) {
    if (horizontal > 1) {
        BinHorizontal(frame, w, h, horizontal, ceiling);
        w /= horizontal;
    }
    if (vertical > 1) BinVertical(frame, w, h, vertical, ceiling);
}

void AverageStep(std::span<std::uint16_t> frame, std::span<std::uint16_t> slot, std::span<std::uint32_t> sums,
                 std::uint32_t count, bool replace) {
    for (std::size_t i = 0; i < frame.size(); ++i) {
        const std::uint32_t old = replace ? slot[i] : 0;
        sums[i] += frame[i] - old;
        slot[i] = frame[i];
        if (count >= 2) frame[i] = static_cast<std::uint16_t>(sums[i] / count);
    }
}

}  // namespace zel::kernels::scalar
