// A record with a pixel buffer of its own, as a pool has them, and what to fill it with.
#ifndef TESTS_IMAGE_RECORD_H
#define TESTS_IMAGE_RECORD_H

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "image/ZelImageInternal.h"
#include "kernels/Kernels.h"

namespace zel::test {

using Words = std::vector<std::uint16_t>;

struct Record : ZelImageInternal {
    Record(unsigned width, unsigned height, const Words& content, unsigned bits = 12) {
        w = width;
        h = height;
        bit_depth = bits;
        bytes_per_pixel = 2;
        num_pixels = w * h;
        buffer_size = size_in_bytes = 2 * num_pixels;
        pixels = static_cast<unsigned short*>(AllocatePixels(buffer_size));
        std::ranges::copy(content, pixels);
    }
    Words Content() const { return Words(pixels, pixels + w * h); }
};

// first, first + step, ...
inline Words Counting(unsigned count, unsigned first = 0, unsigned step = 1) {
    Words words(count);
    for (unsigned i = 0; i < count; ++i) words[i] = static_cast<std::uint16_t>(first + step * i);
    return words;
}

// The demosaiced frame, three channels a pixel, computed row by row.
inline Words Demosaiced(const ZelImage& image, int phase) {
    const unsigned w = image.w, h = image.h;
    Words picture;
    for (unsigned y = 0; y < h; ++y) {
        Words c[3] = {Words(w), Words(w), Words(w)};
        const auto* row = image.pixels + y * w;
        kernels::scalar::DemosaicRow(
            {y ? row - w : nullptr, row, y + 1 < h ? row + w : nullptr, w, kernels::PhaseAt(phase, 0, y), false},
            {{c[0].data(), c[1].data(), c[2].data()}, w});
        for (unsigned x = 0; x < w; ++x) picture.insert(picture.end(), {c[0][x], c[1][x], c[2][x]});
    }
    return picture;
}

// A picture of 16-bit samples.
inline Words Picture(const ZelColorImage& image) {
    const auto* words = static_cast<const std::uint16_t*>(image.color_pixels);
    return Words(words, words + image.w * image.h * 3);
}

}  // namespace zel::test

#endif
