#include "tools/zelcam/record/RecordPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>

namespace zelcam {

namespace {

constexpr double kMost = 1e18;

struct Unit {
    const char* name;
    double bytes;
    double seconds;
};
constexpr Unit kUnits[] = {{"kb", 1e3, 0.0}, {"mb", 1e6, 0.0}, {"gb", 1e9, 0.0},   {"tb", 1e12, 0.0},
                           {"b", 1.0, 0.0},  {"s", 0.0, 1.0},  {"min", 0.0, 60.0}, {"h", 0.0, 3600.0}};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

}  // namespace

bool ParseAmount(const std::string& text, Amount& amount) {
    amount = {};
    const std::size_t digits = std::min(text.find_first_not_of("0123456789."), text.size());
    double number = 0.0;
    try {
        std::size_t used = 0;
        number = std::stod(text.substr(0, digits), &used);
        if (used != digits) return false;
    } catch (const std::exception&) {
        return false;
    }
    std::string unit = Lower(text.substr(digits));
    unit.erase(0, unit.find_first_not_of(' '));
    if (!(number > 0.0) || number > kMost) return false;
    if (unit.empty()) {
        amount.frames = static_cast<std::uint64_t>(number);
        return static_cast<double>(amount.frames) == number;
    }
    const auto* const known =
        std::find_if(std::begin(kUnits), std::end(kUnits), [&](const Unit& u) { return unit == u.name; });
    if (known == std::end(kUnits) || number * known->bytes > kMost) return false;
    amount.bytes = static_cast<std::uint64_t>(number * known->bytes);
    amount.seconds = number * known->seconds;
    return amount.bytes > 0 || amount.seconds > 0.0;
}

std::string SizeText(std::uint64_t bytes) {
    constexpr const char* kNames[] = {"kB", "MB", "GB", "TB"};
    double value = static_cast<double>(bytes) / 1e3;
    std::size_t name = 0;
    for (; value >= 999.5 && name < 3; ++name) value /= 1e3;
    return fmt::format("{:.1f} {}", value, kNames[name]);
}

std::string DurationText(double seconds) {
    if (seconds < 99.5) return fmt::format("{:.0f} s", seconds);
    if (seconds < 5970.0) return fmt::format("{:.0f} min", seconds / 60.0);
    return fmt::format("{:.0f} h", seconds / 3600.0);
}

}  // namespace zelcam
