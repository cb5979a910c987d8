/// @file
/// Frames of a running camera as a range.
#ifndef ZEL_LAYER_STREAM_H
#define ZEL_LAYER_STREAM_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>

#include "zel/Camera.h"

namespace zel {

/// What a stream hands over.
struct StreamOptions {
    std::uint64_t frames = 0;              ///< it ends after so many; 0: it does not
    Order order = Order::every;            ///< each frame, or the newest one
    std::chrono::milliseconds timeout{0};  ///< for each frame; 0: from exposure and frame time
};

/// An input range of frames: it starts the camera when it is not running, and stops it again at the end.
///
///     for (zel::Frame& frame : zel::every_frame(camera, 100)) use(frame);
///
/// A frame goes back to the pool when the next one is asked for, unless it was moved away. The range ends after its
/// frames, at the end of a sequence and when Camera::interrupt() is called; where no frame comes for another reason it
/// throws Error (timeout or link_lost) with that reason. The camera must outlive it.
class FrameStream {
  public:
    /// Nothing is started before begin(). The camera must outlive the stream.
    FrameStream(Camera& camera, const StreamOptions& options) : m_Camera(&camera), m_Options(options) {}
    ~FrameStream() {
        if (m_Started) m_Camera->stop();
    }
    /// Goes on where the other one was, whose iterators are no longer of use.
    FrameStream(FrameStream&& other) noexcept
        : m_Camera(other.m_Camera),
          m_Options(other.m_Options),
          m_Frame(std::move(other.m_Frame)),
          m_Count(other.m_Count),
          m_Started(std::exchange(other.m_Started, false)),
          m_AtEnd(other.m_AtEnd) {}
    /// The two change places, and their iterators are no longer of use.
    FrameStream& operator=(FrameStream&& other) noexcept {
        std::swap(m_Camera, other.m_Camera);
        std::swap(m_Options, other.m_Options);
        std::swap(m_Frame, other.m_Frame);
        std::swap(m_Count, other.m_Count);
        std::swap(m_Started, other.m_Started);
        std::swap(m_AtEnd, other.m_AtEnd);
        return *this;
    }

    /// Where the range is.
    class Iterator {
      public:
        using iterator_concept = std::input_iterator_tag;  ///< it goes forward once
        using difference_type = std::ptrdiff_t;            ///< as iterators have it
        using value_type = Frame;                          ///< what it points to

        Iterator() = default;
        /// For FrameStream.
        explicit Iterator(FrameStream* stream) : m_Stream(stream) {}
        /// The frame that came last; taking the next one gives it back unless it was moved away.
        Frame& operator*() const { return m_Stream->m_Frame; }
        /// The same.
        Frame* operator->() const { return &m_Stream->m_Frame; }
        /// Waits for the next frame.
        Iterator& operator++() {
            m_Stream->advance();
            return *this;
        }
        /// The same.
        void operator++(int) { ++*this; }
        /// Whether there are no more.
        bool operator==(std::default_sentinel_t) const { return m_Stream->m_AtEnd; }

      private:
        FrameStream* m_Stream = nullptr;
    };

    /// Starts the camera when it is not running and waits for the first frame.
    Iterator begin() {
        if (!m_Camera->running()) {
            m_Camera->start();
            m_Started = true;
        }
        advance();
        return Iterator(this);
    }
    /// What the iterator is compared with.
    std::default_sentinel_t end() const { return {}; }
    /// Frames handed over so far.
    std::uint64_t count() const { return m_Count; }

  private:
    void advance() {
        m_Frame.reset();
        m_AtEnd = m_Options.frames > 0 && m_Count >= m_Options.frames;
        if (m_AtEnd) return;
        const auto timeout = m_Options.timeout.count() > 0 ? m_Options.timeout : m_Camera->frame_timeout();
        FrameResult result = m_Camera->wait_frame(timeout, m_Options.order);
        if (!result) {
            m_AtEnd = true;
            const Reason reason = result.reason();
            if (reason == Reason::sequence_over || reason == Reason::interrupted) return;
            m_Camera->throw_no_frame(result.no_frame());
        }
        m_Frame = result.take();
        ++m_Count;
    }

    Camera* m_Camera;
    StreamOptions m_Options;
    Frame m_Frame;
    std::uint64_t m_Count = 0;
    bool m_Started = false;
    bool m_AtEnd = false;
};

/// Each frame in order; `frames` of them, 0 for as many as come.
inline FrameStream every_frame(Camera& camera, std::uint64_t frames = 0) {
    return {camera, {frames, Order::every, std::chrono::milliseconds(0)}};
}

/// The newest frame whenever the application is ready for one; older ones that wait are passed over and counted
/// (Camera::skipped()).
inline FrameStream newest_frame(Camera& camera, std::uint64_t frames = 0) {
    return {camera, {frames, Order::newest, std::chrono::milliseconds(0)}};
}

}  // namespace zel

#endif
