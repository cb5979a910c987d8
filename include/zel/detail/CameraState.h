/// What a camera's handle, its frames and its callbacks share.
#ifndef ZEL_LAYER_CAMERASTATE_H
#define ZEL_LAYER_CAMERASTATE_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "ZelCameraInternal.h"
#include "zel/CameraInfo.h"
#include "zel/Color.h"
#include "zel/Error.h"
#include "zel/Frame.h"
#include "zel/HotPlug.h"
#include "zel/detail/Calls.h"
#include "zel/detail/Registry.h"
#include "zel/detail/SdkState.h"

namespace zel {

/// Which of the frames that wait is handed over.
enum class Order {
    every,  ///< the oldest: each frame, in order
    /// The newest; older ones are passed over, in a run without end also while the application is busy.
    newest,
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
    bool endless = false;    ///< frame follows frame until it is stopped
    long long sequence = 0;  ///< frames after which the camera stops by itself; 0: it does not
    /// Frames that were asked for at the start; 0: no number. The camera hears of it when it runs already, so on a busy
    /// machine it may send more.
    unsigned wanted = 0;
    std::chrono::microseconds exposure{};
    std::chrono::milliseconds timeout = kFrameGrace;
    long long pool_buffers = 0;  ///< of the pool that held frames lie in
};

class CameraState final : public FrameOwner, public std::enable_shared_from_this<CameraState> {
  public:
    using Clock = std::chrono::steady_clock;

    /// An open camera with its callbacks set. Throws Error.
    static std::shared_ptr<CameraState> open(std::shared_ptr<SdkState> sdk, int number, bool calibrated) {
        auto state = std::make_shared<CameraState>(std::move(sdk), number);
        state->connect(calibrated);
        return state;
    }

    CameraState(std::shared_ptr<SdkState> sdk, int number) : m_Sdk(std::move(sdk)), m_Info(m_Sdk->info(number)) {}
    ~CameraState() {
        Registry<CameraState>::remove(m_Context);
        release();
    }
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

    /// The handle is gone: stops the camera, and closes it when no frame is on loan any more. No handler runs then,
    /// unless this is called inside one.
    void end() {
        stop();
        m_Native->SetImageNotificationCallback(nullptr, nullptr);
        m_Native->SetCameraControlCallback(nullptr, nullptr);
        m_Native->SetCameraControlCallbackEx(nullptr, nullptr);
        set_frame_handler(nullptr);
        set_event_handler(nullptr);
        Call::wait_for(this);
        {
            const std::lock_guard lock(m_Mutex);
            m_Ended = true;
            if (m_Held + m_Taking > 0) return;
        }
        close();
    }

    void give_back(ZelColorImage* image, bool color) noexcept override {
        free(image, color);
        {
            const std::lock_guard lock(m_Mutex);
            if (--m_Held + m_Taking > 0 || !m_Ended) return;
        }
        close();
    }

    // ---- starting and stopping ----

    /// The turn of whoever starts the camera; the others wait for it, except inside a handler, where it may be waiting
    /// for them. Throws Error (refused).
    void begin_start() {
        std::unique_lock lock(m_Mutex);
        if (m_Starting && Call::inside()) {
            throw Error(ErrorKind::refused, label() + " can't be started", "another thread is starting it");
        }
        m_Changed.wait(lock, [this] { return !m_Starting; });
        m_Starting = true;
    }
    void end_start() noexcept {
        const std::lock_guard lock(m_Mutex);
        m_Starting = false;
        m_Changed.notify_all();
    }

    /// Waits for nobody's start, but ends it. True also when the camera was not running.
    bool stop() {
        bool stops = false;
        {
            const std::lock_guard lock(m_Mutex);
            stops = std::exchange(m_Run.running, false) || m_Stopping > 0;
            m_Changed.notify_all();
            if (stops) ++m_Stopping;
        }
        if (!stops) {
            Call::wait_for(this);  // a handler may have stopped the camera, and run on
            return true;
        }
        if (run().triggered) m_Native->StopTriggerAcquisition(0);
        const bool stopped = m_Native->Stop();
        const std::lock_guard lock(m_Mutex);
        --m_Stopping;
        return stopped;
    }

