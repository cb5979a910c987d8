// Frames on their way from the camera to everybody who wants them.
#ifndef ZELCAM_LIVEFRAME_H
#define ZELCAM_LIVEFRAME_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "tools/zelcam/view/Picture.h"
#include "zel/Frame.h"

namespace zelcam {

struct LiveFrame {
    zel::Frame frame;
    std::uint64_t sequence = 0;  // counted from 1 on, through all runs
    double hand_over_ms = 0.0;   // since 1970

    // The color picture's, else the grey ones.
    Samples ViewSamples() const {
        const auto color = frame.color16();
        if (!color.empty()) return {color, frame.width(), frame.height(), 3, frame.color()->output_bits()};
        return GreySamples();
    }
    Samples GreySamples() const { return {frame.pixels(), frame.width(), frame.height(), 1, frame.bits()}; }
};

using LiveFramePointer = std::shared_ptr<const LiveFrame>;

// Milliseconds since 1970 by this computer's clock.
inline double WallClockMs() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(now).count();
}

// Knows how many frames are out, so that whoever closes the camera can wait until all are back.
class FrameLoans {
  public:
    LiveFramePointer Lend(LiveFrame frame) {
        auto owned = std::make_unique<LiveFrame>(std::move(frame));
        {
            const std::lock_guard lock(m_State->mutex);
            ++m_State->out;
        }
        return LiveFramePointer(owned.release(), [state = m_State](const LiveFrame* back) {
            delete back;
            const std::lock_guard lock(state->mutex);
            --state->out;
            state->changed.notify_all();
        });
    }
    // False when some are still out after so long.
    bool WaitUntilBack(std::chrono::milliseconds timeout) const {
        std::unique_lock lock(m_State->mutex);
        return m_State->changed.wait_for(lock, timeout, [&] { return m_State->out == 0; });
    }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable changed;
        int out = 0;
    };
    std::shared_ptr<State> m_State = std::make_shared<State>();
};

// Wakes a thread that has more than one thing to wait for.
class Bell {
  public:
    using Clock = std::chrono::steady_clock;

    void Ring() {
        const std::lock_guard lock(m_Mutex);
        ++m_Rings;
        m_Changed.notify_all();
    }
    // Waits for a ring after the one that was heard last; hears it.
    void WaitUntil(std::uint64_t& heard, Clock::time_point deadline) {
        std::unique_lock lock(m_Mutex);
        m_Changed.wait_until(lock, deadline, [&] { return m_Rings != heard; });
        heard = m_Rings;
    }

  private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::uint64_t m_Rings = 0;
};

// The newest frame, for whoever looks. Putting one in costs a swap.
class NewestFrame {
  public:
    explicit NewestFrame(Bell& bell) : m_Bell(bell) {}

    void Put(LiveFramePointer frame) {
        {
            const std::lock_guard lock(m_Mutex);
            m_Frame.swap(frame);
        }
        m_Bell.Ring();
        // The one before goes back here, unless somebody looks at it.
    }
    LiveFramePointer Get() const {
        const std::lock_guard lock(m_Mutex);
        return m_Frame;
    }

    // The newest one once it has this number in the sequence of all; null when it did not come in time.
    LiveFramePointer WaitFor(std::uint64_t sequence, std::chrono::milliseconds timeout) const {
        const auto deadline = Bell::Clock::now() + timeout;
        for (std::uint64_t heard = 0; Bell::Clock::now() < deadline; m_Bell.WaitUntil(heard, deadline)) {
            LiveFramePointer frame = Get();
            if (frame && frame->sequence >= sequence) return frame;
        }
        return nullptr;
    }

  private:
    Bell& m_Bell;
    mutable std::mutex m_Mutex;
    LiveFramePointer m_Frame;
};

}  // namespace zelcam

#endif
