#include "bindings/gstreamer/FrameBuffer.h"

#include <algorithm>
#include <memory>
#include <span>
#include <utility>

namespace zel::gst {

namespace {

constexpr unsigned kChannels = 3;

unsigned BitsToFill(const Frame& frame, bool scale) { return scale && frame.bits() < 16 ? 16 - frame.bits() : 0; }

void ShiftUp(std::span<const std::uint16_t> from, std::uint16_t* to, unsigned bits) {
    std::ranges::transform(from, to,
                           [bits](std::uint16_t sample) { return static_cast<std::uint16_t>(sample << bits); });
}

void ShiftUpAndSwap(std::span<const std::uint16_t> from, std::uint16_t* to, unsigned bits) {
    std::ranges::transform(from, to, [bits](std::uint16_t sample) {
        return GUINT16_SWAP_LE_BE(static_cast<std::uint16_t>(sample << bits));
    });
}

// The upper eight of the significant bits.
void ToBytes(std::span<const std::uint16_t> from, std::uint8_t* to, unsigned bits) {
    if (bits >= 8) {
        std::ranges::transform(
            from, to, [down = bits - 8](std::uint16_t sample) { return static_cast<std::uint8_t>(sample >> down); });
    } else {
        std::ranges::transform(
            from, to, [up = 8 - bits](std::uint16_t sample) { return static_cast<std::uint8_t>(sample << up); });
    }
}

void SwapRedAndBlue(std::span<const std::uint8_t> from, std::uint8_t* to) {
    for (std::size_t i = 0; i + kChannels <= from.size(); i += kChannels) {
        to[i] = from[i + 2];
        to[i + 1] = from[i + 1];
        to[i + 2] = from[i];
    }
}

void CopyRow(const Frame& frame, unsigned y, bool scale, GstVideoFormat format, std::uint8_t* to) {
    const std::size_t row_bytes = std::size_t{frame.width()} * kChannels;
    switch (format) {
        case GST_VIDEO_FORMAT_GRAY16_LE:
            return ShiftUp(frame.row(y), reinterpret_cast<std::uint16_t*>(to), BitsToFill(frame, scale));
        case GST_VIDEO_FORMAT_GRAY16_BE:
            return ShiftUpAndSwap(frame.row(y), reinterpret_cast<std::uint16_t*>(to), BitsToFill(frame, scale));
        case GST_VIDEO_FORMAT_GRAY8:
            return ToBytes(frame.row(y), to, frame.bits());
        case GST_VIDEO_FORMAT_BGR:
            std::ranges::copy(frame.color8().subspan(y * row_bytes, row_bytes), to);
            return;
        default:
            return SwapRedAndBlue(frame.color8().subspan(y * row_bytes, row_bytes), to);
    }
}

}  // namespace

bool LiesAs(const GstVideoInfo& format, const Frame& frame) {
    const bool grey = GST_VIDEO_INFO_FORMAT(&format) == GST_VIDEO_FORMAT_GRAY16_LE;
    if (!grey && GST_VIDEO_INFO_FORMAT(&format) != GST_VIDEO_FORMAT_BGR) return false;
    const std::size_t row_bytes = frame.width() * (grey ? sizeof(std::uint16_t) : kChannels);
    return static_cast<std::size_t>(GST_VIDEO_INFO_PLANE_STRIDE(&format, 0)) == row_bytes;
}

GstBuffer* Lend(Frame frame, bool scale) {
    const bool color = frame.color().has_value();
    const std::size_t size = color ? frame.color_bytes().size() : frame.pixels().size_bytes();
    if (const unsigned bits = BitsToFill(frame, scale); !color && bits > 0) {
        ShiftUp(frame.pixels(), frame.pixels().data(), bits);
    }
    void* const memory = color ? frame.native()->color_pixels : frame.pixels().data();
    auto held = std::make_unique<Frame>(std::move(frame));
    return gst_buffer_new_wrapped_full(static_cast<GstMemoryFlags>(0), memory, size, 0, size, held.release(),
                                       [](gpointer lent) { delete static_cast<Frame*>(lent); });
}

bool Copy(const Frame& frame, bool scale, const GstVideoInfo& format, GstBuffer* buffer) {
    GstVideoFrame target;
    if (!gst_video_frame_map(&target, &format, buffer, GST_MAP_WRITE)) return false;
    auto* row = static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&target, 0));
    for (unsigned y = 0; y < frame.height(); ++y) {
        CopyRow(frame, y, scale, GST_VIDEO_INFO_FORMAT(&format), row);
        row += GST_VIDEO_FRAME_PLANE_STRIDE(&target, 0);
    }
    gst_video_frame_unmap(&target);
    return true;
}

}  // namespace zel::gst
