// The post-processing steps of a frame, in the order in which they run: tap readout (TapReadout.cpp), region, binning,
// average. Every step checks the geometry against the buffers it is about to touch; the kernels do the work.
#include <algorithm>
#include <cstring>

#include "image/FrameSamples.h"
#include "image/ZelCameraControlImpl.h"
#include "kernels/Kernels.h"

namespace zel {

namespace {
constexpr int kLargestBinning = 128;
constexpr const char* kDashes = "----------------------------------------------------------------";

// In records that keep the full frame's size, what binning leaves behind its result can be seen: zeros where samples
// were taken, the left-over columns and rows as they were.
void BinFrame(std::span<std::uint16_t> frame, unsigned w, unsigned h, unsigned bx, unsigned by, unsigned ceiling,
              bool rest_is_seen) {
    if (rest_is_seen && (w % bx != 0 || h % by != 0)) {
        kernels::scalar::Bin(frame, w, h, bx, by, ceiling);
        return;
    }
    kernels::Kernels().bin(frame, w, h, bx, by, ceiling);
    if (rest_is_seen) std::ranges::fill(frame.subspan(std::size_t{w / bx} * (h / by)), std::uint16_t{0});
}
}  // namespace

bool ZelCameraControlImpl::PostProcessImage(ZelImageInternal* image, const FrameGeometry& geometry) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessImage", m_Logger, kFunction);
    if (!PostProcessTapBalance(image, geometry)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to tap balance the image!");
    }
    PostProcessSubImage(image, geometry);
    PostProcessBinning(image, geometry);
    if (m_ImageAvgFrameCountMax > 0) PostProcessAverageImage(image);
    return true;
}

bool ZelCameraControlImpl::PostProcessSubImage(ZelImageInternal* image, const FrameGeometry& geometry) {
    ZEL_SCOPE_TIMER(timer, "PostProcessSubImage", m_Logger, "ZelCameraControlImpl::PostProcessSubImage");
    if (!geometry.cuts_region) return true;
    const ZelRoiBin& roi = geometry.roi;
    if (geometry.region_is_size) return CropBySize(image, roi.XOrigin, roi.YOrigin, roi.XPixels, roi.YPixels);
    return CropByCorners(image, roi.XOrigin, roi.YOrigin, roi.XOrigin + roi.XPixels, roi.YOrigin + roi.YPixels);
}

// On purpose: num_pixels and size_in_bytes stay those of the full frame.
bool ZelCameraControlImpl::CropByCorners(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1, unsigned r1) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessSubImage";
    if (!image) return false;
    const unsigned width = c1 - c0;
    const unsigned height = r1 - r0;
    ZEL_LOG(m_Logger, kLogTrace, kFunction,
            "PostProcessSubImage(): image_w:%d image_h:%d, [%d:%d, %d:%d] roi_width:%d  roi_height:%d\n", image->w,
            image->h, c0, c1, r0, r1, width, height);
    if (width >= image->w && height >= image->h) return true;
    const bool inside = c1 >= c0 && r1 >= r0 && c1 <= image->w && r1 <= image->h;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (!inside || frame.empty()) return false;
    if (height < image->h) {
        ZEL_LOG(m_Logger, kLogTrace, kFunction, "PostProcessImage(): roi_height:%d != image->h:%d", height, image->h);
        ZEL_LOG(m_Logger, kLogTrace, kFunction,
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

bool ZelCameraControlImpl::CropBySize(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned width,
                                      unsigned height) {
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

bool ZelCameraControlImpl::PostProcessBinning(ZelImageInternal* image, const FrameGeometry& geometry) {
    if (!image) return false;
    const int by = std::max(static_cast<int>(geometry.roi.YBin), 1);
    const int bx = std::max(static_cast<int>(geometry.roi.XBin), 1);
    if (by > kLargestBinning || bx > kLargestBinning) return false;
    if (by == 1 && bx == 1) return true;
    if (image->bytes_per_pixel != kBytesPerSample) return false;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (frame.empty()) return false;
    const unsigned ceiling = image->bit_depth >= 16 ? 0xFFFFu : (1u << image->bit_depth) - 1;
    BinFrame(frame, image->w, image->h, static_cast<unsigned>(bx), static_cast<unsigned>(by), ceiling,
             geometry.keeps_full_size);
    image->w /= static_cast<unsigned>(bx);
    image->h /= static_cast<unsigned>(by);
    if (!geometry.keeps_full_size) {
        image->num_pixels = image->w * image->h;
        image->size_in_bytes = image->bytes_per_pixel * image->num_pixels;
    }
    return true;
}

bool ZelCameraControlImpl::PostProcessAverageImage(ZelImageInternal* image) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessAverageImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessAverageImage", m_Logger, kFunction);
    if (!image) return false;
    if (m_ImageAvgFrameCountMax == 0 || m_ImageAvgRing.empty()) return true;
    const std::span frame = Samples(*image, image->num_pixels);
    const unsigned bytes = image->size_in_bytes;
    if (frame.empty() || bytes > m_ImageAvgRingBytes || bytes > image->buffer_size || frame.size_bytes() > bytes) {
        return false;
    }
    // Frames of another size than those in the ring begin it anew.
    if (bytes != m_ImageAvgFrameBytes || image->num_pixels != m_ImageAvgFramePixels) {
        m_ImageAvgFrameBytes = bytes;
        m_ImageAvgFramePixels = image->num_pixels;
        m_ImageAvgFrameCount = 0;
        m_ImageAvgFrameIndex = 0;
        std::ranges::fill(m_ImageAvgSums, 0u);
    }
    if (m_ImageAvgFrameIndex >= m_ImageAvgFrameCountMax) m_ImageAvgFrameIndex = 0;
    const bool ring_is_full = m_ImageAvgFrameCount >= m_ImageAvgFrameCountMax;
    if (!ring_is_full) ++m_ImageAvgFrameCount;
    // The sums over the ring are kept from frame to frame: a long ring costs no more than a short one.
    kernels::Kernels().average_step(
        frame, std::span(m_ImageAvgRing[static_cast<std::size_t>(m_ImageAvgFrameIndex)]).first(frame.size()),
        std::span(m_ImageAvgSums).first(frame.size()), static_cast<std::uint32_t>(m_ImageAvgFrameCount), ring_is_full);
    ++m_ImageAvgFrameIndex;
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "m_ImageAvgFrameCount:%4d  m_ImageAvgFrameIndex:%4d ", m_ImageAvgFrameCount,
            m_ImageAvgFrameIndex);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    return true;
}

}  // namespace zel
