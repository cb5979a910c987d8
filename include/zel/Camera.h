/// @file
/// An open camera.
#ifndef ZEL_LAYER_CAMERA_H
#define ZEL_LAYER_CAMERA_H

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "zel/CameraInfo.h"
#include "zel/Color.h"
#include "zel/Error.h"
#include "zel/FrameResult.h"
#include "zel/HotPlug.h"
#include "zel/Parameter.h"
#include "zel/Region.h"
#include "zel/Settings.h"
#include "zel/detail/CameraState.h"
#include "zel/detail/ColorSetup.h"

namespace zel {

/// What starts a frame.
enum class Trigger {
    as_set,    ///< the camera itself, unless HW_TRIGGER_ACTIVE was set to 1
    software,  ///< Camera::trigger()
    hardware,  ///< a signal at the camera's trigger input
};

/// How an acquisition is started.
struct StartOptions {
    int frames = 0;  ///< so many come, then the camera stops by itself; 0: as FRAME_COUNT says, 0 = never
    Trigger trigger = Trigger::as_set;  ///< what starts a frame
};

/// An open camera, stopped and closed when this object dies; frames that are still held keep it open until they have
/// gone back. Made by Sdk::open(). Any thread may call its operations, also inside the handlers set here; those that
/// talk to the camera block for the exchange (a camera that falls silent costs up to 20 s). Settings that can't be had
/// throw Error, whose kind is link_lost while the link is, whatever an operation says else.
class Camera {
  public:
    /// For Sdk.
    explicit Camera(std::shared_ptr<detail::CameraState> state) : m_State(std::move(state)) {}
    ~Camera() {
        if (m_State) m_State->end();
    }
    /// Moved from, an object has no camera and may only be assigned to or destroyed.
    Camera(Camera&&) noexcept = default;
    /// Ends the acquisition of the camera that was here.
    Camera& operator=(Camera&& other) noexcept {
        if (this == &other) return *this;
        if (m_State) m_State->end();
        m_State = std::move(other.m_State);
        return *this;
    }

    /// Number, name, serial number and link, as they were when it was opened.
    const CameraInfo& info() const { return m_State->info(); }
    /// "camera 0", for messages.
    std::string label() const { return m_State->label(); }
    /// The SDK's object, for what this layer leaves out. Its callbacks are this object's.
    ZelCamera* native() const { return m_State->native(); }
    /// The code of the transport's last operation as text: "ZEL_ERROR_CAMERA_COMM_FAILURE", "no error code".
    std::string last_error() const { return m_State->last_error(); }

    // ---- settings ----

    /// A parameter by its name: "EXPOSURE_TIME_US", "gain"; or by its id ZEL_PARAM_.... Throws Error (invalid_argument)
    /// with the nearest names.
    Parameter parameter(std::string_view name) const { return {m_State, find_parameter(name)}; }
    /// The same, by its id.
    Parameter parameter(unsigned id) const {
        const ParameterInfo* const info = parameter_by_id(id);
        return info ? Parameter(m_State, *info) : parameter(std::to_string(id));
    }
    /// The value of a setting. Throws Error (refused) when it can't be read.
    template <class Value>
    Value get(const Setting<Value>& setting) const {
        return detail::value_as<Value>(parameter(setting.id).value());
    }
    /// Writes a setting and reads it back. Throws Error (refused) with requested, actual and range when the camera did
    /// not take the value as it is.
    template <class Value>
    SetResult set(const Setting<Value>& setting, const std::type_identity_t<Value>& value) const {
        return parameter(setting.id).set(detail::value_to_set(value));
    }
    /// A number that is nice to have: 0 when it can't be read.
    long long number(unsigned id) const {
        const auto value = parameter(id).try_value();
        return value ? value->integer() : 0;
    }

