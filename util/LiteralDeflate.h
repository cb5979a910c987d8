// A second way to a zlib stream: Huffman codes of single bytes, without a search for repetitions. Sensor noise hardly
// repeats itself, so that its stream gets as short this way, many times faster.
#ifndef UTIL_LITERALDEFLATE_H
#define UTIL_LITERALDEFLATE_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "util/BitWriter.h"
#include "util/LiteralCodes.h"

namespace zel {

// How many bytes `data` takes as one block of literals, its head included.
std::size_t LiteralBlockSize(std::span<const std::uint8_t> data);

// A zlib stream that is written block by block:
//
//   | 78 01 | block | ... | last block | Adler-32, big-endian, 4 bytes |
class LiteralStream {
  public:
    // Blocks of about this size are worth their head and their table of pairs, and still stay in the cache.
    static constexpr std::size_t kBlockSize = std::size_t{256} << 10;

    // Starts a stream in `out`.
    void Begin(std::span<std::uint8_t> out);
    // Appends `data` as a block. It consists of rows of `row_size` bytes, a single one and pairs, which is what decides
    // about speed alone. False when there is no room for it.
    bool Put(std::span<const std::uint8_t> data, std::size_t row_size, bool last);
    // Answers the stream's length.
    std::size_t End();

  private:
    BitWriter PutBlock(const LiteralLengths& lengths, std::span<const std::uint8_t> data, std::size_t row_size,
                       bool last);

    std::uint8_t* m_Begin = nullptr;
    std::size_t m_RoomBits = 0;
    std::uint32_t m_Checksum = 1;
    BitWriter m_Writer;
    LiteralPairs m_Pairs;
};

}  // namespace zel

#endif
