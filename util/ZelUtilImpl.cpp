#include "util/ZelUtilImpl.h"

#include <cstdint>
#include <span>

#include "include/ZelImage.h"
#include "sdk/Logger.h"
#include "util/BinaryFile.h"
#include "util/Deflate.h"
#include "util/PageBuffer.h"
#include "util/PngFile.h"
#include "util/TiffFile.h"

namespace zel {

namespace {

// The largest length of a chunk.
constexpr std::size_t kMaxChunkSize = 0x7FFFFFFF;

// Whether w * h samples lie within the record's buffer, whatever a transport wrote into its geometry. An image that no
// camera made may leave its buffer's size 0.
bool FitsItsBuffer(const ZelImage& image, std::uint64_t bytes_per_sample, const char* function_name) {
    const std::uint64_t capacity = static_cast<const ZelColorImage&>(image).buffer_size;
    const std::uint64_t pixels = std::uint64_t{image.w} * image.h;
    const std::uint64_t limit = capacity == 0 ? UINT32_MAX : capacity;
    if (pixels == 0 || (image.pixels && bytes_per_sample <= limit && pixels <= limit / bytes_per_sample)) return true;
    ZEL_LOG(SdkLogger().Get(), kLogError, function_name,
            "An image of %u x %u samples of %u bytes does not fit its buffer of %u bytes!", image.w, image.h,
            static_cast<unsigned>(bytes_per_sample), static_cast<unsigned>(capacity));
    return false;
}

}  // namespace

// On purpose: the head says 16 bits whatever `bytes_per_pixel` says.
bool ZelUtilImpl::SaveTIFF(const char* file_name, ZelImage* image) {
    if (!image) return false;
    if (image->bytes_per_pixel != 0 && !FitsItsBuffer(*image, image->bytes_per_pixel, "ZelUtilImpl::SaveTIFF")) {
        return false;
    }
    const std::uint32_t pixel_bytes = image->bytes_per_pixel * image->h * image->w;
    const TiffHead head = MakeTiffHead(image->w, image->h, pixel_bytes);

    BinaryFile file(file_name);
    if (!file) return false;
    file.Write(head);
    file.Write({reinterpret_cast<const std::uint8_t*>(image->pixels), pixel_bytes});
    return true;
}

// On purpose: samples are read as 16-bit whatever `bytes_per_pixel` says.
bool ZelUtilImpl::SavePNG(const char* file_name, ZelImage* image) {
    // Samples of one byte would end in the middle of the rows.
    if (!image || !image->pixels || image->bytes_per_pixel < sizeof(std::uint16_t)) return false;
    if (image->w == 0 || image->h == 0) return false;
    if (!FitsItsBuffer(*image, sizeof(std::uint16_t), "ZelUtilImpl::SavePNG")) return false;

    const PageBuffer scanlines(PngScanlineBytes(image->w, image->h));
    if (!scanlines) return false;
    MakePngScanlines(image->pixels, image->w, image->h, scanlines.Bytes());

    const PageBuffer buffer(kPngFrameSize + std::uint64_t{ZlibStreamBound(scanlines.Bytes().size())});
    if (!buffer) return false;
    const std::span<std::uint8_t> room =
        buffer.Bytes().subspan(kPngStreamOffset, ZlibStreamBound(scanlines.Bytes().size()));
    const std::size_t stream_size = ZlibCompress(scanlines.Bytes(), room);
    if (stream_size == 0 || stream_size > kMaxChunkSize) return false;
    const std::span<std::uint8_t> contents = buffer.Bytes().first(kPngFrameSize + stream_size);
    FramePngStream(image->w, image->h, stream_size, contents);

    BinaryFile file(file_name);
    if (!file) return false;
    file.Write(contents);
    return true;
}

ZelUtil* UtilInstance() {
    static ZelUtilImpl instance;
    return &instance;
}

}  // namespace zel
