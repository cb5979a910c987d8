// Waiting for the next frame of a running acquisition.
#ifndef ZELCAM_FRAMEWAITER_H
#define ZELCAM_FRAMEWAITER_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

class ZelCamera;
class ZelColorImage;
class ZelImage;

namespace zelcam {

enum class FrameMode {
    kEvery,   // every frame in order
    kNewest,  // the newest frame; older ones that wait are passed over
};

// A frame on loan from the camera's pool, given back when this object dies.
class Frame {
  public:
    Frame() = default;
    Frame(ZelCamera* camera, ZelImage* image, bool color, double hand_over_us);
    ~Frame();
    Frame(Frame&& other) noexcept;
    Frame& operator=(Frame&& other) noexcept;

    explicit operator bool() const { return m_Image != nullptr; }
    ZelColorImage* operator->() const { return m_Image; }
    ZelColorImage* Get() const { return m_Image; }
    // Microseconds from the camera's notification to the moment the frame was in hand.
    double HandOverUs() const { return m_HandOverUs; }

  private:
    ZelCamera* m_Camera = nullptr;
    ZelColorImage* m_Image = nullptr;
    bool m_Color = false;
    double m_HandOverUs = 0.0;
};

// Made before the acquisition starts, destroyed after it has stopped.
class FrameWaiter {
  public:
    // Registers itself with the camera. color: frames are taken with their color picture. Throws Failure when the
    // camera refuses.
    FrameWaiter(ZelCamera* camera, FrameMode mode, bool color = false);
    ~FrameWaiter();
    FrameWaiter(const FrameWaiter&) = delete;
    FrameWaiter& operator=(const FrameWaiter&) = delete;

    // The next frame; an empty one when none came in time, the link is lost or the user wants to end.
    Frame Next(std::chrono::milliseconds timeout);

    bool LinkLost() const;
    // Frames that were passed over for newer ones.
    std::uint64_t Skipped() const;

  private:
    using Clock = std::chrono::steady_clock;

    static void Notified(int kind, void* context);
    static void ControlEvent(int event_code, void* context);
    bool WaitForNotification(Clock::time_point deadline, Clock::time_point& notified);
    ZelImage* Take();

    ZelCamera* m_Camera;
    FrameMode m_Mode;
    bool m_Color;
    mutable std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::deque<Clock::time_point> m_Notifications;  // one for each frame that is pending
    bool m_LinkLost = false;
    std::uint64_t m_Consumed = 0;
    std::uint64_t m_Taken = 0;
};

}  // namespace zelcam

#endif
