// Color frames as PNG files.
#ifndef ZELCAM_COLORPICTURE_H
#define ZELCAM_COLORPICTURE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/PngWriter.h"
#include "zel/Color.h"

class ZelColorImage;

namespace zelcam {

// The frame's color picture as PngWriter takes it, 16-bit channels shifted up by `shift` bits. Nothing when the frame
// has no color picture of this format.
std::optional<zel::PngPicture> ColorPng(const ZelColorImage& image, const zel::ColorSetting& setting, unsigned shift);

// Writes a picture; the name is UTF-8. Throws Failure.
void WriteColorPng(const std::string& file_name, const zel::PngPicture& picture, zel::PngWriter& writer);

// The frame's color samples in the order of a PNG file: rows of red, green, blue (and opacity), 16-bit values high byte
// first, shifted up by `shift` bits. Empty when the frame has no color picture of this format.
std::vector<std::uint8_t> PngSamples(const ZelColorImage& image, const zel::ColorSetting& setting, unsigned shift);

// Writes those samples of a width x height picture; the name is UTF-8. Throws Failure.
void WriteColorPng(const std::string& file_name, const std::vector<std::uint8_t>& samples, unsigned width,
                   unsigned height, const zel::ColorSetting& setting);

}  // namespace zelcam

#endif
