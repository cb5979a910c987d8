#include "image/RegionAndBinning.h"

#include <algorithm>

#include "image/FrameSamples.h"
#include "kernels/Kernels.h"

namespace zel {

namespace {
constexpr int kLargestBinning = 128;

// On purpose: num_pixels and size_in_bytes stay those of the full frame.
bool CropByCorners(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1, Logger& logger) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessSubImage";
    if (!image) return false;
    const unsigned width = c1 - c0;
    const unsigned height = r1 - r0;
    ZEL_LOG(logger, kLogTrace, kFunction,
            "PostProcessSubImage(): image_w:%d image_h:%d, [%d:%d, %d:%d] roi_width:%d  roi_height:%d\n", image->w,
            image->h, c0, c1, r0, r1, width, height);
    if (width >= image->w && height >= image->h) return true;
    const bool inside = c1 >= c0 && r1 >= r0 && c1 <= image->w && r1 <= image->h;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (!inside || frame.empty()) return false;
    if (height < image->h) {
        ZEL_LOG(logger, kLogTrace, kFunction, "PostProcessImage(): roi_height:%d != image->h:%d", height, image->h);
        ZEL_LOG(logger, kLogTrace, kFunction,
                "PostProcessImage(): memcpy(dst, src, num_bytes:%d)  image(size_in_bytes:%d)",
                image->w * height * kBytesPerSample, image->size_in_bytes);
    }
    // Rows first, then columns: what lies behind the region counts as part of the frame here.
    if (height < image->h) kernels::scalar::Crop(frame, image->w, 0, r0, image->w, height);
    image->h = height;
    if (width < image->w) kernels::scalar::Crop(frame, image->w, c0, 0, width, height);
    image->w = width;
    return true;
}

bool CropBySize(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned width, unsigned height) {
    // On purpose: a frame that has the region's width already is left alone, whatever its height.
    if (!image || image->w == width) return false;
    const bool inside = c0 <= image->w && width <= image->w - c0 && r0 <= image->h && height <= image->h - r0;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (!inside || frame.empty()) return false;
    kernels::scalar::Crop(frame, image->w, c0, r0, width, height);
    image->w = width;
    image->h = height;
    image->num_pixels = width * height;
    image->size_in_bytes = image->bytes_per_pixel * width * height;
    return true;
}

// In records that keep the full frame's size, what binning leaves behind its result can be seen: zeros where samples
// were taken, the left-over columns and rows as they were.
void BinSamples(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned bx, unsigned by, unsigned ceiling,
                bool rest_is_seen) {
    if (rest_is_seen && (w % bx != 0 || h % by != 0)) {
        kernels::scalar::Bin(frame, w, h, bx, by, ceiling);
        return;
    }
    kernels::Kernels().bin(frame, w, h, bx, by, ceiling);
    if (rest_is_seen) std::ranges::fill(frame.subspan(std::size_t{w / bx} * (h / by)), std::uint16_t{0});
}
}  // namespace

bool CropToRegion(ZelImageInternal* image, const FrameGeometry& geometry, Logger& logger) {
    ZEL_SCOPE_TIMER(timer, "PostProcessSubImage", logger, "ZelCameraControlImpl::PostProcessSubImage");
    if (!geometry.cuts_region) return true;
    const ZelRoiBin& roi = geometry.roi;
    if (geometry.region_is_size) return CropBySize(image, roi.XOrigin, roi.YOrigin, roi.XPixels, roi.YPixels);
    return CropByCorners(image, roi.XOrigin, roi.YOrigin, roi.XOrigin + roi.XPixels, roi.YOrigin + roi.YPixels, logger);
}

bool BinFrame(ZelImageInternal* image, const FrameGeometry& geometry) {
    if (!image) return false;
    const int by = std::max(static_cast<int>(geometry.roi.YBin), 1);
    const int bx = std::max(static_cast<int>(geometry.roi.XBin), 1);
    if (by > kLargestBinning || bx > kLargestBinning) return false;
    if (by == 1 && bx == 1) return true;
    if (image->bytes_per_pixel != kBytesPerSample) return false;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (frame.empty()) return false;
    const unsigned ceiling = image->bit_depth >= 16 ? 0xFFFFu : (1u << image->bit_depth) - 1;
    BinSamples(frame, image->w, image->h, static_cast<unsigned>(bx), static_cast<unsigned>(by), ceiling,
               geometry.keeps_full_size);
    image->w /= static_cast<unsigned>(bx);
    image->h /= static_cast<unsigned>(by);
    if (!geometry.keeps_full_size) {
        image->num_pixels = image->w * image->h;
        image->size_in_bytes = image->bytes_per_pixel * image->num_pixels;
    }
    return true;
}

}  // namespace zel
