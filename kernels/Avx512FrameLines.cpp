// Lookup by lines with AVX-512: 64 samples find their lines in registers, byte by byte.
#include <algorithm>

#include "kernels/Avx2Kernels.h"
#include "kernels/Avx512Frame.h"
#include "kernels/Avx512FrameVectors.h"
#include "kernels/CpuSupport.h"
#include "kernels/ScalarKernels.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

namespace {
constexpr std::size_t kStep = 2 * kLane;
constexpr std::size_t kStretch = 4 * kStep;  // where one sample's line is marked, its neighbours' often are

// One byte of the lines of all blocks, for the first and the second line.
struct Bytes {
    __m512i first, second;

    Bytes(const std::uint8_t* from_first, const std::uint8_t* from_second)
        : first(Load(from_first)), second(Load(from_second)) {}
    __m512i Of(__m512i block, __mmask64 is_second) const {
        return _mm512_mask_permutexvar_epi8(_mm512_permutexvar_epi8(block, first), is_second, block, second);
    }
};

class Lines {
  public:
    explicit Lines(const LineTable& table)
        : m_Last(Load(table.last)),
          m_WholeLow(table.lines[0].whole_low, table.lines[1].whole_low),
          m_WholeHigh(table.lines[0].whole_high, table.lines[1].whole_high),
          m_Fraction(table.lines[0].fraction, table.lines[1].fraction),
          m_SlopeLow(table.lines[0].slope_low, table.lines[1].slope_low),
          m_SlopeHigh(table.lines[0].slope_high, table.lines[1].slope_high),
          m_Largest(Words((1 << table.bits) - 1)),
          m_ToBlock(Words(static_cast<int>(table.bits - LineTable::kBlockBits))),
          m_ToPlace(Words(static_cast<int>(16 + LineTable::kBlockBits - table.bits))) {}

    // Replaces two vectors of samples by their entries. Tells for which of them a line is marked: their entries mean
    // nothing. Packing and unpacking both go by quarters of the vectors, so that the samples come out in their order;
    // the marks' places are SampleOf().
    __mmask64 Apply(__m512i& a, __m512i& b) const {
        const __m512i sample_a = _mm512_and_si512(a, m_Largest);
        const __m512i sample_b = _mm512_and_si512(b, m_Largest);
        const __m512i place_a = _mm512_sllv_epi16(a, m_ToPlace);
        const __m512i place_b = _mm512_sllv_epi16(b, m_ToPlace);
        const __m512i block =
            _mm512_packus_epi16(_mm512_srlv_epi16(sample_a, m_ToBlock), _mm512_srlv_epi16(sample_b, m_ToBlock));
        const __m512i place = _mm512_packus_epi16(_mm512_srli_epi16(place_a, 8), _mm512_srli_epi16(place_b, 8));
        const __mmask64 second = _mm512_cmpgt_epu8_mask(place, _mm512_permutexvar_epi8(block, m_Last));

        const __m512i slope_high = m_SlopeHigh.Of(block, second);
        const __m512i slope_low = m_SlopeLow.Of(block, second);
        const __m512i fraction = m_Fraction.Of(block, second);
        const __m512i whole_low = m_WholeLow.Of(block, second);
        const __m512i whole_high = m_WholeHigh.Of(block, second);
        const __m512i zero = _mm512_setzero_si512();
        a = Entries(sample_a, place_a, _mm512_unpacklo_epi8(slope_low, slope_high),
                    _mm512_unpacklo_epi8(fraction, zero), _mm512_unpacklo_epi8(whole_low, whole_high));
        b = Entries(sample_b, place_b, _mm512_unpackhi_epi8(slope_low, slope_high),
                    _mm512_unpackhi_epi8(fraction, zero), _mm512_unpackhi_epi8(whole_low, whole_high));
        return _mm512_cmpeq_epi8_mask(slope_high, _mm512_set1_epi8(static_cast<char>(LineTable::kMark)));
    }
    static std::size_t SampleOf(unsigned mark) { return (mark & 8 ? kLane : 0) + mark / 16 * 8 + mark % 8; }

  private:
    __m512i Entries(__m512i sample, __m512i place, __m512i slope, __m512i fraction, __m512i whole) const {
        const __m512i rise = _mm512_mulhi_epi16(slope, _mm512_xor_si512(place, Words(0x8000)));
        const __m512i change = _mm512_srai_epi16(_mm512_add_epi16(rise, fraction), LineTable::kFractionBits);
        return _mm512_min_epu16(_mm512_add_epi16(_mm512_add_epi16(sample, whole), change), m_Largest);
    }

    __m512i m_Last;
    Bytes m_WholeLow, m_WholeHigh, m_Fraction, m_SlopeLow, m_SlopeHigh;
    __m512i m_Largest, m_ToBlock, m_ToPlace;
};
// The entries of samples whose lines are marked, when there are few of them.
class Marked {
  public:
    static constexpr int kMost = 8;  // more are left to others

    Marked(__mmask64 marks, const std::uint16_t* samples, const std::uint16_t* table, unsigned mask) {
        for (std::uint64_t left = marks; left != 0; left &= left - 1) {
            const std::size_t at = Lines::SampleOf(static_cast<unsigned>(__builtin_ctzll(left)));
            m_At[m_Count] = at;
            m_Entries[m_Count++] = table[samples[at] & mask];
        }
    }
    void Put(std::uint16_t* samples) const {
        for (int i = 0; i < m_Count; ++i) samples[m_At[i]] = m_Entries[i];
    }

  private:
    int m_Count = 0;
    std::size_t m_At[kMost];
    std::uint16_t m_Entries[kMost];
};

// Whole steps, up to the first one with more than a few marked lines. Returns the number of samples done.
std::size_t LookUpUntilMarked(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable& told,
                              unsigned mask) {
    const Lines lines(told);
    std::size_t i = 0;
    for (; i + kStep <= samples.size(); i += kStep) {
        std::uint16_t* const at = samples.data() + i;
        __m512i a = Load(at), b = Load(at + kLane);
        const __mmask64 marks = lines.Apply(a, b);
        if (marks == 0) [[likely]] {
            Store(at, a);
            Store(at + kLane, b);
            continue;
        }
        if (__builtin_popcountll(marks) > Marked::kMost) break;
        const Marked marked(marks, at, table, mask);
        Store(at, a);
        Store(at + kLane, b);
        marked.Put(at);
    }
    return i;
}
}  // namespace

void LookUpByLines(std::span<std::uint16_t> samples, const std::uint16_t* table, const LineTable& lines,
                   std::uint16_t index_mask, std::uint16_t value_mask) {
    static const auto exact = CpuHasFastGathers() ? avx2::kTable.look_up : avx2::kTableWithoutGathers.look_up;
    if (!lines.Usable() || (value_mask & index_mask) != index_mask) {
        return exact(samples, table, index_mask, value_mask);
    }
    while (!samples.empty()) {
        samples = samples.subspan(LookUpUntilMarked(samples, table, lines, index_mask));
        if (samples.size() < kStep) break;
        const std::span marked = samples.first(std::min(kStretch, samples.size()));
        exact(marked, table, index_mask, value_mask);
        samples = samples.subspan(marked.size());
    }
    if (samples.empty()) return;
    std::uint16_t rest[kStep]{};
    std::ranges::copy(samples, rest);
    if (LookUpUntilMarked(rest, table, lines, index_mask) == 0) return exact(samples, table, index_mask, value_mask);
    std::copy_n(rest, samples.size(), samples.data());
}

}  // namespace zel::kernels::avx512

ZEL_AVX512_END
