// The post-processing steps of a frame, in the order in which they run: unpack, tap reorder, region, binning, average.
// Every step checks the geometry against the buffers it is about to touch; the kernels do the work.
#include <algorithm>
#include <cstring>
#include <utility>

#include "image/ZelCameraControlImpl.h"
#include "kernels/ScalarKernels.h"

namespace zel {

namespace {
namespace kernel = kernels::scalar;

constexpr int kLargestBinning = 128;
constexpr unsigned kBytesPerSample = 2;
constexpr int kEBus = 4;
constexpr const char* kDashes = "----------------------------------------------------------------";

// The record's samples as they may be touched: as many as the frame has, or none when the buffer holds fewer.
std::span<std::uint16_t> Samples(const ZelImageInternal& image, std::uint64_t count) {
    if (!image.pixels || count * kBytesPerSample > image.buffer_size) return {};
    return {image.pixels, static_cast<std::size_t>(count)};
}

std::uint64_t Area(unsigned w, unsigned h) { return std::uint64_t{w} * h; }
}  // namespace

bool ZelCameraControlImpl::PostProcessImage(ZelImageInternal* image) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessImage";
    ZEL_SCOPE_TIMER(timer, "PostProcessImage", m_Logger, kFunction);
    const ZelRoiBin roi = Geometry().roi;
    if (!PostProcessTapBalance(image)) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "Failed to tap balance the image!");
    }
    if (TransportInterfaceType() == kEBus) {
        PostProcessSubImage(image, roi.XOrigin, roi.YOrigin, roi.XPixels, roi.YPixels);
    } else {
        PostProcessSubImage(image, roi.XOrigin, roi.YOrigin, roi.XOrigin + roi.XPixels, roi.YOrigin + roi.YPixels);
    }
    PostProcessBinning(image, static_cast<int>(roi.YBin), static_cast<int>(roi.XBin));
    if (m_ImageAvgFrameCountMax > 0) PostProcessAverageImage(image);
    return true;
}

bool ZelCameraControlImpl::PostProcessTapBalance(ZelImageInternal* image) {
    ZEL_SCOPE_TIMER(timer, "PostProcessTapBalance", m_Logger, "ZelCameraControlImpl::PostProcessTapBalance");
    if (!image) return false;
    const int taps = Geometry().taps;
    if (taps >= 2 && !IsUsbOrCameraLink(TransportInterfaceType()) && !UnpackFrame(image)) return false;
    return ReorderTaps(image, taps);
}

// Two 12-bit samples in three bytes become two 16-bit ones. The unpacked frame goes into the spare buffer, which
// changes places with the record's.
bool ZelCameraControlImpl::UnpackFrame(ZelImageInternal* image) {
    constexpr const char* kFunction = "ZelCameraControlImpl::PostProcessTapBalance";
    const std::uint64_t count = Area(image->w, image->h);
    const std::uint64_t bytes = count * kBytesPerSample;
    if (!image->pixels || kernel::PackedSize12(static_cast<std::size_t>(count)) > image->buffer_size) return false;
    // A record keeps a buffer of its own size, so the spare has exactly the frame's.
    if (m_SpareBuffer.capacity != bytes) m_SpareBuffer.Release();
    if (bytes > 0xFFFFFFFFu || !m_SpareBuffer.Reserve(static_cast<std::size_t>(bytes))) {
        ZEL_LOG(m_Logger, kLogError, kFunction, "***ERROR***: ptr is 0");
        ZEL_LOG(m_Logger, kLogError, kFunction,
                "***ERROR***: m_ImageManager.PixelBufferAllocate(total_num_bytes:%d) failed", static_cast<int>(bytes));
        return true;  // the packed frame goes on through the other steps
    }
    const std::span packed(reinterpret_cast<const std::uint8_t*>(image->pixels), image->buffer_size);
    kernel::Unpack12(packed, {m_SpareBuffer.pixels, static_cast<std::size_t>(count)});
    const std::size_t old_capacity = image->buffer_size;
    std::swap(image->pixels, m_SpareBuffer.pixels);
    m_SpareBuffer.capacity = old_capacity;
    image->size_in_bytes = static_cast<unsigned>(bytes);
    image->buffer_size = static_cast<unsigned>(bytes);
    return true;
}

