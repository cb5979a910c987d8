// What a target reads out of its input, piece by piece; behind the end everything is 0 or empty. And what every target
// checks with.
#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Ends the program when something that holds for every input does not.
inline void FuzzCheck(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: this does not hold\n", file, line);
    std::abort();
}

namespace zel::fuzz {

class Input {
  public:
    Input() = default;
    explicit Input(std::span<const std::uint8_t> bytes) : m_Left(bytes) {}
    Input(const std::uint8_t* data, std::size_t size) : m_Left(data, size) {}

    bool Ended() const { return m_Left.empty(); }
    unsigned Byte() { return Ended() ? 0 : Take(1)[0]; }
    unsigned Below(unsigned count) { return Byte() % count; }
    // Small ones, those at the ends of the range, and any.
    int Number() {
        const unsigned kind = Byte();
        if (kind < 0xC0) return static_cast<int>(kind) - 2;
        std::uint32_t value = 0;
        for (const std::uint8_t byte : Take(kind & 3 ? 4 : 2)) value = value << 8 | byte;
        return static_cast<int>(kind < 0xF0 ? value : 0x80000000u - (kind & 3));
    }
    // As many bytes as the first one says.
    std::span<const std::uint8_t> Bytes() { return Take(Byte()); }
    std::string_view Text() { return AsText(Bytes()); }
    std::span<const std::uint8_t> Rest() { return Take(m_Left.size()); }
    std::string_view RestText() { return AsText(Rest()); }

  private:
    static std::string_view AsText(std::span<const std::uint8_t> bytes) {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto taken = m_Left.first(std::min(count, m_Left.size()));
        m_Left = m_Left.subspan(taken.size());
        return taken;
    }

    std::span<const std::uint8_t> m_Left;
};

// An input that chooses: numbers between bounds, of as few bytes as they take, and others that follow from those.
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
