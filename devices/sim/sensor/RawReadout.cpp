#include "devices/sim/sensor/RawReadout.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zel::sim {
namespace {

constexpr std::size_t kLane = 8;  // samples in a vector

__m128i Load(const std::uint16_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }
void Store(void* at, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(at), value); }

// The lane that ends before `end`, last sample first.
__m128i LoadBackwards(const std::uint16_t* end) {
    constexpr int kBackwards = _MM_SHUFFLE(0, 1, 2, 3);
    const __m128i fours = _mm_shufflehi_epi16(_mm_shufflelo_epi16(Load(end - kLane), kBackwards), kBackwards);
    return _mm_shuffle_epi32(fours, _MM_SHUFFLE(1, 0, 3, 2));
}

// Three bytes of each of four pairs in the lower bytes of 32 bits.
__m128i PackPairs(__m128i pairs) {
    const __m128i shifted = _mm_and_si128(_mm_srli_epi32(pairs, 4), _mm_set1_epi32(0x00FFF0FF));
    return _mm_or_si128(shifted, _mm_slli_epi32(_mm_and_si128(pairs, _mm_set1_epi32(0xF)), 8));
}

}  // namespace

void ReadOutTwoTaps(std::span<const std::uint16_t> row, std::span<std::uint16_t> raw) {
    const std::uint16_t* const left = row.data();
    const std::uint16_t* const end = left + row.size();
    std::uint16_t* out = raw.data();
    std::size_t k = 0;
    for (; k + kLane <= row.size() / 2; k += kLane, out += 2 * kLane) {
        const __m128i a = Load(left + k);
        const __m128i b = LoadBackwards(end - k);
        Store(out, _mm_unpacklo_epi16(a, b));
        Store(out + kLane, _mm_unpackhi_epi16(a, b));
    }
    for (; k < row.size() / 2; ++k, out += 2) {
        out[0] = left[k];
        out[1] = end[-1 - static_cast<std::ptrdiff_t>(k)];
    }
}

void ReadOutFourTaps(std::span<const std::uint16_t> top, std::span<const std::uint16_t> bottom,
                     std::span<std::uint16_t> raw) {
    const std::size_t half = std::min(top.size(), bottom.size()) / 2;
    const std::uint16_t* const top_end = top.data() + 2 * half;
    const std::uint16_t* const bottom_end = bottom.data() + 2 * half;
    std::uint16_t* out = raw.data();
    std::size_t k = 0;
    for (; k + kLane <= half; k += kLane, out += 4 * kLane) {
        const __m128i a = Load(top.data() + k);
        const __m128i b = LoadBackwards(top_end - k);
        const __m128i c = Load(bottom.data() + k);
        const __m128i d = LoadBackwards(bottom_end - k);
        const __m128i top_low = _mm_unpacklo_epi16(a, b);
        const __m128i top_high = _mm_unpackhi_epi16(a, b);
        const __m128i bottom_low = _mm_unpacklo_epi16(c, d);
        const __m128i bottom_high = _mm_unpackhi_epi16(c, d);
        Store(out, _mm_unpacklo_epi32(top_low, bottom_low));
        Store(out + kLane, _mm_unpackhi_epi32(top_low, bottom_low));
        Store(out + 2 * kLane, _mm_unpacklo_epi32(top_high, bottom_high));
        Store(out + 3 * kLane, _mm_unpackhi_epi32(top_high, bottom_high));
    }
    for (; k < half; ++k, out += 4) {
        const auto back = -1 - static_cast<std::ptrdiff_t>(k);
        out[0] = top[k];
        out[1] = top_end[back];
        out[2] = bottom[k];
        out[3] = bottom_end[back];
    }
}

void Pack12(std::span<const std::uint16_t> samples, std::span<std::uint8_t> packed) {
    const std::size_t pairs = std::min(samples.size() / 2, packed.size() / 3);
    const std::uint16_t* in = samples.data();
    std::uint8_t* out = packed.data();
    const std::uint8_t* const end = out + pairs * 3;
    std::size_t i = 0;
    // Four pairs at a time; the store reaches four bytes into the next.
    for (; end - out >= 16; i += 4, in += 8, out += 12) {
        const __m128i bytes = PackPairs(Load(in));
        const __m128i first = _mm_and_si128(bytes, _mm_set1_epi64x(0xFFFFFF));
        const __m128i sixes = _mm_or_si128(first, _mm_slli_epi64(_mm_srli_epi64(bytes, 32), 24));
        const __m128i upper = _mm_slli_si128(_mm_srli_si128(sixes, 8), 6);
        Store(out, _mm_or_si128(_mm_move_epi64(sixes), upper));
    }
    for (; i < pairs; ++i, in += 2, out += 3) {
        out[0] = static_cast<std::uint8_t>(in[0] >> 4);
        out[1] = static_cast<std::uint8_t>((in[1] & 0x0F) << 4 | (in[0] & 0x0F));
        out[2] = static_cast<std::uint8_t>(in[1] >> 4);
    }
}

}  // namespace zel::sim
