// Unpacking and tap order with AVX-512.
#include <array>

#include "kernels/Avx2Kernels.h"
#include "kernels/Avx512Frame.h"
#include "kernels/Avx512FrameVectors.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

namespace {
// 32 samples, as they come from the camera, in another order: which of them goes to each place. One shuffle moves bytes
// across the whole vector.
//
// Words are moved whole. Of packed samples, three bytes to a pair, the shuffle puts each sample's two bytes into one
// word, the whole-byte part on top: the first of a pair becomes b0 : b1, the second b2 : b1. Shifted right by 4 the
// second is done; the first still needs its low four bits from b1's lower half.
using Order = std::array<std::uint8_t, kLane>;

struct alignas(64) Shuffle {
    std::uint8_t pick[64];
    std::uint16_t first_low[kLane];  // the low four bits, at the places of the first samples of pairs
};

template <bool packed>
constexpr Shuffle MakeShuffle(const Order& order) {
    Shuffle shuffle{};
    for (unsigned place = 0; place < kLane; ++place) {
        const unsigned sample = order[place];
        const unsigned low = packed ? sample / 2 * 3 + 1 : 2 * sample;
        const unsigned high = packed ? low + (sample % 2 ? 1u : -1u) : low + 1;
        shuffle.pick[2 * place] = static_cast<std::uint8_t>(low);
        shuffle.pick[2 * place + 1] = static_cast<std::uint8_t>(high);
        shuffle.first_low[place] = sample % 2 ? 0 : 0x000F;
    }
    return shuffle;
}

constexpr Order InTurn() {
    Order order{};
    for (std::uint8_t i = 0; i < kLane; ++i) order[i] = i;
    return order;
}

// Of 16 pairs: the left samples in order, then the right ones backwards.
constexpr Order LeftThenRight() {
    Order order{};
    for (std::uint8_t k = 0; k < 16; ++k) {
        order[k] = static_cast<std::uint8_t>(2 * k);
        order[31u - k] = static_cast<std::uint8_t>(2 * k + 1);
    }
    return order;
}

// Of 8 groups of four: the samples of each tap, the second and the fourth tap's backwards.
constexpr Order TapByTap() {
    Order order{};
    for (std::uint8_t k = 0; k < 8; ++k) {
        order[k] = static_cast<std::uint8_t>(4 * k);
        order[15u - k] = static_cast<std::uint8_t>(4 * k + 1);
        order[16u + k] = static_cast<std::uint8_t>(4 * k + 2);
        order[31u - k] = static_cast<std::uint8_t>(4 * k + 3);
    }
    return order;
}

template <bool packed>
constexpr std::size_t Bytes(std::size_t samples) {
    return packed ? (samples * 3 + 1) / 2 : samples * 2;
}

// Takes samples in one order from a run of words or packed samples.
template <bool packed>
class Taker {
  public:
    explicit Taker(const Shuffle& shuffle) : m_Pick(Load(shuffle.pick)), m_FirstLow(Load(shuffle.first_low)) {}

    // Packed samples take 48 of the vector's bytes; `there` keeps the others from being read where none are.
    __m512i Take(const std::uint8_t* from, __mmask64 there = FirstBytes(Bytes<packed>(kLane))) const {
        const __m512i bytes = packed ? _mm512_maskz_loadu_epi8(there, from) : Load(from);
        const __m512i words = _mm512_permutexvar_epi8(m_Pick, bytes);
        if (!packed) return words;
        // Bit by bit: the word's where first_low is set, else the shifted one's.
        return _mm512_ternarylogic_epi32(m_FirstLow, words, _mm512_srli_epi16(words, 4), 0xCA);
    }

