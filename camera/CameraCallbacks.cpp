// From the transport's handlers to the application's callbacks. All of it runs on the transport's thread, and no lock
// is held while the application is called.
#include "camera/ZelCameraControl.h"

namespace zel {

namespace {
constexpr int kEnableEvents = 11;
constexpr unsigned kLastEventId = 10;
constexpr const char* kEvent = "ZelCameraControl::EventCallback";

std::atomic<unsigned> s_NotificationCount{0};
}  // namespace

unsigned ZelCameraControl::NotificationCount() { return s_NotificationCount; }

ZelCameraControl::Callbacks ZelCameraControl::CopyCallbacks() {
    const platform::ScopedLock lock(m_CallbackLock);
    return m_Callbacks;
}

bool ZelCameraControl::RegisterEventHandler() {
    if (!m_Camera || !m_Camera->SetEventHandler(zel_event_handler, this)) return false;
    return m_Camera->EnableEvents(kEnableEvents);
}

template <class Function>
void ZelCameraControl::StoreCallback(const char* function_name, Function Callbacks::*slot,
                                     void* Callbacks::*context_slot, Function function, void* context) {
    {
        const platform::ScopedLock lock(m_CallbackLock);
        m_Callbacks.*slot = function;
        m_Callbacks.*context_slot = context;
    }
    ZEL_LOG(m_Logger, kLogTrace, function_name, "%s() func:%s, context:%s\n", function_name, PointerText(function).text,
            PointerText(context).text);
}

bool ZelCameraControl::SetTextCommandCallback(ZelTextCommandCallback callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    StoreCallback("ZelCameraControl::SetTextCommandCallback", &Callbacks::text, &Callbacks::text_context, callback,
                  context);
    return true;
}

bool ZelCameraControl::SetCameraControlCallback(ZelCameraControlCallback callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    StoreCallback("ZelCameraControl::SetCameraControlCallback", &Callbacks::control, &Callbacks::control_context,
                  callback, context);
    return RegisterEventHandler();
}

bool ZelCameraControl::SetCameraControlCallbackEx(ZelCameraControlCallbackEx callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    StoreCallback("ZelCameraControl::SetCameraControlCallbackEx", &Callbacks::control_ex, &Callbacks::control_context,
                  callback, context);
    return RegisterEventHandler();
}

bool ZelCameraControl::SetImageNotificationCallback(ZelImageNotificationCallback callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    StoreCallback("ZelCameraControl::SetImageNotificationCallback", &Callbacks::notification,
                  &Callbacks::notification_context, callback, context);
    return RegisterEventHandler();
}

bool ZelCameraControl::SetImageCallback(ZelImageCallback callback, void* context) {
    const Operation entry(*this);
    if (!entry) return false;
    StoreCallback("ZelCameraControl::SetImageCallback", &Callbacks::image, &Callbacks::image_context, callback,
                  context);
    return m_Camera && m_Camera->SetImageHandler(zel_image_handler, this);
}

void ZelCameraControl::ImageCallback(ZelImage* image) {
    const Callee entry(*this, Gate::Kind::kOperation);
    if (!entry) return;
    ZEL_LOG(m_Logger, kLogTrace, "zel_image_handler", "Handling an image callback!");
    if (!CopyCallbacks().image || m_Stopped) return;
    // Held until the callback has returned: the application may close the camera inside.
    const FrameLease frame = m_ImageManager.Lease(static_cast<ZelImageInternal*>(image));
    if (!frame) return;
    const Path path = m_HasColorFilter ? Path::kColor : Path::kMonochrome;
    if (!PostProcessOnce(frame, path, Caller::kTransport)) return;
    // What was stopped or switched off meanwhile is not called once more.
    const Callbacks callbacks = CopyCallbacks();
    if (m_Stopped || !callbacks.image) return;
    callbacks.image(image, callbacks.image_context);
}

// Whether the camera has been stopped or closed meanwhile.
bool ZelCameraControl::EndedSince(bool stopped, bool open) const {
    return (!stopped && m_Stopped) || (open && m_CameraOpened != 1);
}

void ZelCameraControl::EventCallback(const ZelCameraEvent* event) {
    const Callee entry(*this, Gate::Kind::kOperation);
    if (!entry) return;
    if (!event || event->id > kLastEventId) return;
    Callbacks callbacks = CopyCallbacks();
    if (event->id < CAMERA_EVENT_IMAGE_READY) {
        const int id = static_cast<int>(event->id);
        const bool stopped = m_Stopped;
        const bool open = m_CameraOpened == 1;
        if (callbacks.control) callbacks.control(id, callbacks.control_context);
        // The first callback may have changed the second one or ended it.
        callbacks = CopyCallbacks();
        if (!callbacks.control_ex || EndedSince(stopped, open)) return;
        ZelCameraControlRecord record{};
        record.value = event->value;
        for (int i = 0; i < 8; ++i) record.values[i] = event->values[i];
        callbacks.control_ex(id, &record, callbacks.control_context);
        return;
    }
    switch (event->id) {
        case CAMERA_EVENT_IMAGE_READY:
            // A stop inside a callback is the last one also when a start is still to end.
            if (callbacks.notification && !m_Stopped) {
                ++s_NotificationCount;
                ZEL_SCOPE_TIMER(timer, "pending image callback execution time", m_Logger, kEvent);
                callbacks.notification(ZEL_IMAGE_NOTIFICATION_PENDING, callbacks.notification_context);
            }
            break;
        case CAMERA_EVENT_IMAGE:
            if (callbacks.notification) {
                callbacks.notification(ZEL_IMAGE_NOTIFICATION_EVENT, callbacks.notification_context);
            }
            break;
        case CAMERA_EVENT_DISCONNECT:
            ReportConnection(callbacks, ZEL_CAMERA_CONTROL_DISCONNECT, "DISCONNECT");
            break;
        case CAMERA_EVENT_RECONNECT:
            ReportConnection(callbacks, ZEL_CAMERA_CONTROL_RECONNECT, "RECONNECT");
            break;
        default:
            ZEL_LOG(m_Logger, kLogError, kEvent, "***ERROR***: invalid event id");
            break;
    }
}

void ZelCameraControl::ReportConnection(const Callbacks& callbacks, int code, const char* what) {
    ZEL_LOG(m_Logger, kLogTrace, kEvent,
            "ZelCameraControl::EventCallback() - CAMERA_EVENT_%s - camera_control_callback:%s", what,
            PointerText(callbacks.control).text);
    if (!callbacks.control) return;
    ZEL_LOG(m_Logger, kLogTrace, kEvent,
            "ZelCameraControl::EventCallback() - calling back into the app with ZEL_CAMERA_CONTROL_%s", what);
    callbacks.control(code, callbacks.control_context);
    ZEL_LOG(m_Logger, kLogTrace, kEvent,
            "ZelCameraControl::EventCallback() - returning from the app after ZEL_CAMERA_CONTROL_%s event", what);
}

void ZEL_CALL zel_image_handler(ZelImage* image, ZelCamera* camera) {
    if (camera) static_cast<ZelCameraControl*>(camera)->ImageCallback(image);
}

void ZEL_CALL zel_event_handler(const ZelCameraEvent* event, ZelCamera* camera) {
    if (!camera) return;
    auto* control = static_cast<ZelCameraControl*>(camera);
    ZEL_LOG(CameraControlLogger().Get(), kLogTrace, "zel_event_handler", "Handling an event callback!");
    control->EventCallback(event);
}

}  // namespace zel