    /// Forgets the frames of an earlier run. Those that a thread is just about to take count as held when this returns.
    void begin_run() {
        m_Native->FreeAllPendingImages();
        const bool inside = Call::inside();
        std::unique_lock lock(m_Mutex);
        if (!inside) m_Changed.wait(lock, [this] { return m_Taking == 0; });
        m_Notified.clear();
        m_Waiting = m_Consumed = m_Taken = m_Skipped = 0;
        m_FirstNumber.reset();
        m_Order = Order::every;
        m_Interrupted = false;
        m_LostInRun = m_LinkLost;
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
    void set_running(bool running) {
        const std::lock_guard lock(m_Mutex);
        m_Run.running = running;
        m_Changed.notify_all();
    }
    void set_timeout(std::chrono::milliseconds timeout) {
        const std::lock_guard lock(m_Mutex);
        m_Run.timeout = timeout;
    }

    // ---- frames ----

    /// The moment that ends a wait; one beyond all reason is cut to a year.
    static Clock::time_point deadline_after(std::chrono::milliseconds timeout) {
        constexpr std::chrono::milliseconds kShortest{0}, kLongest = std::chrono::hours(24 * 365);
        return Clock::now() + std::clamp(timeout, kShortest, kLongest);
    }
    /// The next frame; an empty one when none came in time, none can come since the camera is stopped or its link lost,
    /// or interrupt() was called.
    Frame next(Order order, std::chrono::milliseconds timeout, bool& interrupted) {
        const Clock::time_point deadline = deadline_after(timeout);
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
    /// Whether it was lost in this run, which ended the run even when the link is back.
    bool lost_in_run() const {
        const std::lock_guard lock(m_Mutex);
        return m_LostInRun;
    }
    int held() const {
        const std::lock_guard lock(m_Mutex);
        return m_Held;
    }
    /// Whether there are frames to be taken.
    bool frames_wait() const {
        const std::lock_guard lock(m_Mutex);
        return m_Waiting > 0;
    }
    /// Frames that were passed over for newer ones, up to the one that was taken last.
    std::uint64_t skipped() const {
        const std::lock_guard lock(m_Mutex);
        return m_Skipped;
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
        // What the one before holds goes after the lock: that may be a frame of this camera.
        const std::lock_guard lock(m_Mutex);
        m_FrameHandler.swap(shared);
    }
    void set_event_handler(CameraEventHandler handler) {
        auto shared = handler ? std::make_shared<const CameraEventHandler>(std::move(handler)) : nullptr;
        const std::lock_guard lock(m_Mutex);
        m_EventHandler.swap(shared);
    }

    /// The selection of an attribute and its reading belong together.
    std::mutex attribute_mutex;
    /// One text command at a time.
    std::mutex command_mutex;

  private:
    // The moments of this many notifications are remembered, the rest are only counted.
    static constexpr std::size_t kMostMoments = 4096;

    void connect(bool calibrated) {
        m_Native = m_Sdk->camera(m_Info.number);
        if (!m_Native) {
            throw Error(ErrorKind::no_camera, label() + " can't be used", "its interface library did not create it",
                        "check that no other program holds it");
        }
        claim();
        m_Context = Registry<CameraState>::add(weak_from_this());
        // Answers false, because nothing is loaded yet; the wish is kept all the same.
        if (calibrated) internal()->TapBalanceEnable(true);
        int left_open = 0;
        m_Native->IsOpen(&left_open);
        if (!m_Native->Open()) {
            throw Error(ErrorKind::no_camera, label() + " can't be opened", last_error(),
                        "check cable and power, and that no other program holds it");
        }
        // Whoever had it could not close it; it may be running still, or waiting for triggers.
        if (left_open) m_Native->Stop();
        m_Info = m_Sdk->info(m_Info.number);
        if (!m_Native->SetImageNotificationCallback(&CameraState::notified, m_Context) ||
            !m_Native->SetCameraControlCallback(&CameraState::control, m_Context) ||
            !m_Native->SetCameraControlCallbackEx(&CameraState::control_ex, m_Context)) {
            m_Native->SetImageNotificationCallback(nullptr, nullptr);
            m_Native->Close();
            throw Error(ErrorKind::failed, "frames can't be received",
                        "the interface library does not take the callbacks", "update the interface library");
        }
    }

    // Enters the camera as open, for as long as this object lives and has not closed it.
    void claim() {
        std::shared_ptr<CameraState> open = claimed();
        // One that ended inside a handler is closed when the last of its handlers has returned.
        if (open && open->ended()) {
            Call::wait_for(open.get());
            open = claimed();
        }
        if (!open) {
            m_Claimed = zel_claim_camera(m_Native) != 0;
            if (m_Claimed) return;
            throw Error(ErrorKind::refused, label() + " is open already", "another library of this program has it",
                        "have that library let go of it and its frames first");
        }
        throw Error(ErrorKind::refused, label() + " is open already",
                    open->held() > 0 ? "frames of it are held" : "this program has a Camera for it",
                    "use that one, or let go of it and its frames first");
    }

    // Null: the camera is this object's now. Else whose it is.
    std::shared_ptr<CameraState> claimed() {
        const std::lock_guard lock(m_Sdk->cameras_mutex);
        const auto gone = [](const std::weak_ptr<CameraState>& other) {
            const auto state = other.lock();
            return !state || state->closed();
        };
        std::erase_if(m_Sdk->cameras, [&](const auto& entry) { return gone(entry.second); });
        const auto [entry, free] = m_Sdk->cameras.try_emplace(m_Native, weak_from_this());
        const auto open = entry->second.lock();
        if (!open) entry->second = weak_from_this();
        return free ? nullptr : open;
    }

    bool ended() const {
        const std::lock_guard lock(m_Mutex);
        return m_Ended;
    }

    // Once, when it is closed or was not opened.
    void release() noexcept {
        if (std::exchange(m_Claimed, false)) zel_release_camera(m_Native);
    }
    void close() noexcept {
        m_Native->Close();
        release();
        const std::lock_guard lock(m_Mutex);
        m_Closed = true;
    }
    bool closed() const {
        const std::lock_guard lock(m_Mutex);
        return m_Closed;
    }

    bool wait(Order order, Clock::time_point deadline, Clock::time_point& notified, bool& interrupted) {
        std::unique_lock lock(m_Mutex);
        m_Order = order;
        while (true) {
            interrupted = std::exchange(m_Interrupted, false);
            if (interrupted) return false;
            if (m_Waiting > 0) break;
            if (m_LinkLost || m_LostInRun || !m_Run.running || Clock::now() >= deadline) return false;
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
        std::optional<ColorSetting> color;
        unsigned wanted = 0;
        {
            // From here on the camera stays open, and the pool is not replaced.
            const std::lock_guard lock(m_Mutex);
            if (m_Ended) return {};
            ++m_Taking;
            color = m_Color;
            wanted = m_Run.wanted;
        }
        ZelImage* const image = wanted > 0 ? pending_of(wanted, order, color.has_value())
                                           : pending(order == Order::newest, color.has_value());
        const auto hand_over = Clock::now() - notified;
        bool last = false;
        {
            const std::lock_guard lock(m_Mutex);
            --m_Taking;
            if (image) {
                ++m_Held;
                ++m_Taken;
                m_Skipped = m_Consumed > m_Taken ? m_Consumed - m_Taken : 0;
            }
            last = m_Ended && m_Held + m_Taking == 0;
            if (m_Starting) m_Changed.notify_all();
        }
        if (last) close();
        if (!image) return {};
        return {shared_from_this(), image, color, std::chrono::duration_cast<std::chrono::nanoseconds>(hand_over)};
    }

    // The record that waits; null: none.
    ZelImage* pending(bool newest, bool color) const {
        if (color) return newest ? internal()->GetLastPendingColorImage() : internal()->GetPendingColorImage();
        return newest ? m_Native->GetLastPendingImage() : m_Native->GetPendingImage();
    }
    // As pending(), of the first frames of the run alone; those beyond go back.
    ZelImage* pending_of(unsigned wanted, Order order, bool color) {
        ZelImage* taken = nullptr;
        while (ZelImage* const image = pending(false, color)) {
            const bool beyond = place_in_run(image->image_number) >= static_cast<std::int64_t>(wanted);
            if (ZelImage* const old = beyond ? image : std::exchange(taken, image)) free(old, color);
            if (taken && order == Order::every) break;
        }
        return taken;
    }
    // Counted from the first one that came: interfaces begin with 0 or with 1.
    std::int64_t place_in_run(unsigned number) {
        const std::lock_guard lock(m_Mutex);
        if (!m_FirstNumber) m_FirstNumber = number;
        return static_cast<std::int32_t>(number - *m_FirstNumber);
    }
    void free(ZelImage* image, bool color) const {
        if (color) {
            internal()->FreeColorImage(static_cast<ZelColorImage*>(image));
        } else {
            m_Native->FreeImage(image);
        }
    }

    static void ZEL_CALL notified(int kind, void* context) {
        if (kind != ZEL_IMAGE_NOTIFICATION_PENDING) return;
        std::optional<Call> call;  // over when nothing is held here any more
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        std::shared_ptr<const FrameHandler> handler;
        try {
            {
                const std::lock_guard lock(state->m_Mutex);
                handler = state->m_FrameHandler;
                if (handler) {
                    ++state->m_Consumed;
                } else {
                    state->count_notification();
                    if (!state->too_old()) return;
                    state->m_Consumed += std::exchange(state->m_Waiting, 0);
                }
                call.emplace(state.get());
            }
            if (!handler) {
                state->m_Native->FreeAllPendingImages();
                return;
            }
            if (Frame frame = state->take(Order::every, Clock::now())) (*handler)(std::move(frame));
        } catch (...) {
            // The transport that called can't do anything about it.
        }
    }

    // Whoever wants the newest frame and is busy would find the pool full of old ones, and no room was left for newer
    // ones: a few may wait. Where none may follow, all do.
    bool too_old() const {
        if (m_Order != Order::newest || !m_Run.endless) return false;
        constexpr long long kMostWaiting = 4;
        const long long most = std::clamp(m_Run.pool_buffers - m_Held - 1, 1LL, kMostWaiting);
        return m_Waiting > static_cast<std::uint64_t>(most);
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
        std::optional<Call> call;
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        {
            const std::lock_guard lock(state->m_Mutex);
            state->m_LinkLost = lost;
            if (lost) state->m_LostInRun = true;
            state->m_Changed.notify_all();
        }
        CameraEvent event;
        event.kind = lost ? CameraEvent::Kind::link_lost : CameraEvent::Kind::link_back;
        state->tell(event, call);
    }

    static void ZEL_CALL control_ex(int event_code, const ZelCameraControlRecord* record, void* context) {
        std::optional<Call> call;
        const auto state = Registry<CameraState>::find(context);
        if (!state) return;
        CameraEvent event;
        event.code = event_code;
        if (record) {
            event.value = record->value;
            std::copy(std::begin(record->values), std::end(record->values), event.values.begin());
        }
        state->tell(event, call);
    }

    void tell(const CameraEvent& event, std::optional<Call>& call) noexcept {
        std::shared_ptr<const CameraEventHandler> handler;
        try {
            {
                const std::lock_guard lock(m_Mutex);
                handler = m_EventHandler;
                if (!handler) return;
                call.emplace(this);
            }
            (*handler)(event);
        } catch (...) {
            // The transport that called can't do anything about it.
        }
    }

    std::shared_ptr<SdkState> m_Sdk;
    CameraInfo m_Info;
    ZelCamera* m_Native = nullptr;
    void* m_Context = nullptr;
    bool m_Claimed = false;  // for this library, among those of the program

    mutable std::mutex m_Mutex;  // never held while the SDK or the application is called
    std::condition_variable m_Changed;
    std::deque<Clock::time_point> m_Notified;  // moments of the latest notifications
    std::uint64_t m_Waiting = 0;               // notifications whose frames wait
    std::uint64_t m_Consumed = 0;
    std::uint64_t m_Taken = 0;
    std::uint64_t m_Skipped = 0;            // consumed and not taken, up to the frame that was taken last
    bool m_Interrupted = false;             // until a wait has ended for it
    std::optional<unsigned> m_FirstNumber;  // of the frames of a run with a number of frames
    Order m_Order = Order::every;           // of the last wait
    Run m_Run;
    std::optional<ColorSetting> m_Color;
    std::shared_ptr<const FrameHandler> m_FrameHandler;
    std::shared_ptr<const CameraEventHandler> m_EventHandler;
    int m_Held = 0;
    int m_Taking = 0;    // threads that are just taking a frame
    int m_Stopping = 0;  // threads in stop()
    bool m_Starting = false;
    bool m_LinkLost = false;
    bool m_LostInRun = false;
    bool m_Ended = false;
    bool m_Closed = false;
};

}  // namespace detail

}  // namespace zel

#endif
