#include "util/ZelUtilImpl.h"

#include <cstdint>
#include <span>

#include "include/ZelImage.h"
#include "util/BinaryFile.h"
#include "util/Deflate.h"
#include "util/PageBuffer.h"
#include "util/PngFile.h"
#include "util/TiffFile.h"

namespace zel {

namespace {

// The largest length of a chunk.
constexpr std::size_t kMaxChunkSize = 0x7FFFFFFF;

}  // namespace

// On purpose: the head says 16 bits whatever `bytes_per_pixel` says.
bool ZelUtilImpl::SaveTIFF(const char* file_name, ZelImage* image) {
    if (!image) return false;
    const std::uint32_t pixel_bytes = image->bytes_per_pixel * image->h * image->w;
    if (!image->pixels && pixel_bytes != 0) return false;
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
