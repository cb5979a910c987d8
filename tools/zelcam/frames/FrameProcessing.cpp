#include "tools/zelcam/frames/FrameProcessing.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <optional>

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

void FrameProcessing::Apply(const zel::Camera& camera, std::vector<zel::SetResult>& results) const {
    try {
        std::vector<unsigned> values;
        std::optional<zel::Region> wanted_region;
        std::optional<zel::Binning> wanted_binning;
        if (!region.empty() && ParseNumbers(region, values) && values.size() == 4) {
            wanted_region = {values[0], values[1], values[2], values[3]};
        }
        if (!binning.empty() && ParseNumbers(binning, values) && values.size() == 2) {
            wanted_binning = {values[0], values[1]};
        }
        if (wanted_region || wanted_binning) {
            results.push_back(camera.set_region_and_binning(wanted_region ? &*wanted_region : nullptr,
                                                            wanted_binning ? &*wanted_binning : nullptr));
        }
        if (average > 0) camera.set_averaging(average);
    } catch (const zel::Error& error) {
        throw Failure(error, "nothing was started");
    }
}

void FrameProcessing::CheckSize(const zel::Frame& frame) const {
    if (region.empty() && binning.empty()) return;
    const zel::FrameInfo info = frame.info();
    const unsigned width = info.region.width / std::max(info.binning.x, 1u);
    const unsigned height = info.region.height / std::max(info.binning.y, 1u);
    if (info.width == width && info.height == height) return;
    throw Failure("frames come as " + SizeText(info.width, info.height) + " instead of " + SizeText(width, height),
                  "with this camera or link the SDK does not cut or bin like that",
                  "narrow --roi by a column, or leave --bin out for a color camera", kRefused);
}

}  // namespace zelcam
