// Binning and averaging with AVX-512.
#include <algorithm>
#include <iterator>

#include "kernels/Avx512Frame.h"
#include "kernels/Avx512FrameVectors.h"
#include "kernels/ScalarKernels.h"

ZEL_AVX512_BEGIN

namespace zel::kernels::avx512 {

namespace {
// What the rows of a column add up to, clamped to 65535. Sums that are clamped after each addition and sums that are
// clamped once at the end are the same, because no sample is negative.
template <unsigned rows>
__m512i ColumnSums(const std::uint16_t* source, std::size_t stride, unsigned more_rows) {
    __m512i sum = Load(source);
    for (unsigned row = 1; row < rows; ++row) sum = _mm512_adds_epu16(sum, Load(source + row * stride));
    for (unsigned row = rows; row < rows + more_rows; ++row) {
        sum = _mm512_adds_epu16(sum, Load(source + row * stride));
    }
    return sum;
}

__m512i PairSums(__m512i samples) {
    return _mm512_add_epi32(_mm512_srli_epi32(samples, 16), _mm512_and_si512(samples, _mm512_set1_epi32(0xFFFF)));
}

// The sums of pairs of 32-bit values: sixteen of two vectors.
__m512i WidePairSums(__m512i low, __m512i high) {
    const __m512i even = _mm512_set_epi32(30, 28, 26, 24, 22, 20, 18, 16, 14, 12, 10, 8, 6, 4, 2, 0);
    const __m512i odd = _mm512_add_epi32(even, _mm512_set1_epi32(1));
    return _mm512_add_epi32(_mm512_permutex2var_epi32(low, even, high), _mm512_permutex2var_epi32(low, odd, high));
}

// One output row from `rows` + `more_rows` source rows, by a horizontal factor of 1, 2 or 4. Returns the number of
// columns done.
template <unsigned horizontal, unsigned rows>
std::size_t BinRow(const std::uint16_t* source, std::size_t stride, unsigned more_rows, std::uint16_t* out,
                   std::size_t columns, __m512i ceiling) {
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
        __m512i binned;
        if constexpr (horizontal == 1) {
            binned = sums(at);
        } else if constexpr (horizontal == 2) {
            binned = Narrow(PairSums(sums(at)), PairSums(sums(at + kLane)));
        } else {
            const __m512i low = WidePairSums(PairSums(sums(at)), PairSums(sums(at + kLane)));
            const __m512i high = WidePairSums(PairSums(sums(at + 2 * kLane)), PairSums(sums(at + 3 * kLane)));
            binned = Narrow(low, high);
        }
        Store(out + column, _mm512_min_epu16(binned, ceiling));
    }
    return column;
}

// The common number of rows has code of its own.
template <unsigned horizontal>
std::size_t BinRow(const std::uint16_t* source, std::size_t stride, unsigned rows, std::uint16_t* out,
                   std::size_t columns, __m512i ceiling) {
    if (rows == 2) return BinRow<horizontal, 2>(source, stride, 0, out, columns, ceiling);
    return BinRow<horizontal, 1>(source, stride, rows - 1, out, columns, ceiling);
}

// Any horizontal factor: the sums of the columns go through a piece of the cache and are added up there. Returns the
// number of columns done; the last columns of the frame have no room for whole vectors.
std::size_t BinRowByPieces(const std::uint16_t* source, std::size_t stride, unsigned rows, unsigned horizontal,
                           std::uint16_t* out, std::size_t columns, unsigned ceiling) {
    std::uint16_t piece[16 * kLane];
    const std::size_t most = std::size(piece) / horizontal;  // columns in a piece
    std::size_t column = 0;
    for (;;) {
        const std::size_t whole = (columns - column) * horizontal / kLane * kLane;
        const std::size_t now = std::min(most, whole / horizontal);
        if (now == 0) return column;
        const std::size_t samples = (now * horizontal + kLane - 1) / kLane * kLane;
        const std::uint16_t* const from = source + column * horizontal;
        for (std::size_t i = 0; i < samples; i += kLane) Store(piece + i, ColumnSums<1>(from + i, stride, rows - 1));
        for (const std::uint16_t* at = piece; at < piece + now * horizontal; at += horizontal) {
            std::uint32_t sum = 0;
            for (unsigned k = 0; k < horizontal; ++k) sum += at[k];
            out[column++] = static_cast<std::uint16_t>(std::min(sum, ceiling));
        }
    }
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
    const __m512i clamp = Words(static_cast<int>(ceiling));
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
        if (column == 0) column = BinRowByPieces(source, w, count, horizontal, out, columns, ceiling);
        for (; column < columns; ++column) {
            out[column] = BinOne(source + column * horizontal, w, count, horizontal, ceiling);
        }
    }
}

// Divides by multiplying: with m = 2^32 / count, rounded up to the next whole number above, total * m / 2^32 is too
// large by total * count / 2^32 counts of the remainder at most, which does not reach the next quotient while count is
// below 256 and no sample above 65535.
void AverageStep(std::span<std::uint16_t> frame, std::span<std::uint16_t> slot, std::span<std::uint32_t> sums,
                 std::uint32_t count, bool replace) {
    constexpr std::uint32_t kLargestExact = 255;
    std::size_t i = 0;
    if (count <= kLargestExact) {
        const std::uint32_t inverse = count < 2 ? 0 : static_cast<std::uint32_t>((std::uint64_t{1} << 32) / count + 1);
        const __m512i factor = _mm512_set1_epi64(inverse);
        const __m512i keep_old = Words(replace ? -1 : 0);
        for (; i + kLane <= frame.size(); i += kLane) {
            const __m512i sample = Load(frame.data() + i);
            const __m512i old = _mm512_and_si512(Load(slot.data() + i), keep_old);
            const auto sum = [&](std::size_t at, __m256i add, __m256i subtract) {
                const __m512i change = _mm512_sub_epi32(_mm512_cvtepu16_epi32(add), _mm512_cvtepu16_epi32(subtract));
                const __m512i total = _mm512_add_epi32(Load(sums.data() + at), change);
                Store(sums.data() + at, total);
                return total;
            };
            const __m512i low = sum(i, _mm512_castsi512_si256(sample), _mm512_castsi512_si256(old));
            const __m512i high = sum(i + 16, _mm512_extracti64x4_epi64(sample, 1), _mm512_extracti64x4_epi64(old, 1));
            Store(slot.data() + i, sample);
            if (count < 2) continue;
            const auto mean = [&](__m512i total) {
                const __m512i even = _mm512_srli_epi64(_mm512_mul_epu32(total, factor), 32);
                const __m512i odd = _mm512_mul_epu32(_mm512_srli_epi64(total, 32), factor);
                return _mm512_mask_mov_epi32(even, 0xAAAA, odd);
            };
            Store(frame.data() + i, Narrow(mean(low), mean(high)));
        }
    }
    scalar::AverageStep(frame.subspan(i), slot.subspan(i), sums.subspan(i), count, replace);
}

}  // namespace zel::kernels::avx512

ZEL_AVX512_END
