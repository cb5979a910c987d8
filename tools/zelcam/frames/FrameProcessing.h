// What the SDK shall do with every frame before it hands it over: cut a region out, bin, average.
#ifndef ZELCAM_FRAMEPROCESSING_H
#define ZELCAM_FRAMEPROCESSING_H

#include <string>
#include <vector>

#include "zel/Camera.h"

namespace CLI {
class App;
}

namespace zelcam {

// Frames that an average may cover, and the largest binning factor.
inline constexpr int kMostAveraged = 1000;
inline constexpr unsigned kLargestBinning = 128;

// "x,y,width,height" and "x,y" in whole numbers. False, with `values` unspecified, for any other text.
bool ParseNumbers(const std::string& text, std::vector<unsigned>& values);

struct FrameProcessing {
    std::string region;   // "x,y,width,height" in sensor pixels; empty: as the camera is set
    std::string binning;  // "x,y", factors; empty: as the camera is set
    int average = 0;      // frames; 0: no averaging

    void Declare(CLI::App& command);
    // Writes region and binning, read back, which adds to `results`, and sets averaging up. Throws Failure before
    // anything is written when the region is not on the sensor or nothing would be left of it.
    void Apply(const zel::Camera& camera, std::vector<zel::SetResult>& results) const;
    // Throws Failure when the first frame does not have the size that was asked for.
    void CheckSize(const zel::Frame& frame) const;
    // Frames that come before the first one that is an average of all `average`.
    int FramesBefore() const { return average > 1 ? average - 1 : 0; }
};

}  // namespace zelcam

#endif
