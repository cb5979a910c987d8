#include "devices/sim/scene/WedgeCard.h"

#include <array>
#include <cmath>
#include <span>
#include <string_view>

#include "devices/sim/scene/Digits.h"

namespace zel::sim {
namespace {

struct Mark {
    double frequency;  // hundreds of lines per 1000 units
    std::string_view text;
};

// Seen with the lines running downwards, coarse end on top.
struct Wedge {
    double middle;  // of the lines
    double lines;   // dark and light ones between the outer two, which are dark
    double coarse;  // frequency at the top
    double fine;    // and at the bottom
    double scale;   // where the marks begin
    std::span<const Mark> marks;

    double WidthAt(double t) const { return Breadth(coarse) + (Breadth(fine) - Breadth(coarse)) * t; }
    double PlaceOf(double frequency) const {
        return (Breadth(frequency) - Breadth(coarse)) / (Breadth(fine) - Breadth(coarse));
    }
    double Breadth(double frequency) const { return 10.0 * lines / frequency; }
};

constexpr double kTop = 22.0;
constexpr double kLength = 196.0;
constexpr double kDot = 1.5;         // of the digits
constexpr double kMarkReach = 15.0;  // no number stands out further from its tick
constexpr std::array<Mark, 5> kCoarseMarks{{{1.0, "1"}, {2.0, "2"}, {3.0, "3"}, {4.0, "4"}, {6.0, "6"}}};
constexpr std::array<Mark, 6> kFineMarks{{{4.0, "4"}, {5.0, "5"}, {6.0, "6"}, {8.0, "8"}, {11.0, "11"}, {20.0, "20"}}};
constexpr std::array<Wedge, 2> kWedges{
    {{66.0, 9.0, 1.0, 6.0, 116.0, kCoarseMarks}, {176.0, 17.0, 4.0, 20.0, 204.0, kFineMarks}}};

bool OnLine(const Wedge& wedge, double x, double t) {
    if (t < 0.0 || t >= 1.0) return false;
    const double u = (x - wedge.middle) / wedge.WidthAt(t) + 0.5;
    return u >= 0.0 && u < 1.0 && static_cast<int>(u * wedge.lines) % 2 == 0;
}

// x runs away from the wedge, y along it. The digits stay upright when the card lies across.
bool OnMark(const Wedge& wedge, double x, double y, bool across) {
    if (x < wedge.scale || x > wedge.scale + 35.0) return false;
    for (const Mark& mark : wedge.marks) {
        const double dx = x - wedge.scale;
        const double dy = y - (kTop + kLength * wedge.PlaceOf(mark.frequency));
        if (dx < 6.0 && std::fabs(dy) < 0.8) return true;
        if (std::fabs(dy) > kMarkReach) continue;
        const double width = DigitsWidth(mark.text) * kDot;
        const double height = kDigitHeight * kDot;
        const bool digit = across ? OnDigits(mark.text, (dy + width / 2) / kDot, (dx - 9.0) / kDot)
                                  : OnDigits(mark.text, (dx - 9.0) / kDot, (dy + height / 2) / kDot);
        if (digit) return true;
    }
    return false;
}

}  // namespace

Rgb WedgeCard::At(double x, double y) const {
    const double u = m_Across ? y : x;
    const double v = m_Across ? x : y;
    const double t = (v - kTop) / kLength;
    for (const Wedge& wedge : kWedges) {
        if (OnLine(wedge, u, t) || OnMark(wedge, u, v, m_Across)) return Paint(true);
    }
    return Paint(false);
}

}  // namespace zel::sim
