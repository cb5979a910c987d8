/// What a camera's handle, its frames and its callbacks share.
#ifndef ZEL_LAYER_CAMERASTATE_H
#define ZEL_LAYER_CAMERASTATE_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "ZelCameraInternal.h"
#include "zel/CameraInfo.h"
#include "zel/Color.h"
#include "zel/Error.h"
#include "zel/Frame.h"
#include "zel/HotPlug.h"
#include "zel/detail/Registry.h"
#include "zel/detail/SdkState.h"

namespace zel {

/// Which of the frames that wait is handed over.
enum class Order {
    every,   ///< the oldest: each frame, in order
    newest,  ///< the newest; older ones that wait are passed over
};

/// Called with each frame on the thread that brought it. An exception that leaves it is dropped.
using FrameHandler = std::function<void(Frame)>;

namespace detail {

/// How long a frame may take beyond what the camera's own figures say.
inline constexpr std::chrono::milliseconds kFrameGrace{10000};

/// An acquisition and what it was started with.
struct Run {
    bool running = false;
    bool triggered = false;
    long long sequence = 0;  ///< frames after which the camera stops by itself; 0: it does not
    std::chrono::microseconds exposure{};
    std::chrono::milliseconds timeout = kFrameGrace;
    long long pool_buffers = 0;  ///< of the pool that held frames lie in
};

class CameraState : public FrameOwner, public std::enable_shared_from_this<CameraState> {
  public:
    using Clock = std::chrono::steady_clock;

    /// An open camera with its callbacks set. Throws Error.
    static std::shared_ptr<CameraState> open(std::shared_ptr<SdkState> sdk, int number, bool calibrated) {
        auto state = std::make_shared<CameraState>(std::move(sdk), number);
        state->connect(calibrated);
        return state;
    }

    CameraState(std::shared_ptr<SdkState> sdk, int number) : m_Sdk(std::move(sdk)), m_Info(m_Sdk->describe(number)) {}
    ~CameraState() { Registry<CameraState>::remove(m_Context); }
    CameraState(const CameraState&) = delete;
    CameraState& operator=(const CameraState&) = delete;

    ZelCamera* native() const { return m_Native; }
    ZelCameraInternal* internal() const { return static_cast<ZelCameraInternal*>(m_Native); }
    const CameraInfo& info() const { return m_Info; }
    /// "camera 0"
    std::string label() const { return "camera " + std::to_string(m_Info.number); }
    /// "ZEL_ERROR_CAMERA_COMM_FAILURE", "no error code"
    std::string last_error() const {
        const int code = m_Native->GetLastError();
        if (code == ZEL_NO_ERROR) return "no error code";
        const char* const name = m_Native->GetLastErrorStr();
        return name ? name : "error code " + std::to_string(code);
    }

    /// The handle is gone: stops the camera, and closes it when no frame is on loan any more.
    void end() {
        Run run = this->run();
        run.running = false;
        set_run(run);
        m_Native->Stop();
        m_Native->SetImageNotificationCallback(nullptr, nullptr);
        m_Native->SetCameraControlCallback(nullptr, nullptr);
        m_Native->SetCameraControlCallbackEx(nullptr, nullptr);
        set_handlers(nullptr, nullptr);
        {
            const std::lock_guard lock(m_Mutex);
            m_Ended = true;
            if (m_Held > 0) return;
        }
        close();
    }

    void give_back(ZelColorImage* image, bool color) noexcept override {
        if (color) {
            internal()->FreeColorImage(image);
        } else {
            m_Native->FreeImage(image);
        }
        {
            const std::lock_guard lock(m_Mutex);
            if (--m_Held > 0 || !m_Ended) return;
        }
        close();
    }

    // ---- frames ----

    /// Forgets the frames of an earlier run.
    void begin_run() {
        m_Native->FreeAllPendingImages();
        const std::lock_guard lock(m_Mutex);
        m_Notified.clear();
        m_Waiting = m_Consumed = m_Taken = 0;
        m_Interrupted = false;
    }

    Run run() const {
        const std::lock_guard lock(m_Mutex);
        return m_Run;
    }
    void set_run(const Run& run) {
        const std::lock_guard lock(m_Mutex);
        m_Run = run;
        m_Changed.notify_all();
    }

