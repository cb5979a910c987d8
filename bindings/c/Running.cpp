// Starting, triggering and waiting for frames.
#include <chrono>

#include "bindings/c/Call.h"

using zel::c::Call;
using zel::c::CameraObject;
using zel::c::Failure;
using zel::c::Guard;

namespace {

// The statuses of the waits stand in the order of the reasons, but for the lost link.
zel_status StatusOf(zel::Reason reason) {
    if (reason == zel::Reason::link_lost) return ZEL_STATUS_LINK_LOST;
    return static_cast<zel_status>(reason) - static_cast<zel_status>(zel::Reason::interrupted) + ZEL_STATUS_INTERRUPTED;
}
static_assert(static_cast<int>(zel::Reason::silent) - static_cast<int>(zel::Reason::interrupted) ==
              ZEL_STATUS_SILENT - ZEL_STATUS_INTERRUPTED);

std::chrono::milliseconds TakeTimeout(std::int32_t timeout_ms, const zel::Camera& camera) {
    if (timeout_ms >= 0) return std::chrono::milliseconds(timeout_ms);
    if (timeout_ms == ZEL_WAIT_AUTO) return camera.frame_timeout();
    throw Failure(ZEL_STATUS_INVALID_ARGUMENT, "a wait of " + std::to_string(timeout_ms) + " ms",
                  "it takes 0 or more, or ZEL_WAIT_AUTO");
}

[[noreturn]] void ThrowNoFrame(const CameraObject& object, const zel::Camera& camera, const zel::NoFrame& why) {
    if (object.ended()) throw Failure(ZEL_STATUS_BAD_HANDLE, "the camera was closed during the wait");
    try {
        camera.throw_no_frame(why);
    } catch (const zel::Error& error) {
        throw Failure(StatusOf(why.reason()), error.problem(), error.why(), error.hint());
    }
}

// `wait` answers the frame, or throws.
template <class Wait>
zel_status WaitForFrame(const char* function, zel_camera* camera, std::int32_t timeout_ms, std::int32_t order,
                        zel_frame** frame, zel_frame_info* info, Wait wait) {
    return Guard(function, [&](Call& call) {
        if (frame) *frame = nullptr;
        CameraObject& object = call.FindCamera(camera);
        zel::c::RequirePointer(frame, "frame");
        if (info) zel::c::RequireStruct(info, "info");
        const auto timeout = TakeTimeout(timeout_ms, object.camera());
        const auto wanted = zel::c::TakeEnum(order, zel::Order::newest, "order");
        zel_frame_info full;
        *frame = object.HandOver(wait(object, timeout, wanted), full);
        if (info) zel::c::FillStruct(info, full);
    });
}

}  // namespace

zel_status zel_camera_start(zel_camera* camera, const zel_start_options* options) {
    return Guard(__func__, [&](Call& call) {
        CameraObject& object = call.FindCamera(camera);
        const zel_start_options wanted = zel::c::TakeStruct(options, "options");
        const auto trigger = zel::c::TakeEnum(wanted.trigger, zel::Trigger::hardware, "options->trigger");
        if (wanted.frames < 0) {
            throw Failure(ZEL_STATUS_INVALID_ARGUMENT, "'options->frames' is " + std::to_string(wanted.frames));
        }
        // Frames of the run before are not counted with those of this one.
        object.camera().stop();
        object.ForgetFrames();
        object.camera().start({wanted.frames, trigger});
    });
}

zel_status zel_camera_stop(zel_camera* camera) {
    return Guard(__func__, [&](Call& call) {
        zel::Camera& opened = call.FindCamera(camera).camera();
        if (opened.stop()) return;
        throw Failure(ZEL_STATUS_FAILED, opened.label() + " did not answer the stop", opened.last_error(),
                      "check cable and power");
    });
}

zel_status zel_camera_trigger(zel_camera* camera) {
    return Guard(__func__, [&](Call& call) { call.FindCamera(camera).camera().trigger(); });
}

zel_status zel_camera_wait(zel_camera* camera, int32_t timeout_ms, int32_t order, zel_frame** frame,
                           zel_frame_info* info) {
    return WaitForFrame(__func__, camera, timeout_ms, order, frame, info,
                        [](CameraObject& object, std::chrono::milliseconds timeout, zel::Order wanted) {
                            zel::FrameResult result = object.camera().wait_frame(timeout, wanted);
                            if (!result) ThrowNoFrame(object, object.camera(), result.no_frame());
                            return result.take();
                        });
}

zel_status zel_camera_try_wait(zel_camera* camera, int32_t timeout_ms, int32_t order, zel_frame** frame,
                               zel_frame_info* info) {
    return WaitForFrame(__func__, camera, timeout_ms, order, frame, info,
                        [](CameraObject& object, std::chrono::milliseconds timeout, zel::Order wanted) {
                            zel::Frame taken = object.camera().try_frame(timeout, wanted);
                            if (!taken) {
                                throw Failure(ZEL_STATUS_TIMEOUT,
                                              "no frame from " + object.camera().label() + " within " +
                                                  std::to_string(timeout.count()) + " ms",
                                              "", "zel_camera_why_no_frame() tells why");
                            }
                            return taken;
                        });
}

zel_status zel_camera_interrupt(zel_camera* camera) {
    return Guard(__func__, [&](Call& call) { call.FindCamera(camera).camera().interrupt(); });
}

zel_status zel_camera_why_no_frame(zel_camera* camera, int32_t waited_ms, zel_no_frame* why) {
    return Guard(__func__, [&](Call& call) {
        const zel::Camera& opened = call.FindCamera(camera).camera();
        zel::c::RequireStruct(why, "why");
        const zel::NoFrame answer = opened.why_no_frame(TakeTimeout(waited_ms, opened));
        const zel::WaitState& state = answer.state();
        zel_no_frame full{};
        full.struct_size = sizeof full;
        full.reason = StatusOf(answer.reason());
        full.started = state.started;
        full.waits_for_hardware = state.waits_for_hardware;
        full.waits_for_software = state.waits_for_software;
        full.buffers = state.buffers;
        full.buffers_held = state.buffers_held;
        full.sequence = state.sequence;
        full.exposure_us = state.exposure.count();
        zel::c::CutInto(full.why, answer.why());
        zel::c::CutInto(full.hint, answer.hint());
        zel::c::FillStruct(why, full);
    });
}

zel_status zel_camera_get_drops(zel_camera* camera, zel_drops* drops) {
    return Guard(__func__, [&](Call& call) {
        CameraObject& object = call.FindCamera(camera);
        zel::c::RequireStruct(drops, "drops");
        zel_drops full{};
        full.struct_size = sizeof full;
        const zel::Drops counted = object.CountDrops(full.frames, full.camera_rate);
        full.link = counted.link;
        full.no_buffer = counted.no_buffer;
        full.skipped = counted.skipped;
        zel::c::FillStruct(drops, full);
    });
}

zel_status zel_camera_on_frame(zel_camera* camera, zel_frame_callback callback, void* user) {
    return Guard(__func__, [&](Call& call) { call.FindCamera(camera).SetFrameCallback(callback, user); });
}

zel_status zel_camera_on_event(zel_camera* camera, zel_camera_event_callback callback, void* user) {
    return Guard(__func__, [&](Call& call) { call.FindCamera(camera).SetEventCallback(callback, user); });
}

zel_status zel_camera_wait_event(zel_camera* camera, int32_t timeout_ms, zel_camera_event* event) {
    return Guard(__func__,
                 [&](Call& call) { zel::c::AnswerEvent(call.FindCamera(camera).events(), timeout_ms, event); });
}
