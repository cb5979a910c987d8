/// @file
/// Why no frame came.
#ifndef ZEL_LAYER_NOFRAME_H
#define ZEL_LAYER_NOFRAME_H

#include <chrono>
#include <cstdio>
#include <string>

namespace zel {

/// The reason why a wait for a frame ended without one.
enum class Reason {
    link_lost,           ///< the camera was unplugged or switched off
    interrupted,         ///< Camera::interrupt() was called
    sequence_over,       ///< the camera has taken the frames that it was started for
    no_buffers,          ///< the pool has no image buffers
    buffers_held,        ///< the application holds every image buffer
    waits_for_hardware,  ///< the camera waits for a trigger at its input
    not_started,         ///< the camera is not running
    exposing,            ///< the exposure takes longer than the wait
    waits_for_software,  ///< no software trigger, or it brought no frame
    silent,              ///< the camera says that it is running and sends nothing
};

/// The state a camera was in when a wait ended without a frame.
struct WaitState {
    bool link_lost = false;                ///< the camera was unplugged or switched off
    bool interrupted = false;              ///< Camera::interrupt() was called
    bool started = false;                  ///< the camera says that it is running
    bool waits_for_hardware = false;       ///< the trigger input starts frames
    bool waits_for_software = false;       ///< Camera::trigger() starts frames
    std::chrono::microseconds exposure{};  ///< exposure time that is set
    std::chrono::milliseconds waited{};    ///< how long the wait was
    int buffers = 0;                       ///< size of the image pool
    int buffers_held = 0;                  ///< how many of them the application holds
    long long sequence = 0;                ///< frames after which the camera stops by itself; 0: it does not
};

/// A wait that ended without a frame: the state, the reason, and both in words.
class NoFrame {
  public:
    NoFrame() = default;
    /// Of a camera in this state.
    explicit NoFrame(const WaitState& state) : m_State(state) {}

    /// The state that the camera was in.
    const WaitState& state() const { return m_State; }

    /// The most telling reason of those that hold.
    Reason reason() const {
        if (m_State.link_lost) return Reason::link_lost;
        if (m_State.interrupted) return Reason::interrupted;
        if (!m_State.started && m_State.sequence > 0) return Reason::sequence_over;
        if (m_State.buffers <= 0) return Reason::no_buffers;
        if (m_State.buffers_held >= m_State.buffers) return Reason::buffers_held;
        if (m_State.waits_for_hardware) return Reason::waits_for_hardware;
        if (!m_State.started) return Reason::not_started;
        if (m_State.exposure >= m_State.waited) return Reason::exposing;
        if (m_State.waits_for_software) return Reason::waits_for_software;
        return Reason::silent;
    }

    /// The reason as the end of a sentence: "the camera is waiting for a trigger at its input".
    std::string why() const {
        switch (reason()) {
            case Reason::link_lost:
                return "the link to the camera is lost";
            case Reason::interrupted:
                return "the wait was interrupted";
            case Reason::sequence_over:
                return "its sequence of " + std::to_string(m_State.sequence) +
                       (m_State.sequence == 1 ? " frame" : " frames") + " is over";
            case Reason::no_buffers:
                return "there are no image buffers";
            case Reason::buffers_held:
                return "all " + std::to_string(m_State.buffers) + " image buffers are held by the application";
            case Reason::waits_for_hardware:
                return "the camera is waiting for a trigger at its input";
            case Reason::not_started:
                return "the camera is not started";
            case Reason::exposing:
                return "the exposure of " + exposure_text() + " is not over";
            case Reason::waits_for_software:
                return "the software trigger brought no frame (exposure of " + exposure_text() + ")";
            case Reason::silent:
                return "the camera is running (exposure of " + exposure_text() + ") and sends nothing";
        }
        return "unknown";
    }

    /// What the program's author can do about it.
    std::string hint() const {
        switch (reason()) {
            case Reason::link_lost:
                return "plug the camera in and start again";
            case Reason::interrupted:
                return "";
            case Reason::sequence_over:
                return "start it for more frames";
            case Reason::no_buffers:
                return "set NUM_IMAGE_BUFFERS to 8 before the start";
            case Reason::buffers_held:
                return "let go of frames, or set NUM_IMAGE_BUFFERS higher before the start";
            case Reason::waits_for_hardware:
                return "send a trigger, or set HW_TRIGGER_ACTIVE to 0 before the start";
            case Reason::not_started:
                return "start it";
            case Reason::exposing:
                return "wait longer";
            case Reason::waits_for_software:
            case Reason::silent:
                return "check the cable, or wait longer";
        }
        return "";
    }

  private:
    std::string exposure_text() const {
        const long long us = m_State.exposure.count();
        char text[40];
        std::snprintf(text, sizeof text, "%.*f ms", us % 1000 == 0 ? 0 : 3, static_cast<double>(us) / 1000.0);
        return text;
    }

    WaitState m_State;
};

}  // namespace zel

#endif
