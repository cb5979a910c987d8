#include "util/ImageFile.h"

#include <span>

#include "include/ZelImage.h"
#include "util/BinaryFile.h"
#include "util/LentPngWriter.h"
#include "util/TiffFile.h"

namespace zel {

bool FitsItsBuffer(const ZelImage& image, std::uint64_t bytes_per_sample) {
    const std::uint64_t capacity = static_cast<const ZelColorImage&>(image).buffer_size;
    const std::uint64_t pixels = std::uint64_t{image.w} * image.h;
    const std::uint64_t limit = capacity == 0 ? UINT32_MAX : capacity;
    return pixels == 0 || (image.pixels && bytes_per_sample <= limit && pixels <= limit / bytes_per_sample);
}

bool WriteTiff(const ZelImage& image, const OpenImageFile& open) {
    const std::uint32_t pixel_bytes = image.bytes_per_pixel * image.h * image.w;
    const TiffHead head = MakeTiffHead(image.w, image.h, pixel_bytes);

    BinaryFile file(open());
    if (!file) return false;
    file.Write(head);
    file.Write({reinterpret_cast<const std::uint8_t*>(image.pixels), pixel_bytes});
    return true;
}

bool WritePng(const ZelImage& image, const OpenImageFile& open) {
    const LentPngWriter writer(PngFilters::kNone);
    if (!writer) return false;
    const std::span<const std::uint8_t> contents =
        (*writer).Encode({PngFormat::kGrey16, image.w, image.h, image.pixels, 0, PngLight::kUntold});
    if (contents.empty()) return false;
    BinaryFile file(open());
    if (!file) return false;
    file.Write(contents);
    return true;
}

}  // namespace zel
