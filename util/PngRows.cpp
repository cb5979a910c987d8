#include "util/PngRows.h"

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace zel {

namespace {

static_assert(std::endian::native == std::endian::little);

// A pixel of the file is its pixel of memory backwards, byte by byte: blue, green and red become red, green and blue,
// and each sample has its high byte first. It is read and written as a `Word` of which the first `kBytes` bytes count,
// so that the last pixel of a row needs a place of its own to be so.
template <class Word, unsigned kBytes, class Change>
void PutBackwards(const std::uint8_t* in, std::size_t pixels, std::uint8_t* out, Change change) {
    const auto put = [&](const std::uint8_t* from, std::uint8_t* to) {
        Word word;
        std::memcpy(&word, from, sizeof word);
        word = change(word);
        if constexpr (sizeof word == 8) word = __builtin_bswap64(word);
        if constexpr (sizeof word == 4) word = __builtin_bswap32(word);
        word >>= 8 * (sizeof word - kBytes);
        std::memcpy(to, &word, sizeof word);
    };
    for (; pixels > 1; --pixels, in += kBytes, out += kBytes) put(in, out);
    std::uint8_t from[sizeof(Word)] = {}, to[sizeof(Word)];
    std::memcpy(from, in, kBytes);
    put(from, to);
    std::memcpy(out, to, kBytes);
}

// Samples of 16 bits are changed one by one when they are to be moved up.
std::uint16_t MovedUp(unsigned sample, unsigned shift) {
    return static_cast<std::uint16_t>(std::min(sample << shift, 0xFFFFu));
}

std::uint64_t AllMovedUp(std::uint64_t samples, unsigned shift) {
    const std::uint64_t too_high = 0x0001000100010001u * (0xFFFFu << (16 - shift) & 0xFFFFu);
    if ((samples & too_high) == 0) return samples << shift;
    std::uint64_t moved = 0;
    for (unsigned at = 0; at < 64; at += 16) {
        moved |= std::uint64_t{MovedUp(static_cast<unsigned>(samples >> at & 0xFFFF), shift)} << at;
    }
    return moved;
}

void PutGrey16(const std::uint8_t* in, std::size_t pixels, unsigned shift, std::uint8_t* out) {
    const auto count = _mm_cvtsi32_si128(static_cast<int>(shift));
    const auto too_high = _mm_set1_epi16(static_cast<short>(shift ? 0xFFFF << (16 - shift) : 0));
    std::size_t i = 0;
    for (; i + 8 <= pixels; i += 8) {
        __m128i samples = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 2 * i));
        const __m128i fits = _mm_cmpeq_epi16(_mm_and_si128(samples, too_high), _mm_setzero_si128());
        samples = _mm_or_si128(_mm_sll_epi16(samples, count), _mm_andnot_si128(fits, _mm_set1_epi16(-1)));
        samples = _mm_or_si128(_mm_slli_epi16(samples, 8), _mm_srli_epi16(samples, 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2 * i), samples);
    }
    for (; i < pixels; ++i) {
        std::uint16_t sample;
        std::memcpy(&sample, in + 2 * i, 2);
        sample = __builtin_bswap16(MovedUp(sample, shift));
        std::memcpy(out + 2 * i, &sample, 2);
    }
}

void PutRgb16(const std::uint8_t* in, std::size_t pixels, unsigned shift, std::uint8_t* out) {
    if (shift == 0) {
        PutBackwards<std::uint64_t, 6>(in, pixels, out, [](std::uint64_t word) { return word; });
    } else {
        PutBackwards<std::uint64_t, 6>(in, pixels, out, [=](std::uint64_t word) { return AllMovedUp(word, shift); });
    }
}

void PutRgb8(const std::uint8_t* in, std::size_t pixels, std::uint8_t* out) {
    PutBackwards<std::uint32_t, 3>(in, pixels, out, [](std::uint32_t word) { return word; });
}

void PutRgba8(const std::uint8_t* in, std::size_t pixels, std::uint8_t* out) {
    for (std::size_t i = 0; i < pixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, in + 4 * i, 4);
        pixel = (pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16 | 0xFF000000u;
        std::memcpy(out + 4 * i, &pixel, 4);
    }
}

// From the end of the row on, so that what is subtracted is still there.
void SubtractLeft(std::uint8_t* row, std::size_t bytes, std::size_t pixel) {
    std::size_t i = bytes;
    for (; i >= pixel + 16; i -= 16) {
        auto* const at = reinterpret_cast<__m128i*>(row + i - 16);
        const __m128i left = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row + i - 16 - pixel));
        _mm_storeu_si128(at, _mm_sub_epi8(_mm_loadu_si128(at), left));
    }
    for (; i > pixel; --i) row[i - 1] = static_cast<std::uint8_t>(row[i - 1] - row[i - 1 - pixel]);
}

}  // namespace

void MakePngRows(const PngPicture& picture, std::size_t first, std::size_t count, PngFilter filter,
                 std::span<std::uint8_t> out) {
    const auto bytes = static_cast<std::size_t>(picture.BytesPerRow());
    const unsigned shift = std::min(picture.shift, 15u);
    const std::uint8_t* in = static_cast<const std::uint8_t*>(picture.pixels) + first * bytes;
    std::uint8_t* to = out.data();
    for (std::size_t row = 0; row < count; ++row, in += bytes, to += bytes) {
        *to++ = static_cast<std::uint8_t>(filter);
        switch (picture.format) {
            case PngFormat::kGrey16:
                PutGrey16(in, picture.width, shift, to);
                break;
            case PngFormat::kRgb16:
                PutRgb16(in, picture.width, shift, to);
                break;
            case PngFormat::kRgb8:
                PutRgb8(in, picture.width, to);
                break;
            case PngFormat::kRgba8:
                PutRgba8(in, picture.width, to);
                break;
        }
        if (filter == PngFilter::kSub) SubtractLeft(to, bytes, picture.BytesPerPixel());
    }
}

}  // namespace zel