    /// The part of the sensor that frames show from the next start on, cut out by the SDK. Throws Error (refused) when
    /// it is not on the sensor.
    SetResult set_region(const Region& region) const { return set_region_and_binning(&region, nullptr); }
    /// So many sensor pixels become one, from the next start on. Throws Error (refused).
    SetResult set_binning(const Binning& binning) const { return set_region_and_binning(nullptr, &binning); }
    /// Both in one write; null leaves one as it is.
    SetResult set_region_and_binning(const Region* region, const Binning* binning) const {
        ZelRoiBin wanted = get(settings::region_and_binning);
        if (region) wanted = {region->x, region->y, region->width, region->height, wanted.XBin, wanted.YBin};
        if (binning) wanted = {wanted.XOrigin, wanted.YOrigin, wanted.XPixels, wanted.YPixels, binning->x, binning->y};
        const std::string fault = region_fault(wanted, get(settings::sensor_width), get(settings::sensor_height));
        if (!fault.empty()) throw Error(ErrorKind::refused, "ROI_BIN: " + text_of(wanted), fault);
        return parameter(ZEL_PARAM_ROI_BIN).set(wanted);
    }
    /// From the next start on each frame is the mean of the last `frames`; 0 or 1 switches averaging off.
    void set_averaging(int frames) const {
        if (m_State->internal()->SetImageAveraging(frames, 1)) return;
        throw Error(ErrorKind::refused, "averaging over " + std::to_string(frames), "the SDK does not take it");
    }
    /// Switches the correction of the camera's taps on or off. False while the camera has nothing to correct with: open
    /// it with OpenOptions::calibrated.
    bool set_calibration(bool on) const { return m_State->internal()->TapBalanceEnable(on); }

    /// Color pictures from now on, made like this: Frame::color_bytes(). Throws Error (refused) for a monochrome
    /// camera, with binning, and where the color space can't be had.
    ColorSetting use_color(const ColorOptions& options = {}) {
        try {
            const ColorSetting setting = detail::set_up_color(*m_State, options);
            m_State->set_color(setting);
            return setting;
        } catch (...) {
            use_grey();  // what was set up before is half replaced
            throw;
        }
    }
    /// Grey samples alone from now on.
    void use_grey() { m_State->set_color(std::nullopt); }
    /// Whether the camera has no color filter.
    bool is_monochrome() const { return m_State->internal()->IsMonochrome(); }

    /// Sends a text command and answers the reply. Throws Error (timeout) when none comes within 5 s.
    std::string command(const std::string& text) const {
        // The camera has one place for the reply.
        const std::lock_guard lock(m_State->command_mutex);
        std::string reply;
        native()->SetTextCommandCallback(&Camera::store_reply, &reply);
        const bool answered = native()->SetTextCommand(text.c_str());
        native()->SetTextCommandCallback(nullptr, nullptr);
        if (!answered) {
            throw Error(ErrorKind::timeout, "no reply to '" + detail::trimmed(text) + "' from " + label(), last_error(),
                        "check the command and the cable");
        }
        return reply;
    }

    // ---- running ----

