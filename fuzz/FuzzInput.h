// An input read as numbers: bytes choose what they are asked for, in turn; at the end everything is the least there is.
#ifndef FUZZ_FUZZINPUT_H
#define FUZZ_FUZZINPUT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace zel::fuzz {

class FuzzInput {
  public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_Data(data), m_Size(size) {}

    bool Empty() const { return m_At == m_Size; }
    std::uint8_t Byte() {
        const std::uint8_t byte = Empty() ? 0 : m_Data[m_At++];
        m_State = (m_State ^ byte) * 0x9E3779B97F4A7C15u;
        return byte;
    }
    bool Flag() { return Byte() & 1; }
    // From low to high, of as few bytes as that takes.
    std::uint32_t Number(std::uint32_t low, std::uint32_t high) {
        std::uint64_t value = Byte();
        for (std::uint64_t most = 0xFF; most < high - low; most = most << 8 | 0xFF) value = value << 8 | Byte();
        return low + static_cast<std::uint32_t>(value % (std::uint64_t{high} - low + 1));
    }
    std::uint16_t Sample() { return static_cast<std::uint16_t>(Number(0, 0xFFFF)); }
    // Takes no byte: a number that follows from those before.
    std::uint32_t Random() {
        m_State ^= m_State << 13;
        m_State ^= m_State >> 7;
        m_State ^= m_State << 17;
        return static_cast<std::uint32_t>(m_State >> 32);
    }
    std::span<const std::uint8_t> Rest() const { return {m_Data + m_At, m_Size - m_At}; }

  private:
    const std::uint8_t* m_Data;
    std::size_t m_Size;
    std::size_t m_At = 0;
    std::uint64_t m_State = 0x2545F4914F6CDD1D;
};

}  // namespace zel::fuzz

#endif
