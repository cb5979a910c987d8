// One call from outside: nothing thrown leaves it, and the objects that it works on live until it has ended.
#ifndef BINDINGS_C_CALL_H
#define BINDINGS_C_CALL_H

#include <memory>

#include "bindings/c/Failure.h"
#include "bindings/c/Objects.h"
#include "bindings/c/Structs.h"
#include "bindings/c/Texts.h"

namespace zel::c {

class Call {
  public:
    // The object of a handle. Throw Failure.
    const std::shared_ptr<SdkObject>& FindSdk(const zel_sdk* handle);
    CameraObject& FindCamera(const zel_camera* handle);
    FrameObject& FindFrame(const zel_frame* handle);
    // The same for a handle that is dead from now on.
    SdkObject& TakeSdk(const zel_sdk* handle);
    CameraObject& TakeCamera(const zel_camera* handle);
    void TakeFrame(const zel_frame* handle);

    // Inside a catch block: remembers the exception, tells of it and answers its status.
    zel_status End(const char* function) noexcept;

  private:
    // The last one is destroyed first.
    std::shared_ptr<SdkObject> m_Sdk;
    std::shared_ptr<CameraObject> m_Camera;
    std::shared_ptr<FrameObject> m_Frame;
};

// Waits for an event of the queue and hands it to the caller's struct. Throws Failure when none comes in time.
template <class Event>
void AnswerEvent(EventQueue<Event>& queue, std::int32_t timeout_ms, Event* event) {
    RequireStruct(event, "event");
    if (timeout_ms < 0) {
        throw Failure(ZEL_STATUS_INVALID_ARGUMENT, "a wait of " + std::to_string(timeout_ms) + " ms",
                      "it takes 0 or more");
    }
    Event full;
    switch (queue.Next(std::chrono::milliseconds(timeout_ms), full)) {
        case EventQueue<Event>::Answer::kEvent:
            return FillStruct(event, full);
        case EventQueue<Event>::Answer::kNone:
            throw Failure(ZEL_STATUS_TIMEOUT, "no event within " + std::to_string(timeout_ms) + " ms");
        case EventQueue<Event>::Answer::kEnded:
            throw Failure(ZEL_STATUS_BAD_HANDLE, "the handle was closed during the wait");
    }
}

// Runs the body of an exported function, which is handed the Call.
template <class Body>
zel_status Guard(const char* function, Body&& body) noexcept {
    Call call;
    try {
        body(call);
        ThisThreadsError().Clear();
        return ZEL_OK;
    } catch (...) {
        return call.End(function);
    }
}

}  // namespace zel::c

#endif
