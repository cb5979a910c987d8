#include "tools/zelcam/frames/ColorPicture.h"

#include "include/ZelImage.h"

namespace zelcam {

namespace {

zel::PngFormat PngFormatOf(zel::ColorFormat format) {
    switch (format) {
        case zel::ColorFormat::rgb8:
            return zel::PngFormat::kRgb8;
        case zel::ColorFormat::rgba8:
            return zel::PngFormat::kRgba8;
        case zel::ColorFormat::rgb16:
            break;
    }
    return zel::PngFormat::kRgb16;
}

}  // namespace

std::optional<zel::PngPicture> ColorPng(const ZelColorImage& image, const zel::ColorSetting& setting, unsigned shift) {
    const zel::PngPicture picture{
        PngFormatOf(setting.format),
        image.w,
        image.h,
        image.color_pixels,
        shift,
        setting.space == zel::ColorSpace::srgb ? zel::PngLight::kSrgb : zel::PngLight::kLinear};
    const std::uint64_t row = picture.BytesPerRow();
    if (!picture.pixels || row == 0 || image.h == 0 || image.color_size_in_bytes / row < image.h) return std::nullopt;
    return picture;
}

}  // namespace zelcam
