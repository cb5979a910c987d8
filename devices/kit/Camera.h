// One camera at the end of a link: its back end, its conversation with the host, and whether it is plugged in. It lives
// as long as the library is in use; transports come and go.
//
// Locks. One is held in a conversation, and while the back end is asked; run and replies have their own. None is held
// while the SDK is called.
#ifndef DEVICES_KIT_CAMERA_H
#define DEVICES_KIT_CAMERA_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "devices/kit/BackEnd.h"
#include "devices/kit/Conversation.h"
#include "devices/kit/ReplyStream.h"
#include "devices/kit/RunControl.h"
#include "platform/Mutex.h"

namespace zel::kit {

// Frames of the camera since it was made, by what became of them.
struct FrameCounts {
    std::atomic<std::uint64_t> delivered{0};
    std::atomic<std::uint64_t> lost_on_link{0};
    std::atomic<std::uint64_t> no_buffer{0};
};

class Camera {
  public:
    explicit Camera(std::unique_ptr<BackEnd> back_end);
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    Description Describe() const { return m_BackEnd->Describe(); }

    // The host's side of the link. Send answers the number of bytes that were taken.
    int Send(std::span<const std::uint8_t> datagram);
    int Receive(std::span<std::uint8_t> into, int timeout_ms);
    // A fresh link: nothing is left to be received. Answers the back end's code.
    int Connect();
    void Disconnect();
    void SetFrameCount(int frames);
    // The length of the run that is on, counted from its start.
    void SetRunLength(int frames);

    bool Plugged() const { return m_Control.Plugged(); }
    // False when nothing changed. Plugging in powers the camera up.
    bool SetPlugged(bool plugged);
    // Unplugs the camera and tells so.
    void Vanish();
    // Called without a lock when the camera vanished by itself.
    void SetVanished(std::function<void()> vanished) { m_Vanished = std::move(vanished); }

    // An operation of the transport has come.
    enum class Operation { kConnect, kStart, kStop, kClose };
    virtual void Passing(Operation operation) { static_cast<void>(operation); }

    RunControl& Control() { return m_Control; }
    BackEnd& Device() { return *m_BackEnd; }
    FrameCounts& Frames() { return m_Frames; }
    std::uint64_t FrameBytes() const { return m_FrameBytes; }  // 16-bit samples of the whole sensor

  protected:
    struct Answer {
        std::vector<std::uint8_t> bytes;
        std::chrono::steady_clock::time_point ready;
        bool byte_by_byte = false;
        int taken = 0;        // bytes of the datagram
        bool unplug = false;  // the camera is gone instead
    };
    // One exchange, in which nobody else talks to the camera.
    virtual Answer Exchange(std::span<const std::uint8_t> datagram) ZEL_REQUIRES(m_TalkLock);
    Conversation& Talk() ZEL_REQUIRES(m_TalkLock) { return m_Conversation; }
    // Switches a camera on that lost its power meanwhile.
    void WakeUp() ZEL_REQUIRES(m_TalkLock);

    platform::Mutex m_TalkLock;

  private:
    bool Unplug();

    const std::unique_ptr<BackEnd> m_BackEnd;
    mutable RunControl m_Control;
    ReplyStream m_Replies;
    Conversation m_Conversation ZEL_GUARDED_BY(m_TalkLock);
    std::atomic<bool> m_PowerLost{true};
    std::atomic<std::uint64_t> m_FrameBytes{0};
    FrameCounts m_Frames;
    std::function<void()> m_Vanished;
};

}  // namespace zel::kit

#endif
