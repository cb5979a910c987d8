#include "tools/zelcam/frames/FrameProcessing.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>

#include "include/ZelCamera.h"
#include "include/ZelCameraInternal.h"
#include "tools/zelcam/text/Failure.h"

namespace zelcam {

namespace {

std::string CheckRegionText(const std::string& text) {
    std::vector<unsigned> values;
    const bool good = ParseNumbers(text, values) && values.size() == 4 && values[2] > 0 && values[3] > 0;
    return good ? "" : "'" + text + "' is not x,y,width,height in pixels, width and height from 1";
}

std::string CheckBinningText(const std::string& text) {
    std::vector<unsigned> values;
    bool good = ParseNumbers(text, values) && values.size() == 2;
    for (const unsigned factor : values) good = good && factor >= 1 && factor <= kLargestBinning;
    return good ? "" : "'" + text + "' is not x,y, each a factor from 1 to " + std::to_string(kLargestBinning);
}

std::string SizeText(unsigned width, unsigned height) { return fmt::format("{}x{}", width, height); }

std::string RegionText(const ZelRoiBin& r) {
    return fmt::format("{},{},{},{},{},{}", r.XOrigin, r.YOrigin, r.XPixels, r.YPixels, r.XBin, r.YBin);
}

}  // namespace

bool ParseNumbers(const std::string& text, std::vector<unsigned>& values) {
    values.clear();
    const char* at = text.data();
    const char* const end = at + text.size();
    while (true) {
        unsigned value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc()) return false;
        values.push_back(value);
        if (next == end) return true;
        if (*next != ',') return false;
        at = next + 1;
    }
}

void FrameProcessing::Declare(CLI::App& command) {
    command.add_option("--roi", region, "Region x,y,width,height in sensor pixels")->check(CheckRegionText);
    command.add_option("--bin", binning, "Binning x,y: so many pixels become one, factors from 1 to 128")
        ->check(CheckBinningText);
    command.add_option("--average", average, "Each frame is the mean of the last N")
        ->check(CLI::Range(1, kMostAveraged));
}

std::string RegionFault(const ZelRoiBin& wanted, unsigned sensor_width, unsigned sensor_height) {
    const auto inside = [](unsigned from, unsigned length, unsigned size) {
        return length > 0 && length <= size && from <= size - length;
    };
    if (!inside(wanted.XOrigin, wanted.XPixels, sensor_width) ||
        !inside(wanted.YOrigin, wanted.YPixels, sensor_height)) {
        return "the region is not within the frame of " + SizeText(sensor_width, sensor_height);
    }
    if (wanted.XBin > wanted.XPixels || wanted.YBin > wanted.YPixels) {
        return "binning leaves nothing of the region of " + SizeText(wanted.XPixels, wanted.YPixels);
    }
    return "";
}

std::vector<WriteOutcome> FrameProcessing::Apply(ZelCamera* camera) const {
    std::vector<WriteOutcome> outcomes;
    if (!region.empty() || !binning.empty()) {
        ZelRoiBin wanted{};
        camera->GetParameter(ZEL_PARAM_ROI_BIN, sizeof wanted, &wanted);
        std::vector<unsigned> values;
        if (!region.empty() && ParseNumbers(region, values) && values.size() == 4) {
            wanted.XOrigin = values[0];
            wanted.YOrigin = values[1];
            wanted.XPixels = values[2];
            wanted.YPixels = values[3];
        }
        if (!binning.empty() && ParseNumbers(binning, values) && values.size() == 2) {
            wanted.XBin = values[0];
            wanted.YBin = values[1];
        }
        const std::string fault = RegionFault(wanted, static_cast<unsigned>(ReadNumber(camera, ZEL_PARAM_HSIZE)),
                                              static_cast<unsigned>(ReadNumber(camera, ZEL_PARAM_VSIZE)));
        if (!fault.empty()) throw Failure("ROI_BIN: " + RegionText(wanted), fault, "nothing was started", kRefused);
        outcomes.push_back(RequireParameter(camera, ParameterById(ZEL_PARAM_ROI_BIN), RegionText(wanted)));
    }
    // Averaging is one of the camera object's service operations.
    if (average > 0 && !static_cast<ZelCameraInternal*>(camera)->SetImageAveraging(average, 1)) {
        throw Failure("--average " + std::to_string(average), "the SDK does not take it", "nothing was started",
                      kRefused);
    }
    return outcomes;
}

void FrameProcessing::CheckSize(const ZelImage& image) const {
    if (region.empty() && binning.empty()) return;
    const unsigned width = image.x_pixels / (image.x_bin > 0 ? image.x_bin : 1);
    const unsigned height = image.y_pixels / (image.y_bin > 0 ? image.y_bin : 1);
    if (image.w == width && image.h == height) return;
    throw Failure("frames come as " + SizeText(image.w, image.h) + " instead of " + SizeText(width, height),
                  "with this camera or link the SDK does not cut or bin like that",
                  "narrow --roi by a column, or leave --bin out for a color camera", kRefused);
}

}  // namespace zelcam