    /// The next frame; an empty one when none came in time, none can come since the camera is stopped or its link lost,
    /// or interrupt() was called.
    Frame next(Order order, std::chrono::milliseconds timeout, bool& interrupted) {
        const Clock::time_point deadline = Clock::now() + timeout;
        Clock::time_point notified;
        while (wait(order, deadline, notified, interrupted)) {
            // Null: the frame of this notification was taken with an earlier one.
            if (Frame frame = take(order, notified)) return frame;
        }
        return {};
    }

    void interrupt() {
        const std::lock_guard lock(m_Mutex);
        m_Interrupted = true;
        m_Changed.notify_all();
    }

    bool link_lost() const {
        const std::lock_guard lock(m_Mutex);
        return m_LinkLost;
    }
    int held() const {
        const std::lock_guard lock(m_Mutex);
        return m_Held;
    }
    /// Frames that were passed over for newer ones.
    std::uint64_t skipped() const {
        const std::lock_guard lock(m_Mutex);
        return m_Consumed > m_Taken ? m_Consumed - m_Taken : 0;
    }

    void set_color(std::optional<ColorSetting> color) {
        const std::lock_guard lock(m_Mutex);
        m_Color = color;
    }
    std::optional<ColorSetting> color() const {
        const std::lock_guard lock(m_Mutex);
        return m_Color;
    }

    void set_frame_handler(FrameHandler handler) {
        auto shared = handler ? std::make_shared<const FrameHandler>(std::move(handler)) : nullptr;
        const std::lock_guard lock(m_Mutex);
        m_FrameHandler = std::move(shared);
    }
    void set_event_handler(CameraEventHandler handler) {
        auto shared = handler ? std::make_shared<const CameraEventHandler>(std::move(handler)) : nullptr;
        const std::lock_guard lock(m_Mutex);
        m_EventHandler = std::move(shared);
    }

    /// The selection of an attribute and its reading belong together.
    std::mutex attribute_mutex;
    /// One text command at a time.
    std::mutex command_mutex;
    /// One start or stop at a time.
    std::mutex run_mutex;

  private:
    // The moments of this many notifications are remembered, the rest are only counted.
    static constexpr std::size_t kMostMoments = 4096;

    void connect(bool calibrated) {
        const std::lock_guard lock(m_Sdk->cameras_mutex);
        m_Native = m_Sdk->native()->GetCamera(m_Info.number);
        if (!m_Native) {
            throw Error(ErrorKind::no_camera, label() + " can't be used", "its interface library did not create it",
                        "check that no other program holds it");
        }
        auto& known = m_Sdk->cameras[m_Native];
        if (const auto open = known.lock(); open && !open->closed()) {
            throw Error(ErrorKind::refused, label() + " is open already",
                        open->held() > 0 ? "frames of it are held" : "this program has a Camera for it",
                        "use that one, or let go of it and its frames first");
        }
        // Answers false, because nothing is loaded yet; the wish is kept all the same.
        if (calibrated) internal()->TapBalanceEnable(true);
        if (!m_Native->Open()) {
            throw Error(ErrorKind::no_camera, label() + " can't be opened", last_error(),
                        "check cable and power, and that no other program holds it");
        }
        m_Info = m_Sdk->describe(m_Info.number);
        m_Context = Registry<CameraState>::add(weak_from_this());
        if (!m_Native->SetImageNotificationCallback(&CameraState::notified, m_Context) ||
            !m_Native->SetCameraControlCallback(&CameraState::control, m_Context) ||
            !m_Native->SetCameraControlCallbackEx(&CameraState::control_ex, m_Context)) {
            m_Native->SetImageNotificationCallback(nullptr, nullptr);
            m_Native->Close();
            throw Error(ErrorKind::failed, "frames can't be received",
                        "the interface library does not take the callbacks", "update the interface library");
        }
        known = weak_from_this();
    }

    void close() noexcept {
        m_Native->Close();
        const std::lock_guard lock(m_Mutex);
        m_Closed = true;
    }
    bool closed() const {
        const std::lock_guard lock(m_Mutex);
        return m_Closed;
    }

    void set_handlers(std::shared_ptr<const FrameHandler> frames, std::shared_ptr<const CameraEventHandler> events) {
        const std::lock_guard lock(m_Mutex);
        m_FrameHandler.swap(frames);
        m_EventHandler.swap(events);
    }

