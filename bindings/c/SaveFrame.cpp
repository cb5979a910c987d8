#include "bindings/c/SaveFrame.h"

#include <cstdio>
#include <memory>
#include <new>
#include <span>

#include "util/LentPngWriter.h"

namespace zel::c {

namespace {

PngPicture PictureOf(const Frame& frame) {
    const ColorSetting& color = *frame.color();
    const PngFormat format = color.format == ColorFormat::rgb16   ? PngFormat::kRgb16
                             : color.format == ColorFormat::rgba8 ? PngFormat::kRgba8
                                                                  : PngFormat::kRgb8;
    return {format,
            frame.width(),
            frame.height(),
            frame.color_bytes().data(),
            8 * color.bytes_per_channel() - color.output_bits(),
            color.space == ColorSpace::srgb ? PngLight::kSrgb : PngLight::kUntold};
}

}  // namespace

void SaveFrame(const Frame& frame, const std::string& file_name) {
    const bool png = detail::upper_case(file_name).ends_with(".PNG");
    if (!png || !frame.color() || frame.color_bytes().empty()) return save(frame, file_name);
    const LentPngWriter writer(PngFilters::kChosen);
    std::span<const std::uint8_t> contents;
    if (writer) contents = (*writer).Encode(PictureOf(frame));
    if (contents.empty()) throw std::bad_alloc();
    std::unique_ptr<std::FILE, detail::CloseFile> file(std::fopen(file_name.c_str(), "wb"));
    if (!file) detail::throw_not_saved(file_name, "the file can't be opened");
    const bool written =
        std::fwrite(contents.data(), 1, contents.size(), file.get()) == contents.size() && std::fflush(file.get()) == 0;
    if (written) return;
    file.reset();
    detail::remove_picture(file_name);
    detail::throw_not_saved(file_name, "the disk may be full");
}

}  // namespace zel::c
