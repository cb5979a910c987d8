#include "util/ImageFile.h"

#include <span>

#include "include/ZelImage.h"
#include "util/BinaryFile.h"
#include "util/Deflate.h"
#include "util/PngFile.h"
#include "util/TiffFile.h"
#include "util/WorkBuffer.h"

namespace zel {

namespace {

// The largest length of a chunk.
constexpr std::size_t kMaxChunkSize = 0x7FFFFFFF;

}  // namespace

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
    const WorkBuffer scanlines(PngScanlineBytes(image.w, image.h));
    if (!scanlines) return false;
    MakePngScanlines(image.pixels, image.w, image.h, scanlines.Bytes());

    const WorkBuffer buffer(kPngFrameSize + std::uint64_t{ZlibStreamBound(scanlines.Bytes().size())});
    if (!buffer) return false;
    const std::span<std::uint8_t> room =
        buffer.Bytes().subspan(kPngStreamOffset, ZlibStreamBound(scanlines.Bytes().size()));
    const std::size_t stream_size = ZlibCompress(scanlines.Bytes(), room);
    if (stream_size == 0 || stream_size > kMaxChunkSize) return false;
    const std::span<std::uint8_t> contents = buffer.Bytes().first(kPngFrameSize + stream_size);
    FramePngStream(image.w, image.h, stream_size, contents);

    BinaryFile file(open());
    if (!file) return false;
    file.Write(contents);
    return true;
}

}  // namespace zel
