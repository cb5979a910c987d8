#include "tools/zelcam/view/FrameStatistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

namespace zelcam {

namespace {

// Sums over samples of one value after the other.
struct Sums {
    std::uint64_t count = 0;
    double sum = 0.0;
    double squares = 0.0;

    void Add(std::uint64_t samples, double value) {
        count += samples;
        sum += static_cast<double>(samples) * value;
        squares += static_cast<double>(samples) * value * value;
    }
    void StoreIn(Moments& moments) const {
        if (count == 0) return;
        moments.mean = sum / static_cast<double>(count);
        const double variance = squares / static_cast<double>(count) - moments.mean * moments.mean;
        moments.sigma = std::sqrt(std::max(variance, 0.0));
    }
};

// Of an area: the sum of the squared differences of neighbours in a row.
std::uint64_t SquaredSteps(const Samples& frame, const Area& area) {
    const std::size_t channels = frame.channels;
    std::uint64_t total = 0;
    for (unsigned y = area.y; y < area.y + area.height; ++y) {
        const std::uint16_t* const row = frame.values.data() + (std::size_t{y} * frame.width + area.x) * channels;
        const std::size_t steps = (area.width - 1) * channels;
        for (std::size_t i = 0; i < steps; ++i) {
            const auto step = static_cast<std::uint32_t>(std::abs(row[i + channels] - row[i]));
            total += step * step;
        }
    }
    return total;
}

double FocusOf(const Samples& frame, const Area& area, double mean) {
    const double steps = static_cast<double>(area.width - 1) * area.height * frame.channels;
    if (steps <= 0.0 || mean <= 0.0) return 0.0;
    return static_cast<double>(SquaredSteps(frame, area)) / steps / (mean * mean);
}

// The smallest value that so many samples do not exceed.
unsigned Rank(const std::vector<std::uint32_t>& counts, std::uint64_t rank) {
    std::uint64_t seen = 0;
    for (unsigned value = 0; value < counts.size(); ++value) {
        seen += counts[value];
        if (seen >= rank) return value;
    }
    return static_cast<unsigned>(counts.size() - 1);
}

}  // namespace

FrameStatistics StatisticsMaker::Measure(const Samples& frame) {
    FrameStatistics result;
    result.bits = frame.bits;
    const std::size_t values = std::size_t{1} << std::clamp(frame.bits, 8u, 16u);
    const std::size_t largest = (std::size_t{1} << std::clamp(frame.bits, 1u, 16u)) - 1;
    const auto bin = static_cast<unsigned>(values / kHistogramBins);
    result.bin = bin;
    // A sample that is beyond the depth counts as one of the largest.
    std::vector<std::uint32_t> all(values, 0);
    if (frame.channels == 3) result.channels.resize(3);
    for (unsigned channel = 0; channel < frame.channels; ++channel) {
        m_Counts.assign(65536, 0);
        m_Others.assign(65536, 0);
        // Two tables: equal neighbours need not wait for each other's increment.
        const std::size_t step = frame.channels;
        std::size_t i = channel;
        for (; i + step < frame.values.size(); i += 2 * step) {
            ++m_Counts[frame.values[i]];
            ++m_Others[frame.values[i + step]];
        }
        if (i < frame.values.size()) ++m_Counts[frame.values[i]];
        for (std::size_t value = 0; value < m_Counts.size(); ++value) {
            const std::uint32_t count = m_Counts[value] + m_Others[value];
            if (count == 0) continue;
            const std::size_t place = std::min(value, values - 1);
            all[place] += count;
            if (frame.channels == 3) result.channels[2 - channel][place / bin] += count;
            if (value >= largest) result.saturated += count;
        }
    }
    Sums sums;
    bool found = false;
    for (unsigned value = 0; value < all.size(); ++value) {
        if (all[value] == 0) continue;
        sums.Add(all[value], value);
        result.histogram[value / bin] += all[value];
        if (!found) result.minimum = value;
        found = true;
        result.maximum = value;
    }
    result.black = all[0];
    sums.StoreIn(result);
    const auto rank = [&](double part) {
        return std::max<std::uint64_t>(static_cast<std::uint64_t>(std::ceil(part * static_cast<double>(sums.count))),
                                       1);
    };
    result.p0_1 = Rank(all, rank(0.001));
    result.p50 = Rank(all, rank(0.5));
    result.p99_9 = Rank(all, rank(0.999));
    result.focus = FocusOf(frame, {0, 0, frame.width, frame.height}, result.mean);
    return result;
}

Moments MeasureArea(const Samples& frame, const Area& area) {
    Moments result;
    Sums sums;
    result.minimum = 65535;
    for (unsigned y = area.y; y < area.y + area.height; ++y) {
        const std::size_t start = (std::size_t{y} * frame.width + area.x) * frame.channels;
        std::uint64_t sum = 0, squares = 0;
        for (const std::uint16_t sample : frame.values.subspan(start, std::size_t{area.width} * frame.channels)) {
            sum += sample;
            squares += std::uint32_t{sample} * sample;
            result.minimum = std::min<unsigned>(result.minimum, sample);
            result.maximum = std::max<unsigned>(result.maximum, sample);
        }
        sums.count += std::uint64_t{area.width} * frame.channels;
        sums.sum += static_cast<double>(sum);
        sums.squares += static_cast<double>(squares);
    }
    sums.StoreIn(result);
    result.focus = FocusOf(frame, area, result.mean);
    return result;
}

std::vector<std::uint16_t> PixelAt(const Samples& frame, unsigned x, unsigned y) {
    const std::size_t start = (std::size_t{y} * frame.width + x) * frame.channels;
    const auto pixel = frame.values.subspan(start, frame.channels);
    return {pixel.rbegin(), pixel.rend()};
}

std::vector<std::uint16_t> LineProfile(const Samples& frame, unsigned x0, unsigned y0, unsigned x1, unsigned y1) {
    const auto difference = [](unsigned from, unsigned to) { return static_cast<int>(to) - static_cast<int>(from); };
    const int dx = difference(x0, x1), dy = difference(y0, y1);
    const int steps = std::max({std::abs(dx), std::abs(dy), 1});
    std::vector<std::uint16_t> values;
    for (int i = 0; i <= (dx == 0 && dy == 0 ? 0 : steps); ++i) {
        const auto at = [&](unsigned from, int way) {
            return from + static_cast<unsigned>(std::lround(static_cast<double>(way) * i / steps));
        };
        const auto pixel = PixelAt(frame, at(x0, dx), at(y0, dy));
        values.insert(values.end(), pixel.begin(), pixel.end());
    }
    return values;
}

}  // namespace zelcam
