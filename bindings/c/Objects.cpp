#include "bindings/c/Objects.h"

#include <algorithm>

#include "bindings/c/Failure.h"
#include "bindings/c/Texts.h"

namespace zel::c {

void SdkObject::SetMessageCallback(zel_message_callback callback, void* user) {
    const std::lock_guard lock(m_Mutex);
    m_Messages = {callback, user};
}

void SdkObject::SetHotPlugCallback(zel_hot_plug_callback callback, void* user) {
    bool wanted;
    {
        const std::lock_guard lock(m_Mutex);
        m_HotPlug = {callback, user};
        wanted = callback || m_KeepsHotPlug;
    }
    if (wanted) {
        WatchHotPlug();
    } else {
        m_Sdk.on_hot_plug(nullptr);
    }
}

EventQueue<zel_hot_plug_event>& SdkObject::HotPlugEvents() {
    bool first;
    {
        const std::lock_guard lock(m_Mutex);
        first = !std::exchange(m_KeepsHotPlug, true);
    }
    if (first) WatchHotPlug();
    return m_HotPlugEvents;
}

void SdkObject::WatchHotPlug() {
    // A handle that is closed hears nothing more.
    m_Sdk.on_hot_plug([weak = weak_from_this()](const HotPlugEvent& event) {
        const auto self = weak.lock();
        if (!self) return;
        zel_hot_plug_event told{sizeof told, event.connected, event.camera.number, {}, {}, {}};
        CutInto(told.name, event.camera.name);
        CutInto(told.serial, event.camera.serial);
        CutInto(told.interface_type, event.camera.interface_type);
        Listener<zel_hot_plug_callback> listener;
        {
            const std::lock_guard lock(self->m_Mutex);
            listener = self->m_HotPlug;
            if (self->m_KeepsHotPlug) self->m_HotPlugEvents.Add(told);
        }
        if (listener.callback) listener.callback(&told, listener.user);
    });
}

void SdkObject::TellFailure(const char* function) noexcept {
    constinit thread_local bool telling = false;
    LastError& error = ThisThreadsError();
    // Frames that do not come are no news for the log: programs wait in loops.
    const bool logged = error.status < ZEL_STATUS_INTERRUPTED && error.status != ZEL_STATUS_TIMEOUT;
    if (logged) ZEL_LOG(m_Log, kLogWarning, function, "%s", error.message);
    Listener<zel_message_callback> listener;
    {
        const std::lock_guard lock(m_Mutex);
        listener = m_Messages;
    }
    if (!listener.callback || telling) return;
    const LastError kept = error;
    telling = true;
    try {
        listener.callback(kept.status, kept.message, listener.user);
    } catch (...) {
        // A callback of C++ that throws has no caller who could do anything about it.
    }
    telling = false;
    error = kept;
}

void CameraObject::ForgetFrames() {
    const std::lock_guard lock(m_Mutex);
    m_Counter = FrameCounter();
}

zel_frame* CameraObject::HandOver(Frame frame, zel_frame_info& info) {
    auto object = std::make_shared<FrameObject>(shared_from_this(), std::move(frame));
    info = object->Info();
    {
        const std::lock_guard lock(m_Mutex);
        m_Counter.frame(info.number, info.arrival_ms);
    }
    return Frames::Add(std::move(object));
}

Drops CameraObject::CountDrops(std::uint64_t& frames, double& rate) {
    const std::uint64_t lost = m_Camera.link_drops(), skipped = m_Camera.skipped();
    const std::lock_guard lock(m_Mutex);
    m_Counter.set_skipped(skipped);
    frames = m_Counter.frames();
    rate = frames == 0 ? 0.0 : m_Counter.camera_rate();
    return m_Counter.count(lost);
}

void CameraObject::SetFrameCallback(zel_frame_callback callback, void* user) {
    if (!callback) return m_Camera.on_frame(nullptr);
    m_Camera.on_frame([weak = weak_from_this(), callback, user](Frame frame) {
        const auto self = weak.lock();
        if (!self) return;
        zel_frame_info info;
        zel_frame* const handle = self->HandOver(std::move(frame), info);
        // Ends the loan when the callback returns, also with an exception of C++.
        struct Loan {
            ~Loan() {
                if (!object->kept()) Frames::Take(handle);
            }
            zel_frame* handle;
            std::shared_ptr<FrameObject> object = Frames::Find(handle);
        } const loan{handle};
        callback(self->m_Handle, handle, &info, user);
    });
}

void CameraObject::SetEventCallback(zel_camera_event_callback callback, void* user) {
    const std::lock_guard lock(m_Mutex);
    m_Listener = {callback, user};
}

zel_camera* CameraObject::Publish() {
    m_Handle = Cameras::Add(shared_from_this());
    try {
        ListenToEvents();
    } catch (...) {
        Cameras::Take(m_Handle);
        throw;
    }
    return m_Handle;
}

void CameraObject::ListenToEvents() {
    m_Camera.on_event([weak = weak_from_this()](const CameraEvent& event) {
        const auto self = weak.lock();
        if (!self) return;
        zel_camera_event told{sizeof told, static_cast<std::int32_t>(event.kind), event.code, event.value, {}};
        std::copy(event.values.begin(), event.values.end(), told.values);
        Listener<zel_camera_event_callback> listener;
        {
            const std::lock_guard lock(self->m_Mutex);
            listener = self->m_Listener;
        }
        self->m_Events.Add(told);
        if (listener.callback) listener.callback(self->m_Handle, &told, listener.user);
    });
}

zel_frame_info FrameObject::Info() const {
    const FrameInfo from = m_Frame.info();
    zel_frame_info info{};
    info.struct_size = sizeof info;
    info.width = from.width;
    info.height = from.height;
    info.bits = from.bits;
    info.number = from.number;
    info.exposure_us = static_cast<std::uint32_t>(from.exposure.count());
    info.region_x = from.region.x;
    info.region_y = from.region.y;
    info.region_width = from.region.width;
    info.region_height = from.region.height;
    info.bin_x = from.binning.x;
    info.bin_y = from.binning.y;
    info.arrival_ms = from.arrival_ms;
    info.hand_over_ms = from.hand_over_ms;
    info.hand_over_delay_ns = m_Frame.hand_over().count();
    info.pixels = m_Frame.pixels().data();
    info.pixel_bytes = m_Frame.pixels().size_bytes();
    const auto color = m_Frame.color_bytes();
    if (color.empty()) return info;
    info.color = color.data();
    info.color_bytes = color.size();
    info.color_format = static_cast<std::int32_t>(from.color->format);
    info.color_space = static_cast<std::int32_t>(from.color->space);
    info.color_channels = from.color->channels();
    info.color_bytes_per_channel = from.color->bytes_per_channel();
    info.color_bits = from.color->output_bits();
    info.color_black_level = from.color->black_level;
    return info;
}

}  // namespace zel::c
