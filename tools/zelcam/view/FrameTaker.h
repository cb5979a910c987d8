// The thread that takes every frame of the camera. All it does with one is to put it where the others find it, so that
// nobody who looks can make it late.
#ifndef ZELCAM_FRAMETAKER_H
#define ZELCAM_FRAMETAKER_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include "tools/zelcam/view/LiveFrame.h"
#include "zel/Camera.h"
#include "zel/FrameCounter.h"

namespace zelcam {

// What has arrived since the start of a run.
struct TakenFrames {
    std::uint64_t delivered = 0;
    std::uint64_t missing = 0;        // numbers between the first and the last one that did not come
    double rate = 0.0;                // frames a second that the camera sent, of the last two seconds
    double arrival_to_hand_ms = 0.0;  // of the last frame
};

class FrameTaker {
  public:
    // Somebody who needs every frame; called on the taking thread.
    using EveryFrame = std::function<void(const std::shared_ptr<const zel::Frame>&)>;

    FrameTaker(NewestFrame& newest, FrameLoans& loans);
    ~FrameTaker();
    FrameTaker(const FrameTaker&) = delete;
    FrameTaker& operator=(const FrameTaker&) = delete;

    // Takes the frames of a camera that has just been started.
    void Begin(std::shared_ptr<zel::Camera> camera);
    // Takes no more; when this returns the camera is not used here.
    void End();
    // Null: nobody needs them all.
    void SetEveryFrame(EveryFrame receiver);

    TakenFrames Taken() const;
    // The frames of all runs so far.
    std::uint64_t Sequence() const { return m_Sequence; }

  private:
    void Work();
    void Take(zel::Frame frame);
    void Count(const zel::FrameInfo& info);

    NewestFrame& m_Newest;
    FrameLoans& m_Loans;
    std::atomic<std::uint64_t> m_Sequence = 0;

    mutable std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::shared_ptr<zel::Camera> m_Camera;  // null: none is followed
    bool m_Inside = false;                  // the thread is using it
    bool m_Quit = false;
    std::shared_ptr<const EveryFrame> m_EveryFrame;
    zel::FrameCounter m_Counter;
    TakenFrames m_Taken;
    struct Arrival {
        std::uint32_t number;
        std::uint32_t ms;
    };
    std::deque<Arrival> m_Arrivals;
    std::thread m_Thread;
};

}  // namespace zelcam

#endif