    /// Starts an acquisition; frames of an earlier one that still wait are dropped. Throws Error (refused) when the
    /// camera does not start or is stopped meanwhile, when frames are held whose memory the new pool would take, and
    /// inside a handler while another thread starts it.
    void start(const StartOptions& options = {}) {
        const StartTurn turn(*m_State);
        m_State->stop();
        if (options.trigger != Trigger::as_set) {
            parameter(ZEL_PARAM_HW_TRIGGER_ACTIVE).set(options.trigger == Trigger::hardware ? 1 : 0);
        }
        require_color_size();
        m_State->begin_run();
        detail::Run run = m_State->run();
        run.pool_buffers = require_buffers(run.pool_buffers);
        run.triggered = options.trigger != Trigger::as_set;
        run.exposure = std::chrono::microseconds(number(ZEL_PARAM_EXPOSURE_TIME_US));
        run.wanted = static_cast<unsigned>(std::max(options.frames, 0));
        run.sequence = options.frames > 0 ? options.frames : number(ZEL_PARAM_FRAME_COUNT);
        run.endless = run.sequence == 0 && !run.triggered && number(ZEL_PARAM_HW_TRIGGER_ACTIVE) == 0;
        run.running = true;
        native()->ClearLastError();
        m_State->set_run(run);
        const bool started = start_native(options);
        if (!m_State->run().running) {
            if (started) native()->Stop();
            throw Error(ErrorKind::refused, label() + " can't be started", "it was stopped meanwhile");
        }
        // Frames that came before the link was lost are there to be taken; the wait behind them says that it is.
        const bool lost = (link_lost() || m_State->lost_in_run()) && !m_State->frames_wait();
        if (!started || lost) fail_start(started, lost);
        // Frame times are settled when the camera has recalculated its settings, at the start.
        const std::chrono::microseconds frame = run.exposure + std::chrono::microseconds(number(ZEL_PARAM_FRAME_TIME));
        m_State->set_timeout(detail::kFrameGrace + std::chrono::duration_cast<std::chrono::milliseconds>(2 * frame));
    }
    /// Stops it; true also when it was not running. When this returns no frame handler runs any more, unless it is
    /// called inside a handler; so no handler must wait for a thread that is in here. A start that is under way
    /// on another thread ends. False when the camera did not answer.
    bool stop() { return m_State->stop(); }
    /// Between start() and stop(), also when a sequence is over.
    bool running() const { return m_State->run().running; }
    /// Takes one frame of an acquisition with Trigger::software. Throws Error (refused).
    void trigger() {
        if (native()->SoftwareTrigger()) return;
        throw Error(ErrorKind::refused, label() + " refused the software trigger", "the write of the trigger failed",
                    "check cable and power");
    }

    /// The next frame, or the reason why none came within the time: at once where none can come, as after a lost link
    /// and at the end of a sequence. Asking the camera for the reason can take longer when it is silent (up to 20 s).
    /// One thread at a time; another one may stop, interrupt or destroy the camera meanwhile.
    FrameResult wait_frame(std::chrono::milliseconds timeout, Order order = Order::every) {
        return wait_frame(timeout, order, nullptr);
    }
    /// The same, interrupted also when `cancelled` answers true: it is asked on the waiting thread about 20 times a
    /// second, for programs that look for a key or a signal. What it throws ends the wait.
    FrameResult wait_frame(std::chrono::milliseconds timeout, Order order, const std::function<bool()>& cancelled) {
        const StatePointer state = m_State;  // stays when another thread destroys this object
        bool interrupted = false;
        Frame frame = wait_for(state, timeout, order, cancelled, interrupted);
        if (frame) return frame;
        return reason_of(state, timeout, interrupted);
    }
    /// As wait_frame() with the newest frame that waits.
    FrameResult wait_newest(std::chrono::milliseconds timeout) { return wait_frame(timeout, Order::newest); }
    /// The next frame or an empty one, without asking the camera for the reason; for short waits in a loop.
    /// Empty at once where none can come: look at running() and link_lost() then.
    Frame try_frame(std::chrono::milliseconds timeout, Order order = Order::every) {
        const StatePointer state = m_State;
        bool interrupted = false;
        return state->next(order, timeout, interrupted);
    }
    /// Why no frame comes now, after so long a wait; asks the camera.
    NoFrame why_no_frame(std::chrono::milliseconds waited, bool interrupted = false) const {
        return reason_of(m_State, waited, interrupted);
    }
    /// Throws what a caller who needs the frame throws: Error (timeout or link_lost) with the reason.
    [[noreturn]] void throw_no_frame(const NoFrame& why) const {
        const bool lost = why.reason() == Reason::link_lost;
        const bool over = why.reason() == Reason::sequence_over;
        const bool waited = !lost && !over && why.reason() != Reason::not_started;
        throw Error(lost ? ErrorKind::link_lost : ErrorKind::timeout,
                    std::string("no ") + (over ? "further " : "") + "frame from " + label() +
                        (waited ? " within " + std::to_string(why.state().waited.count()) + " ms" : ""),
                    why.why(), why.hint());
    }
    /// One frame, started and stopped for it when the camera is not running. Throws Error with the reason.
    Frame snap() {
        const bool was_running = running();
        if (!was_running) start();
        FrameResult result = wait_frame(frame_timeout());
        if (!was_running) stop();
        if (!result) throw_no_frame(result.no_frame());
        return result.take();
    }
    /// How long a frame may take by the camera's own figures, with ten seconds of grace.
    std::chrono::milliseconds frame_timeout() const { return m_State->run().timeout; }
    /// Ends the wait for a frame that another thread is in, at once, else the next one of this run, frames or not; its
    /// reason is Reason::interrupted.
    void interrupt() { m_State->interrupt(); }

