#include "devices/sim/scene/Digits.h"

#include <array>
#include <cstdint>

namespace zel::sim {
namespace {

// Seven rows of five dots, the leftmost dot in bit 4.
constexpr std::array<std::array<std::uint8_t, 7>, 10> kGlyphs{{
    {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E},
    {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E},
    {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F},
    {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E},
    {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02},
    {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E},
    {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E},
    {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08},
    {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E},
    {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C},
}};

}  // namespace

double DigitsWidth(std::string_view text) {
    return text.empty() ? 0.0 : static_cast<double>(text.size() - 1) * kDigitAdvance + kDigitWidth;
}

bool OnDigits(std::string_view text, double x, double y) {
    if (x < 0.0 || y < 0.0 || y >= kDigitHeight || x >= DigitsWidth(text)) return false;
    const auto index = static_cast<std::size_t>(x / kDigitAdvance);
    const int column = static_cast<int>(x - static_cast<double>(index) * kDigitAdvance);
    const char digit = text[index];
    if (column >= 5 || digit < '0' || digit > '9') return false;
    const int row = kGlyphs[static_cast<std::size_t>(digit - '0')][static_cast<std::size_t>(y)];
    return (row >> (4 - column) & 1) != 0;
}

}  // namespace zel::sim