bool ZelCameraControlImpl::ReorderTaps(ZelImageInternal* image, int taps) {
    if (taps != 2 && taps != 4) return true;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (frame.empty()) return false;
    const unsigned w = image->w;
    if (taps == 2) {
        try {
            m_RowScratch.resize(std::max<std::size_t>(m_RowScratch.size(), w));
        } catch (const std::exception&) {
            return false;
        }
        const std::span scratch = std::span(m_RowScratch).first(w);
        for (unsigned row = 0; row < image->h; ++row) {
            const std::span samples = frame.subspan(std::size_t{row} * w, w);
            kernel::ReorderRowTwoTaps(samples, scratch);
            std::memcpy(samples.data(), scratch.data(), samples.size_bytes());
        }
        return true;
    }
    if (!m_ReorderBuffer.pixels || m_ReorderBuffer.capacity < image->size_in_bytes) return false;
    if (image->size_in_bytes > image->buffer_size || frame.size_bytes() > m_ReorderBuffer.capacity) return false;
    // On purpose: a frame of fewer than two rows is not reordered, but the scratch is copied over it all the same.
    if (image->h >= 2) kernel::ReorderFourTaps(frame, {m_ReorderBuffer.pixels, frame.size()}, w, image->h);
    std::memcpy(image->pixels, m_ReorderBuffer.pixels, image->size_in_bytes);
    return true;
}

bool ZelCameraControlImpl::PostProcessSubImage(ZelImageInternal* image, unsigned c0, unsigned r0, unsigned c1,
                                               unsigned r1) {
    ZEL_SCOPE_TIMER(timer, "PostProcessSubImage", m_Logger, "ZelCameraControlImpl::PostProcessSubImage");
    const int type = TransportInterfaceType();
    if (IsUsbOrCameraLink(type)) return CropByCorners(image, c0, r0, c1, r1);
    if (type == kEBus) return CropBySize(image, c0, r0, c1, r1);
    return true;
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
    if (height < image->h) kernel::Crop(frame, image->w, 0, r0, image->w, height);
    image->h = height;
    if (width < image->w) kernel::Crop(frame, image->w, c0, 0, width, height);
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
    kernel::Crop(frame, image->w, c0, r0, width, height);
    image->w = width;
    image->h = height;
    image->num_pixels = width * height;
    image->size_in_bytes = image->bytes_per_pixel * width * height;
    return true;
}

bool ZelCameraControlImpl::PostProcessBinning(ZelImageInternal* image, int vertical, int horizontal) {
    if (!image) return false;
    const int by = std::max(vertical, 1);
    const int bx = std::max(horizontal, 1);
    if (by > kLargestBinning || bx > kLargestBinning) return false;
    if (by == 1 && bx == 1) return true;
    if (image->bytes_per_pixel != kBytesPerSample) return false;
    const std::span frame = Samples(*image, Area(image->w, image->h));
    if (frame.empty()) return false;
    const unsigned ceiling = image->bit_depth >= 16 ? 0xFFFFu : (1u << image->bit_depth) - 1;
    if (bx > 1) {
        kernel::BinHorizontal(frame, image->w, image->h, static_cast<unsigned>(bx), ceiling);
        image->w /= static_cast<unsigned>(bx);
    }
    if (by > 1) {
        kernel::BinVertical(frame, image->w, image->h, static_cast<unsigned>(by), ceiling);
        image->h /= static_cast<unsigned>(by);
    }
    if (!IsUsbOrCameraLink(TransportInterfaceType())) {
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
    if (bytes != m_ImageAvgFrameBytes) {
        m_ImageAvgFrameBytes = bytes;
        m_ImageAvgFrameCount = 0;
        m_ImageAvgFrameIndex = 0;
    }
    if (m_ImageAvgFrameIndex >= m_ImageAvgFrameCountMax) m_ImageAvgFrameIndex = 0;
    std::memcpy(m_ImageAvgRing[static_cast<std::size_t>(m_ImageAvgFrameIndex)].data(), image->pixels, bytes);
    if (m_ImageAvgFrameCount < m_ImageAvgFrameCountMax) ++m_ImageAvgFrameCount;
    if (m_ImageAvgFrameCount >= 2) AverageRing(frame);
    ++m_ImageAvgFrameIndex;
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "m_ImageAvgFrameCount:%4d  m_ImageAvgFrameIndex:%4d ", m_ImageAvgFrameCount,
            m_ImageAvgFrameIndex);
    ZEL_LOG(m_Logger, kLogTrace, kFunction, "%s", kDashes);
    return true;
}

void ZelCameraControlImpl::AverageRing(std::span<std::uint16_t> frame) {
    m_ImageAvgSlots.clear();
    for (int i = 0; i < m_ImageAvgFrameCount; ++i) {
        m_ImageAvgSlots.push_back(m_ImageAvgRing[static_cast<std::size_t>(i)].data());
    }
    kernel::Average(m_ImageAvgSlots, frame);
}

}  // namespace zel
