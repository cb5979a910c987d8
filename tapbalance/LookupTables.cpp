#include "tapbalance/LookupTables.h"

#include <cmath>

#include "kernels/Kernels.h"

namespace zel {

namespace {

struct Line {
    double slope = 0;
    double intercept = 0;
};

// The straight line of least squares through four points.
Line Fit(std::span<const float> x, std::span<const float> y) {
    double sum_x = 0, sum_y = 0, sum_xx = 0, sum_xy = 0;
    for (std::size_t k = 0; k < kFitRows; ++k) {
        const double xk = double{x[k]};
        const double yk = double{y[k]};
        sum_x += xk;
        sum_y += yk;
        sum_xx += xk * xk;
        sum_xy += xk * yk;
    }
    Line line;
    line.slope = (sum_xy - sum_x * sum_y / 4) / (sum_xx - sum_x * sum_x / 4);
    line.intercept = sum_y / 4 - line.slope * sum_x / 4;
    return line;
}

// Rounds towards zero. What lies outside the entries is clamped; a value that is no number counts as 0.
unsigned ToEntry(double value, unsigned largest) {
    if (!(value > 0)) return 0;
    return value >= largest ? largest : static_cast<unsigned>(value);
}

// The rows that decide about one signal level.
class RowWindow {
  public:
    explicit RowWindow(const TapTable& source)
        : m_Source(source), m_Millivolts(source.Millivolts()), m_Rows(source.Rows()) {}

    // Moves to level x, which never falls from one call to the next. Levels above the last row count as the last row's.
    void MoveTo(double& x) {
        while (m_Reached < m_Rows && !(double{m_Millivolts[At(m_Reached)]} >= x)) ++m_Reached;
        int start = m_Reached;
        if (m_Reached == m_Rows) {
            start = m_Rows - 1;
            x = double{m_Millivolts[At(start)]};
        } else if (double{m_Millivolts[At(m_Reached)]} != x) {
            --start;
        }
        // On purpose: a level below the first row is fitted through rows 1 to 4, not 0 to 3.
        if (start == -1) start = 1;
        if (start + kFitRows > m_Rows) start = m_Rows - kFitRows;
        if (start == m_Start) return;
        m_Start = start;
        for (int tap = 0; tap < m_Source.Taps(); ++tap) {
            m_Lines[At(tap)] = Fit(m_Millivolts.subspan(At(start)), m_Source.Gains(tap).subspan(At(start)));
        }
    }

    double Gain(int tap, double x) const { return m_Lines[At(tap)].slope * x + m_Lines[At(tap)].intercept; }
    bool BeginsWithEqualLevels() const { return m_Millivolts[At(m_Start)] == m_Millivolts[At(m_Start + 1)]; }

  private:
    static std::size_t At(int i) { return static_cast<std::size_t>(i); }

    const TapTable& m_Source;
    const std::span<const float> m_Millivolts;
    const int m_Rows;
    int m_Reached = 0;  // the first row whose level is x or above
    int m_Start = -1;
    std::array<Line, kMostTaps> m_Lines;
};

void FillTwoTaps(LookupTables& result, const RowWindow& window, unsigned i, double x) {
    const unsigned largest = result.entries - 1;
    for (int tap = 0; tap < 2; ++tap) {
        std::uint16_t& entry = result.tables[static_cast<std::size_t>(tap)][i];
        const double y = window.Gain(tap, x);
        if (y != 0) entry = static_cast<std::uint16_t>(ToEntry(i / y + 0.5, largest));
        // On purpose: nothing in the upper half is black.
        if (i > result.entries / 2 && entry == 0) entry = static_cast<std::uint16_t>(largest);
    }
}

void FillFourTaps(LookupTables& result, const RowWindow& window, unsigned i, double x) {
    const unsigned largest = result.entries - 1;
    for (int tap = 0; tap < 4; ++tap) {
        std::uint16_t& entry = result.tables[static_cast<std::size_t>(tap)][i];
        const double y = window.Gain(tap, x);
        // On purpose: tap 1 is rounded, the other three are truncated.
        if (y != 0) entry = static_cast<std::uint16_t>(ToEntry(tap == 0 ? i / y + 0.5 : i / y, largest));
        if (window.BeginsWithEqualLevels()) entry = static_cast<std::uint16_t>(largest);
    }
}

}  // namespace

std::shared_ptr<const LookupTables> MakeLookupTables(const TapTable& source, int bits, float gain,
                                                     const LookupTables* previous) {
    const auto result = std::make_shared<LookupTables>();
    result->taps = source.Taps();
    result->entries = 1u << bits;
    const bool keep = previous && previous->entries == result->entries && previous->taps == result->taps;
    if (keep) result->tables = previous->tables;
    for (int tap = 0; tap < result->taps; ++tap) {
        result->tables[static_cast<std::size_t>(tap)].resize(result->entries + LookupTables::kPadding);
    }

    const double linear_gain = std::pow(10.0, (double{gain} * 0.0358 + 5.5) / 20);
    const unsigned largest = result->entries - 1;
    const auto fill = result->taps == 2 ? FillTwoTaps : FillFourTaps;
    RowWindow window(source);
    for (unsigned i = 0; i < result->entries; ++i) {
        double x = 1.0;
        if (largest > 0) x = i * 2.0 / largest * 1000.0 / linear_gain;
        window.MoveTo(x);
        fill(*result, window, i, x);
    }
    for (std::size_t tap = 0; kernels::Kernels().uses_lines && tap < result->tables.size(); ++tap) {
        const std::span table = result->tables[tap];
        if (!table.empty())
            result->lines[tap] = kernels::MakeLineTable(table.first(result->entries), static_cast<unsigned>(bits));
    }
    return result;
}

void TapTables::LookUp(std::span<std::uint16_t> samples, std::size_t tap, unsigned value_mask) const {
    kernels::Kernels().look_up_by_lines(samples, lut[tap].data(), *lines[tap], static_cast<std::uint16_t>(mask),
                                        static_cast<std::uint16_t>(value_mask));
}

}  // namespace zel
