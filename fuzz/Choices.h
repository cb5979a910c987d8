// An input that chooses: numbers between bounds, of as few bytes as they take, and others that follow from those.
#ifndef FUZZ_CHOICES_H
#define FUZZ_CHOICES_H

#include <cstdint>
#include <span>

#include "fuzz/Input.h"

namespace zel::fuzz {

class Choices {
  public:
    Choices(const std::uint8_t* data, std::size_t size) : m_Input(data, size) {}

    bool Ended() const { return m_Input.Ended(); }
    std::uint8_t Byte() {
        const unsigned byte = m_Input.Byte();
        m_State = (m_State ^ byte) * 0x9E3779B97F4A7C15u;
        return static_cast<std::uint8_t>(byte);
    }
    bool Flag() { return Byte() & 1; }
    std::uint32_t Number(std::uint32_t low, std::uint32_t high) {
        std::uint64_t value = Byte();
        for (std::uint64_t most = 0xFF; most < high - low; most = most << 8 | 0xFF) value = value << 8 | Byte();
        return low + static_cast<std::uint32_t>(value % (std::uint64_t{high} - low + 1));
    }
    std::uint16_t Sample() { return static_cast<std::uint16_t>(Number(0, 0xFFFF)); }
    // Takes no byte.
    std::uint32_t Random() {
        m_State ^= m_State << 13;
        m_State ^= m_State >> 7;
        m_State ^= m_State << 17;
        return static_cast<std::uint32_t>(m_State >> 32);
    }
    std::span<const std::uint8_t> Rest() { return m_Input.Rest(); }

  private:
    Input m_Input;
    std::uint64_t m_State = 0x2545F4914F6CDD1D;
};

}  // namespace zel::fuzz

#endif
