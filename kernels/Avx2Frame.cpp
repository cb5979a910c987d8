// Unpacking, tap order, lookup, binning and averaging with AVX2.
#include <algorithm>
#include <array>

#include "kernels/Avx2Color.h"
#include "kernels/Avx2Kernels.h"
#include "kernels/Avx2Vectors.h"

ZEL_AVX2_BEGIN

namespace zel::kernels::avx2 {

namespace {
// Eight samples, as they come from the camera, in another order: which of the eight goes to each place. Both kinds of
// samples are taken with one byte shuffle in each half of a vector.
//
// Words are moved whole. Of packed samples, three bytes to a pair, the shuffle puts each sample's two bytes into one
// word, the whole-byte part on top: the first of a pair becomes b0 : b1, the second b2 : b1. Shifted right by 4 the
// second is done; the first still needs its low four bits from b1's lower half.
using Order = std::array<std::uint8_t, 8>;

struct alignas(32) Shuffle {
    std::uint8_t pick[32];        // when the eight samples' bytes begin at the first byte
    std::uint8_t pick_late[32];   // when they begin at the fifth
    std::uint16_t first_low[16];  // the low four bits, at the places of the first samples of pairs
};

template <bool packed>
constexpr Shuffle MakeShuffle(const Order& order) {
    Shuffle shuffle{};
    for (unsigned half = 0; half < 2; ++half) {
        for (unsigned place = 0; place < 8; ++place) {
            const unsigned sample = order[place];
            const unsigned at = 16 * half + 2 * place;
            const unsigned low = packed ? sample / 2 * 3 + 1 : 2 * sample;
            const unsigned high = packed ? low + (sample % 2 ? 1u : -1u) : low + 1;
            shuffle.pick[at] = static_cast<std::uint8_t>(low);
            shuffle.pick[at + 1] = static_cast<std::uint8_t>(high);
            shuffle.pick_late[at] = static_cast<std::uint8_t>(low + 4);
            shuffle.pick_late[at + 1] = static_cast<std::uint8_t>(high + 4);
            shuffle.first_low[8 * half + place] = sample % 2 ? 0 : 0x000F;
        }
    }
    return shuffle;
}

// Takes samples in one order from a run of words or packed samples.
template <bool packed>
class Taker {
  public:
    explicit Taker(const Shuffle& shuffle)
        : m_Pick(Load(shuffle.pick)), m_PickLate(Load(shuffle.pick_late)), m_FirstLow(Load(shuffle.first_low)) {}

    // The eights number `low` and `high` from `from`. Packed ones are loaded from four bytes before them, so that no
    // load goes beyond the last one's bytes; only the very first has nothing before it.
    __m256i Take(const std::uint8_t* from, std::size_t low, std::size_t high) const {
        const bool late = packed && low > 0;
        const std::size_t bytes = packed ? 12 : 16;
        const std::uint8_t* const start = late ? from - 4 : from;
        const __m256i both = _mm256_inserti128_si256(
            _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(start + low * bytes))),
            _mm_loadu_si128(reinterpret_cast<const __m128i*>(start + high * bytes)), 1);
        const __m256i words = _mm256_shuffle_epi8(both, late ? m_PickLate : m_Pick);
        if (!packed) return words;
        const __m256i shifted = _mm256_srli_epi16(words, 4);
        return _mm256_xor_si256(shifted, _mm256_and_si256(_mm256_xor_si256(words, shifted), m_FirstLow));
    }

  private:
    __m256i m_Pick, m_PickLate, m_FirstLow;
};

__m256i SwapHalves(__m256i v) { return _mm256_permute4x64_epi64(v, _MM_SHUFFLE(1, 0, 3, 2)); }

template <bool packed>
constexpr std::size_t Bytes(std::size_t samples) {
    return packed ? samples / 2 * 3 : samples * 2;
}

// Calls for memory that will be written soon. The rows of a picture stand one after the other, and the processor's own
// prefetching stops at page ends, where rows end as well.
void CallFor(const std::uint16_t* at, std::ptrdiff_t samples) {
    _mm_prefetch(reinterpret_cast<const char*>(at) + samples * 2, _MM_HINT_T0);
}