  private:
    __m512i m_Pick, m_FirstLow;
};

// Calls for memory that will be written soon. The rows of a picture stand one after the other, and the processor's own
// prefetching stops at page ends, where rows end as well.
void CallFor(const std::uint16_t* at, std::ptrdiff_t samples) {
    _mm_prefetch(reinterpret_cast<const char*>(at) + samples * 2, _MM_HINT_T0);
}

// 32 pairs at a time: the left taps' samples go up from the left edge, the right taps', backwards, down from the right.
// Returns the number of pairs done.
template <bool packed>
std::size_t TwoTapRow(const std::uint8_t* raw, std::span<std::uint16_t> row) {
    static constexpr Shuffle kShuffle = MakeShuffle<packed>(LeftThenRight());
    const Taker<packed> taker(kShuffle);
    const std::size_t w = row.size();
    const auto next = static_cast<std::ptrdiff_t>(w);
    std::size_t k = 0;
    for (; 2 * (k + kLane) <= w; k += kLane) {
        const std::uint8_t* const from = raw + Bytes<packed>(2 * k);
        CallFor(row.data() + k, next);
        CallFor(row.data() + w - k - kLane, next);
        const __m512i a = taker.Take(from);
        const __m512i b = taker.Take(from + Bytes<packed>(kLane));
        Store(row.data() + k, _mm512_shuffle_i64x2(a, b, 0x44));
        Store(row.data() + w - k - kLane, _mm512_shuffle_i64x2(b, a, 0xEE));
    }
    return k;
}

// 32 groups of four at a time; each vector taken has a quarter for each tap. Returns the number of groups done.
template <bool packed>
std::size_t FourTapRowPair(const std::uint8_t* raw, std::span<std::uint16_t> top, std::span<std::uint16_t> bottom) {
    static constexpr Shuffle kShuffle = MakeShuffle<packed>(TapByTap());
    const Taker<packed> taker(kShuffle);
    const std::size_t w = top.size();
    const auto next = static_cast<std::ptrdiff_t>(w);
    std::size_t k = 0;
    for (; 2 * (k + kLane) <= w; k += kLane) {
        const std::uint8_t* const from = raw + Bytes<packed>(4 * k);
        CallFor(top.data() + k, next);
        CallFor(top.data() + w - k - kLane, next);
        CallFor(bottom.data() + k, -next);
        CallFor(bottom.data() + w - k - kLane, -next);
        const __m512i v0 = taker.Take(from);
        const __m512i v1 = taker.Take(from + Bytes<packed>(kLane));
        const __m512i v2 = taker.Take(from + Bytes<packed>(2 * kLane));
        const __m512i v3 = taker.Take(from + Bytes<packed>(3 * kLane));
        const __m512i top01 = _mm512_shuffle_i64x2(v0, v1, 0x44);  // a0 b0 a1 b1
        const __m512i top23 = _mm512_shuffle_i64x2(v2, v3, 0x44);
        const __m512i bottom01 = _mm512_shuffle_i64x2(v0, v1, 0xEE);
        const __m512i bottom23 = _mm512_shuffle_i64x2(v2, v3, 0xEE);
        Store(top.data() + k, _mm512_shuffle_i64x2(top01, top23, 0x88));
        Store(top.data() + w - k - kLane, _mm512_shuffle_i64x2(top23, top01, 0x77));
        Store(bottom.data() + k, _mm512_shuffle_i64x2(bottom01, bottom23, 0x88));
        Store(bottom.data() + w - k - kLane, _mm512_shuffle_i64x2(bottom23, bottom01, 0x77));
    }
    return k;
}

const std::uint8_t* AsBytes(std::span<const std::uint16_t> samples) {
    return reinterpret_cast<const std::uint8_t*>(samples.data());
}
}  // namespace

void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples) {
    static constexpr Shuffle kShuffle = MakeShuffle<true>(InTurn());
    constexpr std::ptrdiff_t kPage = 2048;  // samples
    const Taker<true> taker(kShuffle);
    std::size_t i = 0;
    for (; i + kLane <= samples.size(); i += kLane) {
        CallFor(&samples[i], kPage);
        Store(&samples[i], taker.Take(&packed[Bytes<true>(i)]));
    }
    if (i == samples.size()) return;
    const std::size_t rest = samples.size() - i;
    _mm512_mask_storeu_epi16(&samples[i], FirstWords(rest),
                             taker.Take(&packed[Bytes<true>(i)], FirstBytes(Bytes<true>(rest))));
}

void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row) {
    const std::size_t done = TwoTapRow<false>(AsBytes(raw), row);
    avx2::kTable.reorder_row_two_taps(raw.subspan(2 * done), row.subspan(done, row.size() - 2 * done));
}

void UnpackRowTwoTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> row) {
    const std::size_t done = TwoTapRow<true>(packed.data(), row);
    avx2::kTable.unpack_row_two_taps(packed.subspan(Bytes<true>(2 * done)), row.subspan(done, row.size() - 2 * done));
}

void ReorderRowPairFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> top,
                            std::span<std::uint16_t> bottom) {
    const std::size_t done = FourTapRowPair<false>(AsBytes(raw), top, bottom);
    const std::size_t rest = top.size() - 2 * done;
    avx2::kTable.reorder_row_pair_four_taps(raw.subspan(4 * done), top.subspan(done, rest), bottom.subspan(done, rest));
}

void UnpackRowPairFourTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> top,
                           std::span<std::uint16_t> bottom) {
    const std::size_t done = FourTapRowPair<true>(packed.data(), top, bottom);
    const std::size_t rest = top.size() - 2 * done;
    avx2::kTable.unpack_row_pair_four_taps(packed.subspan(Bytes<true>(4 * done)), top.subspan(done, rest),
                                           bottom.subspan(done, rest));
}

}  // namespace zel::kernels::avx512

ZEL_AVX512_END
