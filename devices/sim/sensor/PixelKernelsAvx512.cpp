// GCC 12 takes the undefined values of its own header for uninitialized ones.
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include <algorithm>

#include "devices/sim/sensor/PixelKernels.h"
#include "kernels/Avx512Target.h"

#define ZEL_INLINE __attribute__((always_inline)) inline

// Entries of the signal table are fetched one by one: gathers are slower than that. Pixels beside each other mostly
// become samples that lie close together. What the taps make of them then fits into a few registers, from where it is
// fetched for all at once; else these entries are fetched one by one, too.

ZEL_AVX512_BEGIN

namespace zel::sim::avx512 {
namespace {

constexpr std::size_t kLane = 16;
constexpr std::size_t kBlock = 64;

struct Signals {
    __m512 mean;
    __m512 sigma;
};

ZEL_INLINE __m512 EightPairs(const SignalTable::Signal* signals, const std::uint16_t* levels) {
    const auto two = [&](std::size_t i) __attribute__((always_inline)) {
        const auto* const first = reinterpret_cast<const __m64*>(signals + levels[i]);
        const auto* const second = reinterpret_cast<const __m64*>(signals + levels[i + 1]);
        return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), first), second);
    };
    const __m256 low = _mm256_insertf128_ps(_mm256_castps128_ps256(two(0)), two(2), 1);
    const __m256 high = _mm256_insertf128_ps(_mm256_castps128_ps256(two(4)), two(6), 1);
    return _mm512_castpd_ps(
        _mm512_insertf64x4(_mm512_castps_pd(_mm512_castps256_ps512(low)), _mm256_castps_pd(high), 1));
}

ZEL_INLINE Signals SignalsOf(const SignalTable::Signal* signals, const std::uint16_t* levels) {
    const __m512i even = _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odd = _mm512_add_epi32(even, _mm512_set1_epi32(1));
    const __m512 low = EightPairs(signals, levels);
    const __m512 high = EightPairs(signals, levels + 8);
    return {_mm512_permutex2var_ps(low, even, high), _mm512_permutex2var_ps(low, odd, high)};
}

// Samples as even taps give them.
ZEL_INLINE __m256i Samples(const PixelSettings& settings, const PixelRun& run, std::size_t i) {
    const Signals signals = SignalsOf(settings.signals, run.levels + i);
    const __m512 shot = _mm512_mul_ps(signals.sigma, _mm512_loadu_ps(run.shot + i));
    const __m512 charge = _mm512_min_ps(_mm512_add_ps(signals.mean, shot), _mm512_set1_ps(settings.full_well));
    const __m512 read = _mm512_mul_ps(_mm512_set1_ps(settings.read_noise), _mm512_loadu_ps(run.read + i));
    const __m512 counts = _mm512_add_ps(_mm512_add_ps(charge, read), _mm512_set1_ps(settings.offset));
    const __m512 cut = _mm512_min_ps(_mm512_max_ps(counts, _mm512_setzero_ps()), _mm512_set1_ps(settings.ceiling));
    return _mm512_cvtepi32_epi16(_mm512_cvttps_epi32(cut));
}

ZEL_INLINE void Store(const std::uint16_t* map, __m256i samples, std::uint16_t* out) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), samples);
    if (!map) return;
    for (std::size_t i = 0; i < kLane; ++i) out[i] = map[out[i]];
}

// What the tap makes of a block's samples; false, and nothing is done, where they lie too far apart.
ZEL_INLINE bool MapBlock(const TapMap& map, int middle, __m512i low, __m512i high, std::uint16_t* out) {
    constexpr int kWindow = TapMap::kWindow;
    const int base = std::clamp(middle - kWindow / 2, 0, map.windows - 1);
    const __m512i bases = _mm512_set1_epi16(static_cast<short>(base));
    const __m512i at_low = _mm512_sub_epi16(low, bases);
    const __m512i at_high = _mm512_sub_epi16(high, bases);
    const __m512i beyond = _mm512_or_si512(at_low, at_high);
    if (_mm512_cmpge_epu16_mask(beyond, _mm512_set1_epi16(kWindow)) != 0) return false;
    const __m512i at =
        _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(at_low)), _mm512_cvtepi16_epi8(at_high), 1);
    const std::uint8_t* const window = map.beyond + base;
    const __m512i lower = _mm512_permutex2var_epi8(_mm512_loadu_si512(window), at, _mm512_loadu_si512(window + 64));
    const __m512i upper =
        _mm512_permutex2var_epi8(_mm512_loadu_si512(window + 128), at, _mm512_loadu_si512(window + 192));
    const __m512i found = _mm512_mask_blend_epi8(_mm512_movepi8_mask(at), lower, upper);
    const __m512i more = _mm512_sub_epi8(found, _mm512_set1_epi8(static_cast<char>(window[0])));
    const __m512i first = _mm512_set1_epi16(static_cast<short>(map.entries[base] - base));
    const auto mapped = [&](__m512i samples, __m256i bytes) __attribute__((always_inline)) {
        return _mm512_add_epi16(samples, _mm512_add_epi16(first, _mm512_cvtepi8_epi16(bytes)));
    };
    _mm512_storeu_si512(out, mapped(low, _mm512_castsi512_si256(more)));
    _mm512_storeu_si512(out + kBlock / 2, mapped(high, _mm512_extracti64x4_epi64(more, 1)));
    return true;
}

}  // namespace

void RenderPixels(const PixelSettings& wanted, const PixelRun& run) {
    const PixelSettings settings = wanted;
    const std::uint16_t* const map = settings.map.entries;
    std::size_t i = 0;
    for (; map && settings.map.windows > 0 && i + kBlock <= run.count; i += kBlock) {
        const __m256i lane0 = Samples(settings, run, i);
        const __m256i lane1 = Samples(settings, run, i + kLane);
        const __m256i lane2 = Samples(settings, run, i + 2 * kLane);
        const __m256i lane3 = Samples(settings, run, i + 3 * kLane);
        const __m512i low = _mm512_inserti64x4(_mm512_castsi256_si512(lane0), lane1, 1);
        const __m512i high = _mm512_inserti64x4(_mm512_castsi256_si512(lane2), lane3, 1);
        const float mean = settings.signals[run.levels[i + kBlock / 2]].mean + settings.offset;
        const int middle = static_cast<int>(std::min(mean, settings.ceiling));
        if (MapBlock(settings.map, middle, low, high, run.out + i)) continue;
        Store(map, lane0, run.out + i);
        Store(map, lane1, run.out + i + kLane);
        Store(map, lane2, run.out + i + 2 * kLane);
        Store(map, lane3, run.out + i + 3 * kLane);
    }
    for (; i + kLane <= run.count; i += kLane) Store(map, Samples(settings, run, i), run.out + i);
    RenderPixelsPlain(settings, {run.levels + i, run.shot + i, run.read + i, run.out + i, run.count - i});
}

}  // namespace zel::sim::avx512

ZEL_AVX512_END