    /// Whether the camera was unplugged or switched off since it was opened and is not back.
    bool link_lost() const { return m_State->link_lost(); }
    /// Frames passed over for newer ones, from the start to the frame handed over last.
    std::uint64_t skipped() const { return m_State->skipped(); }
    /// Frames that the transport lost on the link since the start.
    std::uint64_t link_drops() const { return static_cast<std::uint64_t>(number(ZEL_PARAM_DROPPED_FRAMES)); }
    /// Frames of this camera that the application holds.
    int frames_held() const { return m_State->held(); }

    // ---- handlers ----

    /// Frames go to this function instead of wait_frame(); set it before start(). It is called on the transport's
    /// thread, which delivers nothing else meanwhile. Null switches it off.
    void on_frame(FrameHandler handler) { m_State->set_frame_handler(std::move(handler)); }
    /// Link lost and back, and the camera's own events. Null switches it off.
    void on_event(CameraEventHandler handler) { m_State->set_event_handler(std::move(handler)); }

  private:
    // How often a camera that may have stopped by itself is asked whether it has.
    static constexpr std::chrono::milliseconds kStateCheck{200};
    // How often a wait asks whether it is cancelled.
    static constexpr std::chrono::milliseconds kCancelCheck{50};

    static void ZEL_CALL store_reply(const char* text, void* reply) {
        try {
            *static_cast<std::string*>(reply) = detail::text_or_empty(text);
        } catch (...) {
            // The reply stays empty.
        }
    }

    using StatePointer = std::shared_ptr<detail::CameraState>;

    // The turn of one start.
    class StartTurn {
      public:
        explicit StartTurn(detail::CameraState& state) : m_State(state) { m_State.begin_start(); }
        ~StartTurn() { m_State.end_start(); }
        StartTurn(const StartTurn&) = delete;
        StartTurn& operator=(const StartTurn&) = delete;

      private:
        detail::CameraState& m_State;
    };

    bool start_native(const StartOptions& options) {
        if (options.trigger == Trigger::as_set) {
            return options.frames > 0 ? native()->Start(options.frames) : native()->Start();
        }
        return native()->StartTriggerAcquisition() &&
               (options.frames == 0 || native()->SetTransportValue(options.frames));
    }

    // Without buffers a camera runs and not one frame comes. A pool of another size takes the memory of frames that the
    // application holds. Result: the size of the pool.
    long long require_buffers(long long before) {
        const auto buffers = parameter(ZEL_PARAM_NUM_IMAGE_BUFFERS).try_value();
        if (!buffers) return before;
        if (buffers->integer() == 0) {
            throw Error(ErrorKind::invalid_argument, "NUM_IMAGE_BUFFERS is 0", "no frame could come",
                        "set it to 8 or more");
        }
        if (before > 0 && before != buffers->integer() && m_State->held() > 0) {
            throw Error(ErrorKind::refused, label() + " can't be started",
                        "frames of the run before are held, and the pool changes", "let go of them or copy them");
        }
        return buffers->integer();
    }

    // A camera that is back after a loss has the settings of one that was just switched on; it does not run on.
    [[noreturn]] void fail_start(bool started, bool lost) {
        const std::string error = last_error();
        started ? static_cast<void>(stop()) : m_State->set_running(false);
        const std::string what = label() + " can't be started";
        if (!lost) throw Error(ErrorKind::refused, what, error, start_hint());
        if (link_lost()) {
            throw Error(ErrorKind::link_lost, what, "the link to the camera is lost", "check cable and power");
        }
        throw Error(ErrorKind::link_lost, what, "it was switched off meanwhile, and its settings with it",
                    "make its settings and start again");
    }

