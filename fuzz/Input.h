// What a target reads out of its input, piece by piece; behind the end everything is 0 or empty. And what every target
// checks with.
#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzCheck.h"

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

}  // namespace zel::fuzz

#endif