// 16 pairs at a time: the left taps' samples go up from the left edge, the right taps', reversed, down from the right.
// Returns the number of pairs done.
template <bool packed>
std::size_t TwoTapRow(const std::uint8_t* raw, std::span<std::uint16_t> row) {
    // Of four pairs: the left samples in order, then the right ones backwards.
    static constexpr Shuffle kShuffle = MakeShuffle<packed>({0, 2, 4, 6, 7, 5, 3, 1});
    const Taker<packed> taker(kShuffle);
    const std::size_t w = row.size();
    const auto next = static_cast<std::ptrdiff_t>(w);
    std::size_t k = 0;
    for (; 2 * (k + kLane) <= w; k += kLane) {
        const std::uint8_t* const from = raw + Bytes<packed>(2 * k);
        CallFor(row.data() + k, next);
        CallFor(row.data() + w - k - kLane, next);
        const __m256i a = taker.Take(from, 0, 2);
        const __m256i b = taker.Take(from, 1, 3);
        Store(row.data() + k, _mm256_unpacklo_epi64(a, b));
        Store(row.data() + w - k - kLane, SwapHalves(_mm256_unpackhi_epi64(b, a)));
    }
    return k;
}

// 16 groups of four at a time, transposed by pieces of two samples and then of four. Returns the number of groups done.
template <bool packed>
std::size_t FourTapRowPair(const std::uint8_t* raw, std::span<std::uint16_t> top, std::span<std::uint16_t> bottom) {
    // a0 b0 c0 d0 a1 b1 c1 d1  ->  a0 a1 | c0 c1 | b1 b0 | d1 d0
    static constexpr Shuffle kShuffle = MakeShuffle<packed>({0, 4, 2, 6, 5, 1, 7, 3});
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
        const __m256i v0 = taker.Take(from, 0, 4);
        const __m256i v1 = taker.Take(from, 1, 5);
        const __m256i v2 = taker.Take(from, 2, 6);
        const __m256i v3 = taker.Take(from, 3, 7);
        const __m256i ac01 = _mm256_unpacklo_epi32(v0, v1);
        const __m256i ac23 = _mm256_unpacklo_epi32(v2, v3);
        const __m256i bd10 = _mm256_unpackhi_epi32(v1, v0);
        const __m256i bd32 = _mm256_unpackhi_epi32(v3, v2);
        Store(top.data() + k, _mm256_unpacklo_epi64(ac01, ac23));
        Store(top.data() + w - k - kLane, SwapHalves(_mm256_unpacklo_epi64(bd32, bd10)));
        Store(bottom.data() + k, _mm256_unpackhi_epi64(ac01, ac23));
        Store(bottom.data() + w - k - kLane, SwapHalves(_mm256_unpackhi_epi64(bd32, bd10)));
    }
    return k;
}

const std::uint8_t* AsBytes(std::span<const std::uint16_t> samples) {
    return reinterpret_cast<const std::uint8_t*>(samples.data());
}
}  // namespace

void Unpack12(std::span<const std::uint8_t> packed, std::span<std::uint16_t> samples) {
    static constexpr Shuffle kShuffle = MakeShuffle<true>({0, 1, 2, 3, 4, 5, 6, 7});
    const Taker<true> taker(kShuffle);
    std::size_t i = 0;
    for (; i + 2 * kLane <= samples.size(); i += 2 * kLane) {
        const std::uint8_t* const from = packed.data() + Bytes<true>(i);
        const __m256i even = taker.Take(from, 0, 2);
        const __m256i odd = taker.Take(from, 1, 3);
        Store(samples.data() + i, _mm256_permute2x128_si256(even, odd, 0x20));
        Store(samples.data() + i + kLane, _mm256_permute2x128_si256(even, odd, 0x31));
    }
    scalar::Unpack12(packed.subspan(Bytes<true>(i)), samples.subspan(i));
}

void ReorderRowTwoTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> row) {
    const std::size_t done = TwoTapRow<false>(AsBytes(raw), row);
    scalar::ReorderRowTwoTaps(raw.subspan(2 * done), row.subspan(done, row.size() - 2 * done));
}

void UnpackRowTwoTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> row) {
    const std::size_t done = TwoTapRow<true>(packed.data(), row);
    scalar::UnpackRowTwoTaps(packed.subspan(Bytes<true>(2 * done)), row.subspan(done, row.size() - 2 * done));
}

void ReorderRowPairFourTaps(std::span<const std::uint16_t> raw, std::span<std::uint16_t> top,
                            std::span<std::uint16_t> bottom) {
    const std::size_t done = FourTapRowPair<false>(AsBytes(raw), top, bottom);
    const std::size_t rest = top.size() - 2 * done;
    scalar::ReorderRowPairFourTaps(raw.subspan(4 * done), top.subspan(done, rest), bottom.subspan(done, rest));
}