    // With binning the SDK makes no color picture, and no frame would come.
    void require_color_size() const {
        if (!m_State->color()) return;
        const auto region = parameter(ZEL_PARAM_ROI_BIN).try_value();
        if (!region || (region->region().XBin <= 1 && region->region().YBin <= 1)) return;
        throw Error(ErrorKind::refused, label() + " can't be started", "color frames are not binned",
                    "set both factors to 1, or use_grey()");
    }

    std::string start_hint() const {
        switch (native()->GetLastError()) {
            case ZEL_ERROR_INVALID_NUMBER_OF_IMAGE_BUFFERS:
            case ZEL_ERROR_TOO_MANY_IMAGE_BUFFERS:
                return "choose another number of image buffers";
            case ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE:
                return "memory is short: use fewer image buffers";
            case ZEL_ERROR_INVALID_ROI:
            case ZEL_ERROR_INVALID_BINNING:
            case ZEL_ERROR_INVALID_BINNING_SELECTION:
                return "check ROI_BIN";
            default:
                return "check cable and power, then try again";
        }
    }

    static std::optional<long long> number_of(const StatePointer& state, unsigned id) {
        const auto value = Parameter(state, *parameter_by_id(id)).try_value();
        return value ? std::optional(value->integer()) : std::nullopt;
    }
    static bool camera_stopped(const StatePointer& state) { return number_of(state, ZEL_PARAM_CAMSTATE) == 0; }

    // A camera that stops after a number of frames need not be waited for when it has; its last frames may still be on
    // their way then.
    static Frame wait_for(const StatePointer& state, std::chrono::milliseconds timeout, Order order,
                          const std::function<bool()>& cancelled, bool& interrupted) {
        const bool ends = state->run().sequence != 0;
        if (!ends && !cancelled) return state->next(order, timeout, interrupted);
        using Clock = detail::CameraState::Clock;
        const Clock::time_point deadline = detail::CameraState::deadline_after(timeout);
        Clock::time_point check = Clock::now() + kStateCheck;
        bool stopped = false;
        while (true) {
            const Clock::time_point until =
                (std::min)({deadline, check, cancelled ? Clock::now() + kCancelCheck : deadline});
            Frame frame =
                state->next(order, std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), interrupted);
            if (frame) return frame;
            if (cancelled && cancelled()) interrupted = true;
            const Clock::time_point now = Clock::now();
            const bool lost = state->link_lost() || state->lost_in_run();
            if (interrupted || lost || now >= deadline || !state->run().running) return frame;
            if (now < check) continue;
            if (stopped) return frame;
            stopped = ends && camera_stopped(state);
            check = Clock::now() + kStateCheck;
        }
    }

    static NoFrame reason_of(const StatePointer& state, std::chrono::milliseconds waited, bool interrupted) {
        const detail::Run run = state->run();
        WaitState found;
        found.link_lost = state->link_lost() || (run.running && state->lost_in_run());
        found.interrupted = interrupted;
        found.waited = waited;
        found.exposure = run.exposure;
        // A lost link answers nothing: its questions would only cost their time-outs.
        if (found.link_lost || interrupted) return NoFrame(found);
        const bool runs_on = run.triggered && run.sequence == 0;
        found.started = run.running && (runs_on || !camera_stopped(state));
        found.sequence = run.running ? run.sequence : 0;
        found.waits_for_hardware = run.running && number_of(state, ZEL_PARAM_HW_TRIGGER_ACTIVE).value_or(0) != 0;
        found.waits_for_software = run.triggered && !found.waits_for_hardware;
        found.buffers_held = state->held();
        // A camera that does not tell has some.
        found.buffers =
            static_cast<int>(number_of(state, ZEL_PARAM_NUM_IMAGE_BUFFERS).value_or(found.buffers_held + 1));
        return NoFrame(found);
    }

    StatePointer m_State;
};

}  // namespace zel

#endif
