#include "tools/zelcam/camera/EventQueue.h"

#include <cstdio>
#include <exception>

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

}  // namespace

bool EventQueue::Next(Json& event, std::chrono::milliseconds timeout) {
    std::unique_lock lock(m_Mutex);
    if (!m_Changed.wait_for(lock, timeout, [this] { return !m_Events.empty(); })) return false;
    event = std::move(m_Events.front());
    m_Events.pop_front();
    return true;
}

// Nobody above could do anything about an event that can't be kept.
template <class Describe>
void EventQueue::Push(Describe describe) {
    try {
        Json event = describe();
        const std::lock_guard lock(m_Mutex);
        m_Events.push_back(std::move(event));
        m_Changed.notify_one();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zelcam: an event was lost: %s\n", error.what());
    }
}

void EventQueue::Add(const zel::HotPlugEvent& event) {
    Push([&] {
        Json json = NewEvent(event.connected ? "connect" : "disconnect", event.camera.number);
        json["name"] = event.camera.name;
        json["serial"] = event.camera.serial;
        json["interface"] = event.camera.interface_type;
        return json;
    });
}

void EventQueue::Add(int camera, const zel::CameraEvent& event) {
    Push([&] {
        if (event.kind == zel::CameraEvent::Kind::link_lost) return NewEvent("link_lost", camera);
        if (event.kind == zel::CameraEvent::Kind::link_back) return NewEvent("link_back", camera);
        Json json = NewEvent("camera_event", camera);
        json["code"] = event.code;
        json["value"] = event.value;
        json["values"] = event.values;
        return json;
    });
}

}  // namespace zelcam
