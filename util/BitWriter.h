// Bits into bytes, from the lowest bit of each byte upwards.
#ifndef UTIL_BITWRITER_H
#define UTIL_BITWRITER_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zel {

// Stores whole words: up to kSlack bytes behind what was written are overwritten.
class BitWriter {
  public:
    static constexpr unsigned kSlack = 8;
    // At most 7 bits are left over by a Flush, so this many more fit.
    static constexpr unsigned kRoom = 64 - 7;

    BitWriter() = default;
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
    std::size_t BitsSince(const std::uint8_t* begin) const {
        return static_cast<std::size_t>(m_Out - begin) * 8 + m_Count;
    }
    // Fills the last byte up and answers what follows it.
    std::uint8_t* End() {
        m_Count += 7;
        Flush();
        return m_Out;
    }

  private:
    static_assert(std::endian::native == std::endian::little);
    std::uint8_t* m_Out = nullptr;
    std::uint64_t m_Word = 0;
    unsigned m_Count = 0;
};

}  // namespace zel

#endif
