#include "util/LiteralDeflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "util/HuffmanLengths.h"

namespace zel {

namespace {

// A block:
//
//   | last 1 | type 2: 2 | HLIT 5: 257 codes | HDIST 5: 1 code | HCLEN 4: 19 lengths |
//   | 19 lengths of 3 bits: 0 0 0, then 4 sixteen times, so that a code length is written as 4 bits |
//   | 257 code lengths of literals and the end mark | 1 length of the distance code, unused |
//   | codes of the bytes | end mark |
constexpr unsigned kLengthBits = 4;
constexpr std::size_t kBlockHeadBits = 3 + 5 + 5 + 4 + 19 * 3 + (kLiteralSymbols + 1) * kLengthBits;
constexpr std::size_t kStreamFrameSize = 2 + 4;
static_assert(4 * kMaxLiteralLength <= BitWriter::kRoom, "two pairs fit the writer's word");

std::uint32_t LoadBigEndian(const std::uint8_t* bytes) {
    std::uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return __builtin_bswap32(word);
}

// Counts of bytes, with a table for each byte of a word: a run of one value would wait for its own last count.
class ByteCounter {
  public:
    void Add(std::span<const std::uint8_t> data) {
        std::size_t i = 0;
        for (; i + 8 <= data.size(); i += 8) {
            std::uint64_t word;
            std::memcpy(&word, &data[i], sizeof word);
            for (unsigned k = 0; k < 8; ++k) ++m_Counts[k][word >> 8 * k & 0xFF];
        }
        for (; i < data.size(); ++i) ++m_Counts[0][data[i]];
    }
    LiteralCounts Sum() const {
        LiteralCounts sum{};
        for (const auto& table : m_Counts) {
            for (std::size_t k = 0; k < 256; ++k) sum[k] += table[k];
        }
        sum[kEndMark] = 1;
        return sum;
    }

