// Color frames as pictures of PNG files.
#ifndef ZELCAM_COLORPICTURE_H
#define ZELCAM_COLORPICTURE_H

#include <optional>

#include "util/PngPicture.h"
#include "zel/Color.h"

class ZelColorImage;

namespace zelcam {

// The frame's color picture as PngWriter takes it, 16-bit channels shifted up by `shift` bits. Nothing when the frame
// has no color picture of this format.
std::optional<zel::PngPicture> ColorPng(const ZelColorImage& image, const zel::ColorSetting& setting, unsigned shift);

}  // namespace zelcam

#endif
