/// @file
/// One frame, on loan from its camera's pool.
#ifndef ZEL_LAYER_FRAME_H
#define ZEL_LAYER_FRAME_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "ZelImage.h"
#include "zel/Color.h"
#include "zel/Region.h"

namespace zel {

namespace detail {

/// Who a frame goes back to.
class FrameOwner {
  public:
    virtual void give_back(ZelColorImage* image, bool color) noexcept = 0;

  protected:
    ~FrameOwner() = default;
};

}  // namespace detail

/// What a frame says about itself beside its samples.
struct FrameInfo {
    unsigned width = 0;                    ///< pixels of a row
    unsigned height = 0;                   ///< rows
    unsigned bits = 0;                     ///< significant bits of a grey sample; the largest legal value is 2^bits - 1
    unsigned number = 0;                   ///< number of the frame since the start, from 0 on
    std::chrono::microseconds exposure{};  ///< exposure time in force
    Region region;                         ///< of the sensor, at the start of the acquisition
    Binning binning;                       ///< at the start of the acquisition
    /// Milliseconds of the system's monotonic clock (on Windows timeGetTime), modulo 2^32: when the complete frame
    /// arrived, and when it was handed over.
    std::uint32_t arrival_ms = 0;
    std::uint32_t hand_over_ms = 0;     ///< when it was handed over, by the same clock
    std::optional<ColorSetting> color;  ///< how its color picture was made; empty: it has none
};

/// A frame that the application owns: it stays after the camera is closed. Frame::copy() makes it.
struct FrameCopy {
    FrameInfo info;                     ///< what the frame says about itself
    std::vector<std::uint16_t> pixels;  ///< width * height samples, row after row
    std::vector<std::byte> color;       ///< the color picture, as Frame::color_bytes() has it
};

/// A frame on loan from its camera's pool, given back when this object dies. It keeps its camera's memory: a camera is
/// closed when its last frame has gone back. May be moved to another thread; one thread at a time uses it.
class Frame {
  public:
    /// No frame.
    Frame() noexcept = default;
    /// Takes over a record that was handed out. color: with its color picture, made like this.
    Frame(std::shared_ptr<detail::FrameOwner> owner, ZelImage* image, std::optional<ColorSetting> color,
          std::chrono::nanoseconds hand_over) noexcept
        : m_Owner(std::move(owner)),
          m_Image(static_cast<ZelColorImage*>(image)),
          m_Color(color),
          m_HandOver(hand_over) {}
    ~Frame() { reset(); }
    /// The record goes over to the new object.
    Frame(Frame&& other) noexcept
        : m_Owner(std::move(other.m_Owner)),
          m_Image(std::exchange(other.m_Image, nullptr)),
          m_Color(other.m_Color),
          m_HandOver(other.m_HandOver) {}
    /// Gives the record back that was here.
    Frame& operator=(Frame&& other) noexcept {
        if (this == &other) return *this;
        reset();
        m_Owner = std::move(other.m_Owner);
        m_Image = std::exchange(other.m_Image, nullptr);
        m_Color = other.m_Color;
        m_HandOver = other.m_HandOver;
        return *this;
    }

    /// Whether there is a frame. Everything below needs one.
    explicit operator bool() const noexcept { return m_Image != nullptr; }
    /// Gives the frame back before this object dies.
    void reset() noexcept {
        if (m_Image) m_Owner->give_back(std::exchange(m_Image, nullptr), m_Color.has_value());
        m_Owner.reset();
    }

    /// Pixels of a row.
    unsigned width() const { return m_Image->w; }
    /// Rows.
    unsigned height() const { return m_Image->h; }
    /// Significant bits of a grey sample.
    unsigned bits() const { return m_Image->bit_depth; }
    /// Number of the frame since the start; a hole is a lost frame.
    unsigned number() const { return m_Image->image_number; }
    /// Exposure time in force when it was taken.
    std::chrono::microseconds exposure() const { return std::chrono::microseconds(m_Image->exposure_time_us); }
    /// All of it, as a value that outlives the frame.
    FrameInfo info() const {
        FrameInfo info{m_Image->w, m_Image->h, m_Image->bit_depth, m_Image->image_number, exposure(), {}, {}, 0, 0, {}};
        info.region = {m_Image->x_origin, m_Image->y_origin, m_Image->x_pixels, m_Image->y_pixels};
        info.binning = {m_Image->x_bin, m_Image->y_bin};
        info.arrival_ms = m_Image->arrival_time_ms;
        info.hand_over_ms = m_Image->hand_over_time_ms;
        info.color = m_Color;
        return info;
    }

    /// The grey samples, width() * height() of them, row after row. (With a color picture: the mosaic.)
    std::span<std::uint16_t> pixels() { return {m_Image->pixels, count()}; }
    /// The same for a frame that is only read.
    std::span<const std::uint16_t> pixels() const { return {m_Image->pixels, count()}; }
    /// One row of them, 0 at the top.
    std::span<const std::uint16_t> row(unsigned y) const { return pixels().subspan(std::size_t{y} * width(), width()); }

    /// How the color picture was made; empty when there is none.
    const std::optional<ColorSetting>& color() const { return m_Color; }
    /// The color picture: width() * height() pixels of blue, green, red (and 255), row after row, without padding; two
    /// bytes a channel in rgb16. Empty when there is none.
    std::span<const std::byte> color_bytes() const {
        if (!m_Color || !m_Image->color_pixels) return {};
        const std::uint64_t size = std::uint64_t{count()} * m_Color->channels() * m_Color->bytes_per_channel();
        if (size > m_Image->color_size_in_bytes) return {};
        return {static_cast<const std::byte*>(m_Image->color_pixels), static_cast<std::size_t>(size)};
    }
    /// The same as samples of 16 bits; empty in the other formats.
    std::span<const std::uint16_t> color16() const {
        const auto bytes = color_bytes();
        if (bytes.empty() || m_Color->format != ColorFormat::rgb16) return {};
        return {static_cast<const std::uint16_t*>(m_Image->color_pixels), bytes.size() / 2};
    }
    /// The same as samples of 8 bits; empty in rgb16.
    std::span<const std::uint8_t> color8() const {
        const auto bytes = color_bytes();
        if (bytes.empty() || m_Color->format == ColorFormat::rgb16) return {};
        return {static_cast<const std::uint8_t*>(m_Image->color_pixels), bytes.size()};
    }

    /// From the camera's notification to the moment the frame was in hand, by the steady clock.
    std::chrono::nanoseconds hand_over() const { return m_HandOver; }

    /// The frame's samples and facts in memory of their own.
    FrameCopy copy() const {
        const auto grey = std::as_const(*this).pixels();
        const auto color = color_bytes();
        return {info(), {grey.begin(), grey.end()}, {color.begin(), color.end()}};
    }

    /// The SDK's record, which stays this frame's.
    ZelColorImage* native() const { return m_Image; }

  private:
    std::size_t count() const { return std::size_t{m_Image->w} * m_Image->h; }

    std::shared_ptr<detail::FrameOwner> m_Owner;
    ZelColorImage* m_Image = nullptr;
    std::optional<ColorSetting> m_Color;
    std::chrono::nanoseconds m_HandOver{};
};

}  // namespace zel

#endif
