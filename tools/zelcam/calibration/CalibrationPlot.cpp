#include "tools/zelcam/calibration/CalibrationPlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace zelcam {

namespace {

constexpr double kWidth = 720.0;
constexpr double kHeight = 440.0;
constexpr double kLeft = 70.0;
constexpr double kRight = 90.0;
constexpr double kTop = 40.0;
constexpr double kBottom = 56.0;
constexpr double kLineHeight = 15.0;
constexpr const char* kColors[] = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd"};

// From a range of values to a stretch of the picture, with round numbers for the ticks.
class Axis {
  public:
    Axis(double low, double high, double from, double to) : m_From(from), m_To(to) {
        const double span = std::max(high - low, 1e-3);
        const double decade = std::pow(10.0, std::floor(std::log10(span / 4.0)));
        const double ratio = span / 4.0 / decade;
        m_Step = decade * (ratio < 1.5 ? 1.0 : ratio < 3.5 ? 2.0 : ratio < 7.5 ? 5.0 : 10.0);
        m_Decimals = std::max(0, static_cast<int>(-std::floor(std::log10(m_Step) + 1e-9)));
        m_Low = std::floor(low / m_Step + 1e-9) * m_Step;
        m_Steps = std::max(1, static_cast<int>(std::ceil((high - m_Low) / m_Step - 1e-9)));
    }

    double Place(double value) const { return m_From + (value - m_Low) / (m_Steps * m_Step) * (m_To - m_From); }
    int Ticks() const { return m_Steps + 1; }
    double Tick(int number) const { return m_Low + number * m_Step; }
    std::string TickText(int number) const { return fmt::format("{:.{}f}", Tick(number), m_Decimals); }

  private:
    double m_From;
    double m_To;
    double m_Low = 0.0;
    double m_Step = 1.0;
    int m_Steps = 1;
    int m_Decimals = 0;
};

// What can be drawn of a number from a damaged table.
double Drawn(float value, float most) { return value >= 0.0f ? std::min(value, most) : 0.0; }
double DrawnGain(float gain) { return Drawn(gain, 2.0f); }
double DrawnLevel(const CalibrationRow& row) { return Drawn(row.millivolts, 5000.0f); }

std::string Coordinates(double x, double y) { return fmt::format("{:.1f},{:.1f}", x, y); }

std::string Line(double x1, double y1, double x2, double y2) {
    return fmt::format("<path d=\"M{}L{}\" stroke=\"#ddd\"/>\n", Coordinates(x1, y1), Coordinates(x2, y2));
}

std::string Label(double x, double y, const char* anchor, const std::string& text, const char* color = "#333") {
    return fmt::format("<text x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\" fill=\"{}\">{}</text>\n", x, y, anchor,
                       color, text);
}

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '<' || c == '&') {
            escaped += c == '<' ? "&lt;" : "&amp;";
        } else if (static_cast<unsigned char>(c) >= ' ') {
            escaped += c;
        }
    }
    return escaped;
}

}  // namespace

std::string PlotSvg(const CalibrationTable& table, const std::string& title) {
    double lowest = 1.0;
    double highest = 1.0;
    double last_level = 1.0;
    for (const CalibrationRow& row : table.rows) {
        last_level = std::max(last_level, DrawnLevel(row));
        for (std::size_t tap = 0; tap < static_cast<std::size_t>(table.taps); ++tap) {
            lowest = std::min(lowest, DrawnGain(row.gains[tap]));
            highest = std::max(highest, DrawnGain(row.gains[tap]));
        }
    }
    const double bottom = kHeight - kBottom;
    const Axis levels(0.0, last_level, kLeft, kWidth - kRight);
    const Axis gains(lowest, highest, bottom, kTop);
    std::string svg =
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 720 440\" font-family=\"sans-serif\" "
        "font-size=\"13\" fill=\"none\">\n<rect width=\"720\" height=\"440\" fill=\"#fff\"/>\n";
    svg += Label(kWidth / 2.0, 24.0, "middle", Escaped(title));
    for (int i = 0; i < levels.Ticks(); ++i) {
        const double x = levels.Place(levels.Tick(i));
        svg += Line(x, kTop, x, bottom) + Label(x, bottom + 18.0, "middle", levels.TickText(i));
    }
    for (int i = 0; i < gains.Ticks(); ++i) {
        const double y = gains.Place(gains.Tick(i));
        svg += Line(kLeft, y, kWidth - kRight, y) + Label(kLeft - 8.0, y + 4.0, "end", gains.TickText(i));
    }
    svg += Label((kLeft + kWidth - kRight) / 2.0, kHeight - 14.0, "middle", "signal level / mV");
    svg += Label(kLeft - 8.0, kTop - 14.0, "end", "gain");
    std::vector<std::pair<double, std::size_t>> ends;  // of the curves, from the top
    for (std::size_t tap = 0; tap < static_cast<std::size_t>(table.taps) && !table.rows.empty(); ++tap) {
        std::string points;
        for (const CalibrationRow& row : table.rows) {
            points += points.empty() ? 'M' : 'L';
            points += Coordinates(levels.Place(DrawnLevel(row)), gains.Place(DrawnGain(row.gains[tap])));
        }
        svg += "<path d=\"" + points + "\" stroke=\"" + kColors[tap] + "\" stroke-width=\"2\"/>\n";
        ends.push_back({gains.Place(DrawnGain(table.rows.back().gains[tap])) + 4.0, tap});
    }
    std::sort(ends.begin(), ends.end());
    double free = 0.0;  // where the next name has room
    for (const auto& [y, tap] : ends) {
        const double at = std::max(y, free);
        svg += Label(kWidth - kRight + 6.0, at, "start", "tap " + std::to_string(tap + 1), kColors[tap]);
        free = at + kLineHeight;
    }
    return svg + "</svg>\n";
}

}  // namespace zelcam