  private:
    std::array<std::array<std::uint32_t, 256>, 8> m_Counts{};
};

LiteralCounts CountLiterals(std::span<const std::uint8_t> data) {
    ByteCounter counter;
    counter.Add(data);
    return counter.Sum();
}

// Counts in a quarter of the bytes, made up to what the whole has: of every four stretches one, chosen by chance, since
// a picture may repeat itself from row to row. Each value gets one count more: it may occur in the rest.
LiteralCounts EstimateLiterals(std::span<const std::uint8_t> data) {
    constexpr std::size_t kStretch = 128;
    constexpr std::uint32_t kShare = 4;
    ByteCounter counter;
    std::uint32_t chance = 0;
    for (std::size_t at = 0; at + kShare * kStretch <= data.size(); at += kShare * kStretch) {
        chance = chance * 1664525u + 1013904223u;
        counter.Add(data.subspan(at + (chance >> 30) * kStretch, kStretch));
    }
    LiteralCounts counts = counter.Sum();
    for (std::size_t i = 0; i < 256; ++i) counts[i] = counts[i] * kShare + 1;
    return counts;
}

std::size_t BlockBits(const LiteralCounts& counts, const LiteralLengths& lengths) {
    std::size_t bits = kBlockHeadBits;
    for (std::size_t i = 0; i < kLiteralSymbols; ++i) bits += std::size_t{counts[i]} * lengths[i];
    return bits;
}

void PutHead(BitWriter& out, const LiteralLengths& lengths, bool last) {
    out.Put(last ? 1 : 0, 1);
    out.Put(2, 2);
    out.Put(kLiteralSymbols - 257, 5);
    out.Put(0, 5);
    out.Put(19 - 4, 4);
    for (unsigned i = 0; i < 19; ++i) {
        out.Put(i < 3 ? 0 : kLengthBits, 3);
        out.Flush();
    }
    for (std::uint8_t length : lengths) {
        out.Put(ReversedBits(length, kLengthBits), kLengthBits);
        out.Flush();
    }
    out.Put(ReversedBits(1, kLengthBits), kLengthBits);
    out.Flush();
}

// Two pairs become one write. Takes and answers the writer by value: its words then stay in registers, which a stored
// byte can't change.
BitWriter PutPairs(BitWriter out, const LiteralPairs& pairs, const LiteralCodes& codes,
                   std::span<const std::uint8_t> data) {
    constexpr std::uint32_t kLengthMask = (1u << kPairLengthBits) - 1;
    std::size_t i = 0;
    for (; i + 4 <= data.size(); i += 4) {
        const std::uint32_t word = LoadBigEndian(&data[i]);
        const std::uint32_t one = pairs[word >> 16], two = pairs[word & 0xFFFF];
        out.Put(std::uint64_t{one} >> kPairLengthBits | (std::uint64_t{two} >> kPairLengthBits) << (one & kLengthMask),
                (one & kLengthMask) + (two & kLengthMask));
        out.Flush();
    }
    for (; i < data.size(); ++i) {
        out.Put(codes[data[i]].bits, codes[data[i]].length);
        out.Flush();
    }
    return out;
}

}  // namespace

std::size_t LiteralBlockSize(std::span<const std::uint8_t> data) {
    const LiteralCounts counts = CountLiterals(data);
    return (BlockBits(counts, MakeLiteralLengths(counts)) + 7) / 8;
}

void LiteralStream::Begin(std::span<std::uint8_t> out) {
    m_Begin = nullptr;
    m_Checksum = 1;
    if (out.size() < kStreamFrameSize + BitWriter::kSlack) return;
    m_Begin = out.data();
    m_RoomBits = (out.size() - 4 - BitWriter::kSlack) * 8;
    out[0] = 0x78;
    out[1] = 0x01;
    m_Writer = BitWriter(out.data() + 2);
}

bool LiteralStream::Put(std::span<const std::uint8_t> data, std::size_t row_size, bool last) {
    if (!m_Begin || data.empty() || row_size == 0) return false;
    const std::size_t room = m_RoomBits - m_Writer.BitsSince(m_Begin);
    // Counting takes half as long as writing: codes come of an estimate unless the block is too small for one, or is to
    // be as short as can be.
    const bool fits = kBlockHeadBits + (data.size() + 1) * kMaxLiteralLength <= room;
    const bool estimate = fits && data.size() >= kBlockSize / 4;
    const LiteralCounts counts = estimate ? EstimateLiterals(data) : CountLiterals(data);
    const LiteralLengths lengths = MakeLiteralLengths(counts);
    if (!fits && BlockBits(counts, lengths) > room) return false;
    m_Writer = PutBlock(lengths, data, row_size, last);
    m_Checksum = libdeflate_adler32(m_Checksum, data.data(), data.size());
    return true;
}

// Answers the writer behind the block; the object's own stays where it is.
BitWriter LiteralStream::PutBlock(const LiteralLengths& lengths, std::span<const std::uint8_t> data,
                                  std::size_t row_size, bool last) {
    const LiteralCodes codes = MakeLiteralCodes(lengths);
    MakeLiteralPairs(codes, m_Pairs);
    BitWriter out = m_Writer;
    PutHead(out, lengths, last);
    while (!data.empty()) {
        out.Put(codes[data[0]].bits, codes[data[0]].length);
        out.Flush();
        const std::size_t row = std::min(row_size, data.size());
        out = PutPairs(out, m_Pairs, codes, data.first(row).subspan(1));
        data = data.subspan(row);
    }
    out.Put(codes[kEndMark].bits, codes[kEndMark].length);
    out.Flush();
    return out;
}

std::size_t LiteralStream::End() {
    std::uint8_t* end = m_Writer.End();
    for (int shift = 24; shift >= 0; shift -= 8) *end++ = static_cast<std::uint8_t>(m_Checksum >> shift);
    return static_cast<std::size_t>(end - m_Begin);
}

}  // namespace zel
