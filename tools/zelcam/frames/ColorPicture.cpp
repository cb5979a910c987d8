#include "tools/zelcam/frames/ColorPicture.h"

#include <lodepng.h>

#include <cstring>
#include <fstream>
#include <system_error>

#include "include/ZelImage.h"
#include "platform/UserTexts.h"
#include "tools/zelcam/text/Failure.h"
#include "tools/zelcam/text/OutputFile.h"

namespace zelcam {

namespace {

// Linear light for a viewer that heeds it, in hundred-thousandths.
constexpr unsigned kGammaOne = 100000;

void AppendSixteen(std::vector<std::uint8_t>& samples, const std::uint8_t* channel, unsigned shift) {
    std::uint16_t value;
    std::memcpy(&value, channel, sizeof value);
    const unsigned shifted = static_cast<unsigned>(value) << shift;
    const unsigned stored = shifted > 0xFFFF ? 0xFFFF : shifted;
    samples.push_back(static_cast<std::uint8_t>(stored >> 8));
    samples.push_back(static_cast<std::uint8_t>(stored));
}

lodepng::State EncoderFor(const zel::ColorSetting& setting) {
    lodepng::State state;
    state.encoder.auto_convert = 0;  // the file has the format that the user asked for, whatever the picture shows
    for (LodePNGColorMode* mode : {&state.info_raw, &state.info_png.color}) {
        mode->colortype = setting.format == zel::ColorFormat::rgba8 ? LCT_RGBA : LCT_RGB;
        mode->bitdepth = setting.bytes_per_channel() * 8;
    }
    if (setting.space == zel::ColorSpace::srgb) {
        state.info_png.srgb_defined = 1;
        state.info_png.srgb_intent = 0;  // perceptual; the library leaves it as it finds it
    } else {
        state.info_png.gama_defined = 1;
        state.info_png.gama_gamma = kGammaOne;
    }
    return state;
}

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

void WriteColorPng(const std::string& file_name, const zel::PngPicture& picture, zel::PngWriter& writer) {
    const std::span<const std::uint8_t> contents = writer.Encode(picture);
    if (contents.empty()) throw Failure("'" + file_name + "' can't be made", "the memory may be used up", "");
    const std::filesystem::path path = zel::platform::Utf8Path(file_name);
    std::ofstream stream(path, std::ios::binary);
    const bool opened = stream.good();
    stream.write(reinterpret_cast<const char*>(contents.data()), static_cast<std::streamsize>(contents.size()));
    stream.close();
    if (!stream) FailToWrite(path, opened);
}

// In the frame:   | blue | green | red | (unused) |   for each pixel, channels of 8 or 16 bits in the host's byte order
std::vector<std::uint8_t> PngSamples(const ZelColorImage& image, const zel::ColorSetting& setting, unsigned shift) {
    const std::size_t pixels = std::size_t{image.w} * image.h;
    const std::size_t channel_bytes = setting.bytes_per_channel();
    const std::size_t pixel_bytes = setting.channels() * channel_bytes;
    std::vector<std::uint8_t> samples;
    if (!image.color_pixels || pixels == 0 || image.color_size_in_bytes < pixels * pixel_bytes) return samples;
    samples.reserve(pixels * pixel_bytes);
    const auto* pixel = static_cast<const std::uint8_t*>(image.color_pixels);
    for (std::size_t i = 0; i < pixels; ++i, pixel += pixel_bytes) {
        for (const std::size_t channel : {2u, 1u, 0u}) {
            if (channel_bytes == 2) {
                AppendSixteen(samples, pixel + channel * 2, shift);
            } else {
                samples.push_back(pixel[channel]);
            }
        }
        if (setting.format == zel::ColorFormat::rgba8) samples.push_back(0xFF);
    }
    return samples;
}

void WriteColorPng(const std::string& file_name, const std::vector<std::uint8_t>& samples, unsigned width,
                   unsigned height, const zel::ColorSetting& setting) {
    const std::size_t expected = std::size_t{width} * height * setting.channels() * setting.bytes_per_channel();
    if (samples.empty() || samples.size() != expected) {
        throw Failure("'" + file_name + "' can't be made", "the frame has no color picture of this format", "");
    }
    lodepng::State state = EncoderFor(setting);
    std::vector<unsigned char> file;
    const unsigned error = lodepng::encode(file, samples, width, height, state);
    if (error) throw Failure("'" + file_name + "' can't be made", lodepng_error_text(error), "");
    const std::filesystem::path path = zel::platform::Utf8Path(file_name);
    std::ofstream stream(path, std::ios::binary);
    const bool opened = stream.good();
    stream.write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
    stream.close();
    if (!stream) FailToWrite(path, opened);
}

}  // namespace zelcam
