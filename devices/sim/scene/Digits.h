// Digits made of dots, for the scales of the built-in scene.
#ifndef SIM_DIGITS_H
#define SIM_DIGITS_H

#include <string_view>

namespace zel::sim {

constexpr double kDigitWidth = 5.0;    // dots
constexpr double kDigitAdvance = 6.0;  // from one digit to the next
constexpr double kDigitHeight = 7.0;

double DigitsWidth(std::string_view text);

// True when the point (x, y), in dots from the top-left corner of the text, is on a digit.
bool OnDigits(std::string_view text, double x, double y);

}  // namespace zel::sim

#endif
