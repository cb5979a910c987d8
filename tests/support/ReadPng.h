// What files of PngWriter hold, as another library reads them.
#ifndef TESTS_SUPPORT_READPNG_H
#define TESTS_SUPPORT_READPNG_H

#include <lodepng.h>

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "util/PngPicture.h"

namespace zel::test {

// The file's pixels as they stand in memory: blue first, samples of 16 bits in this machine's order. None when it is no
// good file, or not one of such a picture.
inline std::vector<std::uint8_t> ReadPng(std::span<const std::uint8_t> file, const PngPicture& picture) {
    constexpr LodePNGColorType kColors[] = {LCT_GREY, LCT_RGB, LCT_RGB, LCT_RGBA};
    lodepng::State state;
    state.decoder.color_convert = 0;
    std::vector<std::uint8_t> pixels;
    unsigned w = 0, h = 0;
    const unsigned error = lodepng::decode(pixels, w, h, state, file.data(), file.size());
    const LodePNGInfo& info = state.info_png;
    const bool light = info.srgb_defined == (picture.light == PngLight::kSrgb) &&
                       (info.gama_defined ? info.gama_gamma : 0) == (picture.light == PngLight::kLinear ? 100000 : 0);
    if (error || w != picture.width || h != picture.height || !light || info.interlace_method ||
        info.color.colortype != kColors[static_cast<int>(picture.format)] ||
        info.color.bitdepth != 8 * picture.BytesPerSample())
        return {};
    // Turning the bytes of a pixel of 16-bit samples turns its channels and its samples.
    const std::size_t turned = picture.format == PngFormat::kRgba8 ? 3 : picture.BytesPerPixel();
    for (auto at = pixels.begin(); at != pixels.end(); at += picture.BytesPerPixel())
        std::reverse(at, at + static_cast<std::ptrdiff_t>(turned));
    return pixels;
}

// What the file is to hold of these pixels: moved up, and opaque.
inline std::vector<std::uint8_t> KeptPixels(const PngPicture& picture, std::vector<std::uint8_t> pixels) {
    for (std::size_t i = 0; i < pixels.size() && picture.shift; i += 2) {
        const unsigned sample = std::min((pixels[i] + 256u * pixels[i + 1]) << picture.shift, 0xFFFFu);
        pixels[i] = static_cast<std::uint8_t>(sample);
        pixels[i + 1] = static_cast<std::uint8_t>(sample >> 8);
    }
    for (std::size_t i = 3; i < pixels.size() && picture.format == PngFormat::kRgba8; i += 4) pixels[i] = 255;
    return pixels;
}

}  // namespace zel::test

#endif
