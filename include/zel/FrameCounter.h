/// @file
/// Counting the frames that did not reach the application, by cause.
#ifndef ZEL_LAYER_FRAMECOUNTER_H
#define ZEL_LAYER_FRAMECOUNTER_H

#include <cstdint>

namespace zel {

/// Frames that did not reach the application, by cause.
struct Drops {
    std::uint64_t link = 0;       ///< lost on the link, as the transport counts them
    std::uint64_t no_buffer = 0;  ///< arrived while no image buffer was free
    std::uint64_t skipped = 0;    ///< passed over on purpose for a newer frame
};

/// Follows the frames that are handed over: tells the causes of the holes between their numbers apart, and how fast the
/// camera sent them, holes included.
class FrameCounter {
  public:
    /// A frame was handed over. number: its number; arrival_ms: its arrival in milliseconds, modulo 2^32.
    void frame(std::uint32_t number, std::uint32_t arrival_ms) {
        // Numbers wrap at 2^32; one that goes back is a restart, not four thousand million lost frames.
        const std::uint32_t step = number - m_Last;
        if (m_Frames > 0 && step > 0 && step < 0x80000000u) m_Missing += step - 1;
        if (m_Frames == 0) m_FirstArrival = arrival_ms;
        m_LastArrival = arrival_ms;
        ++m_Frames;
        m_Last = number;
    }
    /// Frames passed over for a newer one so far.
    void set_skipped(std::uint64_t skipped) { m_Skipped = skipped; }
    /// Frames handed over so far.
    std::uint64_t frames() const { return m_Frames; }
    /// Numbers between the first and the last frame that were not handed over.
    std::uint64_t missing() const { return m_Missing; }
    /// Every missing frame that is not skipped or lost on the link found no free buffer. link_drops: what the transport
    /// counted (Camera::link_drops()).
    Drops count(std::uint64_t link_drops) const {
        const std::uint64_t known = link_drops + m_Skipped;
        return {link_drops, m_Missing > known ? m_Missing - known : 0, m_Skipped};
    }
    /// Frames per second that the camera sent; 0 when one millisecond saw the first and the last one, or a single one
    /// came.
    double camera_rate() const {
        const std::uint32_t span_ms = m_LastArrival - m_FirstArrival;
        return span_ms == 0 ? 0.0 : 1000.0 * static_cast<double>(m_Frames - 1 + m_Missing) / span_ms;
    }

  private:
    std::uint32_t m_Last = 0;
    std::uint32_t m_FirstArrival = 0;
    std::uint32_t m_LastArrival = 0;
    std::uint64_t m_Frames = 0;
    std::uint64_t m_Missing = 0;
    std::uint64_t m_Skipped = 0;
};

}  // namespace zel

#endif