void UnpackRowPairFourTaps(std::span<const std::uint8_t> packed, std::span<std::uint16_t> top,
                           std::span<std::uint16_t> bottom) {
    const std::size_t done = FourTapRowPair<true>(packed.data(), top, bottom);
    const std::size_t rest = top.size() - 2 * done;
    scalar::UnpackRowPairFourTaps(packed.subspan(Bytes<true>(4 * done)), top.subspan(done, rest),
                                  bottom.subspan(done, rest));
}

template <class Fetch>
void LookUp(std::span<std::uint16_t> samples, const std::uint16_t* table, std::uint16_t index_mask,
            std::uint16_t value_mask) {
    const __m256i value = _mm256_set1_epi16(static_cast<short>(value_mask));
    std::size_t i = 0;
    for (; i + kLane <= samples.size(); i += kLane) {
        const __m256i entries = Fetch::Entries(table, samples.data() + i, index_mask);
        Store(samples.data() + i, _mm256_and_si256(entries, value));
    }
    scalar::LookUp(samples.subspan(i), table, index_mask, value_mask);
}

// Fetching an entry costs less than finding and computing its line.
template <class Fetch>
void LookUpByLines(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable&,
                   std::uint16_t index_mask, std::uint16_t value_mask) {
    LookUp<Fetch>(samples, table, index_mask, value_mask);
}

namespace {
// What the rows of a column add up to, clamped to 65535. Sums that are clamped after each addition and sums that are
// clamped once at the end are the same, because no sample is negative.
template <unsigned rows>
__m256i ColumnSums(const std::uint16_t* source, std::size_t stride, unsigned more_rows) {
    __m256i sum = Load(source);
    for (unsigned row = 1; row < rows; ++row) sum = _mm256_adds_epu16(sum, Load(source + row * stride));
    for (unsigned row = rows; row < rows + more_rows; ++row) {
        sum = _mm256_adds_epu16(sum, Load(source + row * stride));
    }
    return sum;
}

__m256i PairSums(__m256i samples) {
    return _mm256_add_epi32(_mm256_srli_epi32(samples, 16), _mm256_and_si256(samples, _mm256_set1_epi32(0xFFFF)));
}

// One output row from `rows` + `more_rows` source rows, by a horizontal factor of 1, 2 or 4. Returns the number of
// columns done.
template <unsigned horizontal, unsigned rows>
std::size_t BinRow(const std::uint16_t* source, std::size_t stride, unsigned more_rows, std::uint16_t* out,
                   std::size_t columns, __m256i ceiling) {
    // The rows of the next output row are called for now: the processor's own prefetching stops at page ends.
    const auto sums = [&](std::size_t at) {
        for (unsigned row = 0; row < rows; ++row) {
            _mm_prefetch(reinterpret_cast<const char*>(source + at + (rows + row) * stride), _MM_HINT_T0);
        }
        return ColumnSums<rows>(source + at, stride, more_rows);
    };
    std::size_t column = 0;
    for (; column + kLane <= columns; column += kLane) {
        const std::size_t at = column * horizontal;
        __m256i binned;
        if constexpr (horizontal == 1) {
            binned = sums(at);
        } else if constexpr (horizontal == 2) {
            binned = Narrow(PairSums(sums(at)), PairSums(sums(at + kLane)));
        } else {
            const __m256i low = _mm256_hadd_epi32(PairSums(sums(at)), PairSums(sums(at + kLane)));
            const __m256i high = _mm256_hadd_epi32(PairSums(sums(at + 2 * kLane)), PairSums(sums(at + 3 * kLane)));
            binned = Narrow(_mm256_permute4x64_epi64(low, _MM_SHUFFLE(3, 1, 2, 0)),
                            _mm256_permute4x64_epi64(high, _MM_SHUFFLE(3, 1, 2, 0)));
        }
        Store(out + column, _mm256_min_epu16(binned, ceiling));
    }
    return column;
}

// The common number of rows has code of its own.
template <unsigned horizontal>
std::size_t BinRow(const std::uint16_t* source, std::size_t stride, unsigned rows, std::uint16_t* out,
                   std::size_t columns, __m256i ceiling) {
    if (rows == 2) return BinRow<horizontal, 2>(source, stride, 0, out, columns, ceiling);
    return BinRow<horizontal, 1>(source, stride, rows - 1, out, columns, ceiling);
}

std::uint16_t BinOne(const std::uint16_t* source, std::size_t stride, unsigned rows, unsigned horizontal,
                     unsigned ceiling) {
    std::uint32_t sum = 0;
    for (unsigned row = 0; row < rows; ++row) {
        for (unsigned k = 0; k < horizontal; ++k) sum += source[row * stride + k];
    }
    return static_cast<std::uint16_t>(std::min(sum, ceiling));
}
}  // namespace

