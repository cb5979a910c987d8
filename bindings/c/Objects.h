// What the handles of the C interface stand for.
#ifndef BINDINGS_C_OBJECTS_H
#define BINDINGS_C_OBJECTS_H

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "bindings/c/EventQueue.h"
#include "bindings/c/HandleTable.h"
#include "sdk/Logger.h"
#include "zel.h"
#include "zel/Zel.h"

namespace zel::c {

// A function of the application and what it is called with.
template <class Callback>
struct Listener {
    Callback callback = nullptr;
    void* user = nullptr;
};

// An opened SDK: who is told of failures, and the way to the log.
class SdkObject : public std::enable_shared_from_this<SdkObject> {
  public:
    Sdk& sdk() { return m_Sdk; }
    Logger& application_log() { return m_ApplicationLog; }

    void SetMessageCallback(zel_message_callback callback, void* user);
    void SetHotPlugCallback(zel_hot_plug_callback callback, void* user);
    // From the first call on events are kept for it.
    EventQueue<zel_hot_plug_event>& HotPlugEvents();
    // The handle is dead: nobody waits for its events any more.
    void End() { m_HotPlugEvents.End(); }
    // Tells the application and the log of this thread's error, which stays as it is.
    void TellFailure(const char* function) noexcept;

  private:
    // Makes the hot-plug events of the program come here.
    void WatchHotPlug();

    Sdk m_Sdk;
    Logger m_ApplicationLog{"application"};
    Logger m_Log{"zel_c"};
    EventQueue<zel_hot_plug_event> m_HotPlugEvents;
    std::mutex m_Mutex;  // covers what follows, never held while the application is called
    Listener<zel_message_callback> m_Messages;
    Listener<zel_hot_plug_callback> m_HotPlug;
    bool m_KeepsHotPlug = false;
};

// An open camera. zel_camera_close() ends it while other threads may still be inside its operations, which the layer's
// Camera does in its destructor alone. So the Camera here owns nothing and its destructor never runs: it is the layer's
// operations over the state that this object owns and ends, once.
class CameraObject : public std::enable_shared_from_this<CameraObject> {
  public:
    CameraObject(std::shared_ptr<SdkObject> sdk, std::shared_ptr<detail::CameraState> state)
        : m_Sdk(std::move(sdk)),
          m_State(std::move(state)),
          m_Camera(std::shared_ptr<detail::CameraState>(std::shared_ptr<void>(), m_State.get())) {}
    ~CameraObject() { End(); }
    CameraObject(const CameraObject&) = delete;
    CameraObject& operator=(const CameraObject&) = delete;

    const std::shared_ptr<SdkObject>& sdk() const { return m_Sdk; }
    Camera& camera() { return m_Camera; }
    void End() {
        if (m_Ended.exchange(true)) return;
        m_Events.End();
        m_State->end();
    }
    bool ended() const { return m_Ended; }

    // Makes it a handle of the application's and begins to listen to its events.
    zel_camera* Publish();
    EventQueue<zel_camera_event>& events() { return m_Events; }

    void ForgetFrames();
    // A frame is handed over: counts it and makes it a handle of the application's.
    zel_frame* HandOver(Frame frame, zel_frame_info& info);
    Drops CountDrops(std::uint64_t& frames, double& rate);

    void SetFrameCallback(zel_frame_callback callback, void* user);
    void SetEventCallback(zel_camera_event_callback callback, void* user);

  private:
    void ListenToEvents();

    std::shared_ptr<SdkObject> m_Sdk;
    std::shared_ptr<detail::CameraState> m_State;
    union {
        Camera m_Camera;
    };
    std::atomic<bool> m_Ended{false};
    zel_camera* m_Handle = nullptr;
    EventQueue<zel_camera_event> m_Events;
    std::mutex m_Mutex;  // covers what follows, never held while the application is called
    FrameCounter m_Counter;
    Listener<zel_camera_event_callback> m_Listener;
};

// A frame that the application holds.
class FrameObject {
  public:
    FrameObject(std::shared_ptr<CameraObject> camera, Frame frame)
        : m_Camera(std::move(camera)), m_Frame(std::move(frame)) {}

    const std::shared_ptr<SdkObject>& sdk() const { return m_Camera->sdk(); }
    const Frame& frame() const { return m_Frame; }
    zel_frame_info Info() const;

    void Keep() { m_Kept = true; }
    bool kept() const { return m_Kept; }

  private:
    std::shared_ptr<CameraObject> m_Camera;
    Frame m_Frame;
    std::atomic<bool> m_Kept{false};
};

using Sdks = HandleTable<SdkObject, zel_sdk, HandleKind::kSdk>;
using Cameras = HandleTable<CameraObject, zel_camera, HandleKind::kCamera>;
using Frames = HandleTable<FrameObject, zel_frame, HandleKind::kFrame>;

}  // namespace zel::c

#endif
