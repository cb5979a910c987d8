// What the instruments show of a frame: always of all its pixels, whatever part of it a page looks at.
#ifndef ZELCAM_FRAMESTATISTICS_H
#define ZELCAM_FRAMESTATISTICS_H

#include <array>
#include <cstdint>
#include <vector>

#include "tools/zelcam/view/Picture.h"

namespace zelcam {

inline constexpr unsigned kHistogramBins = 256;

// Moments of a set of samples.
struct Moments {
    double mean = 0.0;
    double sigma = 0.0;
    unsigned minimum = 0;
    unsigned maximum = 0;
    // The mean squared difference of neighbouring samples of a row, divided by the mean squared: sharper pictures have
    // more of it, and the light does not matter.
    double focus = 0.0;
};

struct FrameStatistics : Moments {
    unsigned bits = 0;
    unsigned bin = 1;  // sample values of a bin
    std::array<std::uint64_t, kHistogramBins> histogram{};
    // Of a color frame: red, green, blue.
    std::vector<std::array<std::uint64_t, kHistogramBins>> channels;
    std::uint64_t saturated = 0;  // samples at the largest value
    std::uint64_t black = 0;      // samples at 0
    unsigned p0_1 = 0;            // the smallest value that 0.1 % of the samples do not exceed
    unsigned p50 = 0;
    unsigned p99_9 = 0;
};

// Keeps its memory from frame to frame.
class StatisticsMaker {
  public:
    FrameStatistics Measure(const Samples& frame);

  private:
    std::vector<std::uint32_t> m_Counts;
    std::vector<std::uint32_t> m_Others;
};

// Of a part that lies within the frame; all channels together.
Moments MeasureArea(const Samples& frame, const Area& area);

// The samples at the pixels on a straight line between two pixels of the frame, each pixel once, both included;
// channels of a pixel behind each other, red first.
std::vector<std::uint16_t> LineProfile(const Samples& frame, unsigned x0, unsigned y0, unsigned x1, unsigned y1);

// The samples of one pixel, red first.
std::vector<std::uint16_t> PixelAt(const Samples& frame, unsigned x, unsigned y);

}  // namespace zelcam

#endif
