// Where the pixels of the AVX-512 color kernels go: the planes or the three formats of a picture.
#ifndef KERNELS_AVX512COLOROUTPUT_H
#define KERNELS_AVX512COLOROUTPUT_H

#include <immintrin.h>

#include <array>
#include <cstddef>
#include <cstdint>

#include "kernels/Avx512Target.h"
#include "kernels/ColorKernels.h"

#define ZEL_INLINE_512 __attribute__((always_inline)) inline

namespace zel::kernels::avx512 {

inline constexpr std::size_t kPixels = 32;  // of a block

// Which of the 32 pixels of a block each 16-bit word of its three interleaved vectors belongs to.
inline constexpr auto kPixelOfWord = [] {
    std::array<std::array<std::uint16_t, 32>, 3> pixels{};
    for (std::size_t word = 0; word < 96; ++word) {
        pixels[word / 32][word % 32] = static_cast<std::uint16_t>(word / 3);
    }
    return pixels;
}();

// The words of interleaved vector number `vector` that channel `channel` has.
constexpr std::uint32_t WordsOf(unsigned vector, unsigned channel) {
    std::uint32_t words = 0;
    for (unsigned place = 0; place < 32; ++place) {
        words |= std::uint32_t{(32 * vector + place) % 3 == channel} << place;
    }
    return words;
}

// Where the bytes of interleaved pixels come from among the 128 of two vectors: the first has channels 0 and 1, the
// second channel 2 and the fourth, each eight pixels of one and the same eight of the other in turn.
template <unsigned channels>
inline constexpr auto kSourceOfByte = [] {
    std::array<std::array<std::uint8_t, 64>, 2> sources{};
    for (unsigned byte = 0; byte < kPixels * channels; ++byte) {
        const unsigned pixel = byte / channels, channel = byte % channels;
        sources[byte / 64][byte % 64] =
            static_cast<std::uint8_t>(channel / 2 * 64 + pixel / 8 * 16 + channel % 2 * 8 + pixel % 8);
    }
    return sources;
}();

}  // namespace zel::kernels::avx512

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

// 32 pixels' samples, a vector per channel.
struct Block {
    __m512i c0, c1, c2;
};

static inline __m512i Load(const void* at) { return _mm512_loadu_si512(at); }
static inline void Store(void* at, __m512i value) { _mm512_storeu_si512(at, value); }
static inline __m512i Words(unsigned value) { return _mm512_set1_epi16(static_cast<short>(value)); }

// Calls for memory that pixels will go to soon: the processor's own prefetching stops at every page's end.
static ZEL_INLINE_512 void CallFor(const void* to) { _mm_prefetch(static_cast<const char*>(to) + 2048, _MM_HINT_T0); }

struct ToPlanes {
    PlanarRow out;

    ZEL_INLINE_512 void Write(const Block& block, std::size_t x) const {
        Store(out.channel[0] + x, block.c0);
        Store(out.channel[1] + x, block.c1);
        Store(out.channel[2] + x, block.c2);
    }
};

struct To16 {
    std::uint16_t* out;

    template <unsigned vector>
    ZEL_INLINE_512 static __m512i Interleaved(const Block& b) {
        const __m512i pixels = Load(kPixelOfWord[vector].data());
        __m512i words = _mm512_permutexvar_epi16(pixels, b.c0);
        words = _mm512_mask_permutexvar_epi16(words, WordsOf(vector, 1), pixels, b.c1);
        return _mm512_mask_permutexvar_epi16(words, WordsOf(vector, 2), pixels, b.c2);
    }
    ZEL_INLINE_512 void Write(const Block& block, std::size_t x) const {
        std::uint16_t* const to = out + 3 * x;
        for (int vector = 0; vector < 3; ++vector) CallFor(to + 32 * vector);
        Store(to, Interleaved<0>(block));
        Store(to + 32, Interleaved<1>(block));
        Store(to + 64, Interleaved<2>(block));
    }
};

// 32 pixels in bytes: channels 0 and 1, channel 2 and zeros, in the order of kSourceOfByte.
struct ByteBlock {
    __m512i c01, c2;

    static ZEL_INLINE_512 ByteBlock Of(const Block& b) {
        const __m512i limit = Words(255);
        return {_mm512_packus_epi16(_mm512_min_epu16(b.c0, limit), _mm512_min_epu16(b.c1, limit)),
                _mm512_packus_epi16(_mm512_min_epu16(b.c2, limit), _mm512_setzero_si512())};
    }
};

template <unsigned channels>
struct ToBytes {
    std::uint8_t* out;

    ZEL_INLINE_512 void Write(const Block& block, std::size_t x) const { Write(ByteBlock::Of(block), x); }
    ZEL_INLINE_512 void Write(const ByteBlock& block, std::size_t x) const {
        std::uint8_t* const to = out + channels * x;
        CallFor(to);
        CallFor(to + 64);
        __m512i c23 = block.c2;
        if constexpr (channels == 4) c23 = _mm512_mask_set1_epi8(c23, 0xFF00FF00FF00FF00u, -1);
        const auto& sources = kSourceOfByte<channels>;
        Store(to, _mm512_permutex2var_epi8(block.c01, Load(sources[0].data()), c23));
        const __m512i rest = _mm512_permutex2var_epi8(block.c01, Load(sources[1].data()), c23);
        if constexpr (channels == 4) {
            Store(to + 64, rest);
        } else {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + 64), _mm512_castsi512_si256(rest));
        }
    }
};
using To8 = ToBytes<3>;
using To8Padded = ToBytes<4>;

}  // namespace zel::kernels::avx512

ZEL_AVX512_END

#endif
