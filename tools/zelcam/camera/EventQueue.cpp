#include "tools/zelcam/camera/EventQueue.h"

#include <cstdio>
#include <exception>

#include "tools/zelcam/text/TextTools.h"
#include "tools/zelcam/text/UtcTime.h"

namespace zelcam {

namespace {

Json NewEvent(const char* what, int camera) {
    Json event;
    event["time_utc"] = UtcNow();
    event["event"] = what;
    event["camera"] = camera;
    return event;
}

// Nothing may throw back into the library that calls.
template <class Action>
void Guarded(Action action) {
    try {
        action();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zelcam: an event was lost: %s\n", error.what());
    }
}

}  // namespace

bool EventQueue::Next(Json& event, std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_Mutex);
    if (!m_Changed.wait_for(lock, timeout, [this] { return !m_Events.empty(); })) return false;
    event = std::move(m_Events.front());
    m_Events.pop_front();
    return true;
}

void EventQueue::Push(Json event) {
    const std::lock_guard lock(m_Mutex);
    m_Events.push_back(std::move(event));
    m_Changed.notify_one();
}

void EventQueue::CameraConnected(int event_id, int camera_index, const char* name, const char* serial_number,
                                 const char* interface_type, void* context) {
    Guarded([&] {
        const char* const what = event_id == ZEL_CAMERA_CONNECT      ? "connect"
                                 : event_id == ZEL_CAMERA_DISCONNECT ? "disconnect"
                                                                     : "hot_plug";
        Json event = NewEvent(what, camera_index);
        event["name"] = TextOrEmpty(name);
        event["serial"] = TextOrEmpty(serial_number);
        event["interface"] = TextOrEmpty(interface_type);
        static_cast<EventQueue*>(context)->Push(std::move(event));
    });
}

void EventQueue::CameraEvent(int event_code, void* context) {
    // The camera's own events come with their values through the other callback as well.
    if (event_code != ZEL_CAMERA_CONTROL_DISCONNECT && event_code != ZEL_CAMERA_CONTROL_RECONNECT) return;
    Guarded([&] {
        const auto* const source = static_cast<EventSource*>(context);
        const bool lost = event_code == ZEL_CAMERA_CONTROL_DISCONNECT;
        source->queue->Push(NewEvent(lost ? "link_lost" : "link_back", source->camera));
    });
}

void EventQueue::CameraEventEx(int event_code, const ZelCameraControlRecord* record, void* context) {
    Guarded([&] {
        const auto* const source = static_cast<EventSource*>(context);
        Json event = NewEvent("camera_event", source->camera);
        event["code"] = event_code;
        if (record) {
            event["value"] = record->value;
            event["values"] = record->values;
        }
        source->queue->Push(std::move(event));
    });
}

}  // namespace zelcam