    bool wait(Order order, Clock::time_point deadline, Clock::time_point& notified, bool& interrupted) {
        std::unique_lock lock(m_Mutex);
        while (true) {
            interrupted = std::exchange(m_Interrupted, false);
            if (interrupted) return false;
            if (m_Waiting > 0) break;
            if (m_LinkLost || !m_Run.running || Clock::now() >= deadline) return false;
            m_Changed.wait_until(lock, deadline);
        }
        const std::uint64_t passed = order == Order::newest ? m_Waiting - 1 : 0;
        while (m_Notified.size() > m_Waiting) m_Notified.pop_front();
        for (std::uint64_t i = 0; i < passed && m_Notified.size() > 1; ++i) m_Notified.pop_front();
        notified = m_Notified.empty() ? Clock::now() : m_Notified.front();
        if (!m_Notified.empty()) m_Notified.pop_front();
        m_Waiting -= passed + 1;
        m_Consumed += passed + 1;
        return true;
    }

    Frame take(Order order, Clock::time_point notified) {
        const std::optional<ColorSetting> color = this->color();
        const bool newest = order == Order::newest;
        ZelImage* image = nullptr;
        if (color) {
            image = newest ? internal()->GetLastPendingColorImage() : internal()->GetPendingColorImage();
        } else {
            image = newest ? m_Native->GetLastPendingImage() : m_Native->GetPendingImage();
        }
        if (!image) return {};
        const auto hand_over = Clock::now() - notified;
        {
            const std::lock_guard lock(m_Mutex);
            ++m_Held;
            ++m_Taken;
        }
        return {shared_from_this(), image, color, std::chrono::duration_cast<std::chrono::nanoseconds>(hand_over)};
    }

    static void ZEL_CALL notified(int kind, void* context) {
        if (kind != ZEL_IMAGE_NOTIFICATION_PENDING) return;
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        std::shared_ptr<const FrameHandler> handler;
        {
            const std::lock_guard lock(state->m_Mutex);
            handler = state->m_FrameHandler;
            if (!handler) state->count_notification();
        }
        if (!handler) return;
        try {
            if (Frame frame = state->take(Order::every, Clock::now())) (*handler)(std::move(frame));
        } catch (...) {
            // The transport that called can't do anything about it.
        }
    }

    void count_notification() noexcept {
        ++m_Waiting;
        m_Changed.notify_one();
        try {
            m_Notified.push_back(Clock::now());
            if (m_Notified.size() > kMostMoments) m_Notified.pop_front();
        } catch (const std::bad_alloc&) {
            // Only the moment is lost.
        }
    }

    static void ZEL_CALL control(int event_code, void* context) {
        const bool lost = event_code == ZEL_CAMERA_CONTROL_DISCONNECT;
        // The camera's own events come with their values through the other callback as well.
        if (!lost && event_code != ZEL_CAMERA_CONTROL_RECONNECT) return;
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        {
            const std::lock_guard lock(state->m_Mutex);
            state->m_LinkLost = lost;
            state->m_Changed.notify_all();
        }
        CameraEvent event;
        event.kind = lost ? CameraEvent::Kind::link_lost : CameraEvent::Kind::link_back;
        state->tell(event);
    }

    static void ZEL_CALL control_ex(int event_code, const ZelCameraControlRecord* record, void* context) {
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        CameraEvent event;
        event.code = event_code;
        if (record) {
            event.value = record->value;
            std::copy(std::begin(record->values), std::end(record->values), event.values.begin());
        }
        state->tell(event);
    }

    void tell(const CameraEvent& event) noexcept {
        std::shared_ptr<const CameraEventHandler> handler;
        {
            const std::lock_guard lock(m_Mutex);
            handler = m_EventHandler;
        }
        if (!handler) return;
        try {
            (*handler)(event);
        } catch (...) {
            // The transport that called can't do anything about it.
        }
    }

    std::shared_ptr<SdkState> m_Sdk;
    CameraInfo m_Info;
    ZelCamera* m_Native = nullptr;
    void* m_Context = nullptr;

    mutable std::mutex m_Mutex;  // never held while the SDK or the application is called
    std::condition_variable m_Changed;
    std::deque<Clock::time_point> m_Notified;  // moments of the latest notifications
    std::uint64_t m_Waiting = 0;               // notifications whose frames wait
    std::uint64_t m_Consumed = 0;
    std::uint64_t m_Taken = 0;
    bool m_Interrupted = false;  // until a wait has ended for it
    Run m_Run;
    std::optional<ColorSetting> m_Color;
    std::shared_ptr<const FrameHandler> m_FrameHandler;
    std::shared_ptr<const CameraEventHandler> m_EventHandler;
    int m_Held = 0;
    bool m_LinkLost = false;
    bool m_Ended = false;
    bool m_Closed = false;
};

}  // namespace detail

}  // namespace zel

#endif