// In place, one output row after the other: an output row never reaches sources that are still needed.
void Bin(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned horizontal, unsigned vertical,
         unsigned ceiling) {
    const std::size_t columns = w / horizontal;
    const unsigned rows = h / vertical;
    if (columns == 0 || rows == 0 || (horizontal == 1 && vertical == 1)) return;
    const __m256i clamp = _mm256_set1_epi16(static_cast<short>(ceiling));
    for (unsigned row = 0; row < rows; ++row) {
        const std::uint16_t* source = &frame[std::size_t{row} * vertical * w];
        std::uint16_t* const out = &frame[row * columns];
        unsigned count = vertical;
        // On purpose: vertical binning loses the frame's first row.
        if (row == 0 && vertical > 1) {
            source += w;
            --count;
        }
        // On purpose: the first sample of the frame is doubled, clamped and halved again.
        if (row == 0 && vertical == 1) frame[0] = static_cast<std::uint16_t>(std::min(2u * frame[0], ceiling) / 2);
        std::size_t column = 0;
        if (horizontal == 1) column = BinRow<1>(source, w, count, out, columns, clamp);
        if (horizontal == 2) column = BinRow<2>(source, w, count, out, columns, clamp);
        if (horizontal == 4) column = BinRow<4>(source, w, count, out, columns, clamp);
        for (; column < columns; ++column) {
            out[column] = BinOne(source + column * horizontal, w, count, horizontal, ceiling);
        }
    }
}

// The quotient of two whole numbers below 2^24, rounded to a float, never rounds up to the next whole number while the
// divisor is below 256: truncated it is exact.
void AverageStep(std::span<std::uint16_t> frame, std::span<std::uint16_t> slot, std::span<std::uint32_t> sums,
                 std::uint32_t count, bool replace) {
    constexpr std::uint32_t kLargestExact = 255;
    std::size_t i = 0;
    if (count <= kLargestExact) {
        const __m256 divisor = _mm256_set1_ps(static_cast<float>(std::max(count, 1u)));
        const __m256i keep_old = _mm256_set1_epi16(replace ? -1 : 0);
        for (; i + kLane <= frame.size(); i += kLane) {
            const __m256i sample = Load(frame.data() + i);
            const __m256i old = _mm256_and_si256(Load(slot.data() + i), keep_old);
            const auto sum = [&](std::size_t at, __m128i add, __m128i subtract) {
                const __m256i change = _mm256_sub_epi32(_mm256_cvtepu16_epi32(add), _mm256_cvtepu16_epi32(subtract));
                const __m256i total = _mm256_add_epi32(Load(sums.data() + at), change);
                Store(sums.data() + at, total);
                return total;
            };
            const __m256i low = sum(i, _mm256_castsi256_si128(sample), _mm256_castsi256_si128(old));
            const __m256i high = sum(i + 8, _mm256_extracti128_si256(sample, 1), _mm256_extracti128_si256(old, 1));
            Store(slot.data() + i, sample);
            if (count < 2) continue;
            const auto mean = [&](__m256i total) {
                return _mm256_cvttps_epi32(_mm256_div_ps(_mm256_cvtepi32_ps(total), divisor));
            };
            Store(frame.data() + i, Narrow(mean(low), mean(high)));
        }
    }
    scalar::AverageStep(frame.subspan(i), slot.subspan(i), sums.subspan(i), count, replace);
}

template <class Fetch>
constexpr KernelTable MakeTable(Variant variant, const char* name) {
    return {
        .variant = variant,
        .name = name,
        .unpack12 = Unpack12,
        .reorder_row_two_taps = ReorderRowTwoTaps,
        .unpack_row_two_taps = UnpackRowTwoTaps,
        .reorder_row_pair_four_taps = ReorderRowPairFourTaps,
        .unpack_row_pair_four_taps = UnpackRowPairFourTaps,
        .look_up = LookUp<Fetch>,
        .look_up_by_lines = LookUpByLines<Fetch>,
        .bin = Bin,
        .average_step = AverageStep,
        .all_bits = AllBits,
        .demosaic_row = DemosaicRow,
        .transform_row = TransformRow<Fetch>,
        .pack_row = PackRow,
        .transform_pack_row = TransformPackRow<Fetch>,
        .map_samples = MapSamples<Fetch>,
        .color_row = ColorRow<Fetch>,
    };
}

const KernelTable kTable = MakeTable<Gathers>(Variant::kAvx2, "AVX2");
const KernelTable kTableWithoutGathers = MakeTable<Inserts>(Variant::kAvx2WithoutGathers, "AVX2 without gathers");

}  // namespace zel::kernels::avx2

ZEL_AVX2_END
