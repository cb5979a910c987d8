#include "util/LiteralDeflate.h"

#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "util/HuffmanLengths.h"

namespace zel {

namespace {

// A zlib stream here:
//
//   | 78 01 | block | ... | last block | Adler-32, big-endian, 4 bytes |
//
// A block, bits from the lowest of each byte upwards:
//
//   | last 1 | type 2: 2 | HLIT 5: 257 codes | HDIST 5: 1 code | HCLEN 4: 19 lengths |
//   | 19 lengths of 3 bits: 0 0 0, then 4 sixteen times, so that a code length is written as 4 bits |
//   | 257 code lengths of literals and the end mark | 1 length of the distance code, unused |
//   | codes of the bytes | end mark |
constexpr std::size_t kBlockSize = std::size_t{128} << 10;
constexpr unsigned kLengthBits = 4;
constexpr std::size_t kBlockHeadBits = 3 + 5 + 5 + 4 + 19 * 3 + (kLiteralSymbols + 1) * kLengthBits;
constexpr std::size_t kStreamFrameSize = 2 + 4;
constexpr std::size_t kWriteSlack = 8;  // the writer stores whole words
static_assert(4 * kMaxLiteralLength + 7 < 64, "four codes and the bits left over fit the writer's word");

class BitWriter {
  public:
    explicit BitWriter(std::uint8_t* out) : m_Out(out) {}

    void Put(std::uint64_t bits, unsigned count) {
        m_Word |= bits << m_Count;
        m_Count += count;
    }
    // Stores the whole bytes; at most 7 bits stay.
    void Flush() {
        std::memcpy(m_Out, &m_Word, sizeof m_Word);
        m_Out += m_Count / 8;
        m_Word >>= m_Count & ~7u;
        m_Count &= 7u;
    }
    std::uint8_t* End() {
        m_Count += 7;
        Flush();
        return m_Out;
    }

  private:
    static_assert(std::endian::native == std::endian::little);
    std::uint8_t* m_Out;
    std::uint64_t m_Word = 0;
    unsigned m_Count = 0;
};

// Codes are written from their highest bit on.
unsigned Reversed(unsigned code, unsigned length) {
    unsigned reversed = 0;
    for (unsigned i = 0; i < length; ++i) reversed |= (code >> i & 1u) << (length - 1 - i);
    return reversed;
}

LiteralCounts CountLiterals(std::span<const std::uint8_t> data) {
    // Two tables: a run of one value would wait for its own last count.
    std::array<std::array<std::uint32_t, 256>, 2> counts{};
    for (std::size_t i = 0; i < data.size(); ++i) ++counts[i & 1][data[i]];
    LiteralCounts sum{};
    for (std::size_t i = 0; i < 256; ++i) sum[i] = counts[0][i] + counts[1][i];
    sum[kEndMark] = 1;
    return sum;
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
        out.Put(Reversed(length, kLengthBits), kLengthBits);
        out.Flush();
    }
    out.Put(Reversed(1, kLengthBits), kLengthBits);
    out.Flush();
}

struct Code {
    std::uint16_t bits;
    std::uint16_t length;
};
using Codes = std::array<Code, kLiteralSymbols>;

// Shorter codes come first, and among codes of one length those of smaller symbols.
Codes MakeCodes(const LiteralLengths& lengths) {
    Codes codes{};
    unsigned next = 0;
    for (unsigned length = 1; length <= kMaxLiteralLength; ++length) {
        for (std::size_t i = 0; i < kLiteralSymbols; ++i) {
            if (lengths[i] != length) continue;
            codes[i] = {static_cast<std::uint16_t>(Reversed(next, length)), static_cast<std::uint16_t>(length)};
            ++next;
        }
        next <<= 1;
    }
    return codes;
}

// Takes the writer by value: its words then stay in registers, which a stored byte can't change.
BitWriter PutBytes(BitWriter out, const Codes& codes, std::span<const std::uint8_t> data) {
    std::size_t i = 0;
    for (; i + 4 <= data.size(); i += 4) {
        for (std::size_t k = 0; k < 4; ++k) out.Put(codes[data[i + k]].bits, codes[data[i + k]].length);
        out.Flush();
    }
    for (; i < data.size(); ++i) out.Put(codes[data[i]].bits, codes[data[i]].length);
    out.Flush();
    out.Put(codes[kEndMark].bits, codes[kEndMark].length);
    out.Flush();
    return out;
}

}  // namespace

std::size_t LiteralBlockSize(std::span<const std::uint8_t> data) {
    const LiteralCounts counts = CountLiterals(data);
    return (BlockBits(counts, MakeLiteralLengths(counts)) + 7) / 8;
}

std::size_t LiteralZlibCompress(std::span<const std::uint8_t> data, std::span<std::uint8_t> out) {
    if (data.empty() || out.size() < kStreamFrameSize + kWriteSlack) return 0;
    out[0] = 0x78;
    out[1] = 0x01;
    BitWriter writer(out.data() + 2);
    std::size_t bits = 0;  // of the blocks so far
    const std::size_t room = (out.size() - kStreamFrameSize - kWriteSlack) * 8;
    for (std::size_t at = 0; at < data.size(); at += kBlockSize) {
        const auto block = data.subspan(at, std::min(kBlockSize, data.size() - at));
        const LiteralCounts counts = CountLiterals(block);
        const LiteralLengths lengths = MakeLiteralLengths(counts);
        const std::size_t block_bits = BlockBits(counts, lengths);
        if (block_bits > room - bits) return 0;
        bits += block_bits;
        PutHead(writer, lengths, at + block.size() == data.size());
        writer = PutBytes(writer, MakeCodes(lengths), block);
    }
    std::uint8_t* end = writer.End();
    const std::uint32_t checksum = libdeflate_adler32(1, data.data(), data.size());
    for (int shift = 24; shift >= 0; shift -= 8) *end++ = static_cast<std::uint8_t>(checksum >> shift);
    return static_cast<std::size_t>(end - out.data());
}

}  // namespace zel
