// How well the taps of a camera match: the step of the mean picture across each seam between two of them.
//
//    2 taps    1 | 2        4 taps    1 | 2     seams 1|2 (upper half), 4|3 (lower half),
//                                     --+--           1|4 (left half), 2|3 (right half)
//                                     4 | 3
#ifndef ZELCAM_SEAMS_H
#define ZELCAM_SEAMS_H

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zelcam {

struct Seam {
    std::string name;    // "1|2"
    double step = 0.0;   // counts, second tap minus first
    double error = 0.0;  // its standard error
};

class SeamMeter {
  public:
    // Pixels on either side of a seam that are looked at.
    static constexpr unsigned kReach = 32;

    // False when the frame has another size than the first one.
    bool Add(std::span<const std::uint16_t> pixels, unsigned w, unsigned h);
    std::uint64_t Frames() const { return m_Frames; }
    // Mean of all samples.
    double Level() const;
    // Each side's mean picture is taken on to the seam by a straight line, so that a slope in the scene is no step.
    // Empty for other numbers of taps than 2 and 4, without frames, and for frames too small.
    std::vector<Seam> Seams(int taps) const;

  private:
    struct Area {
        unsigned x, y, w, h;
    };
    Seam Across(const char* name, const Area& area, bool vertical) const;

    std::vector<std::uint64_t> m_Sums;
    unsigned m_W = 0;
    unsigned m_H = 0;
    std::uint64_t m_Frames = 0;
};

}  // namespace zelcam

#endif
