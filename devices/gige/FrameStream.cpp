#include "devices/gige/FrameStream.h"

#include <algorithm>
#include <fstream>
#include <new>

#include "devices/gige/Failure.h"
#include "include/ZelParameters.h"
#include "platform/Clock.h"

namespace zel::gige {

namespace {

// Enough frames for a host that is away for a while, without filling the memory with large ones.
constexpr std::size_t kFewestBuffers = 4;
constexpr std::size_t kMostBuffers = 32;
constexpr std::size_t kBufferMemory = std::size_t{64} << 20;

// Cameras send a frame faster than a thread can be woken: the system's socket has to hold a good part of it. A size of
// one's own, since the automatic one is too small for small frames in large packets.
constexpr std::size_t kSmallestSocket = std::size_t{8} << 20;
constexpr std::size_t kLargestSocket = std::size_t{64} << 20;

ObjectPtr<ArvStream> Create(GenicamFeatures& features, ArvStreamCallback callback, void* data) {
    ArvStream* stream = nullptr;
    features.Do("opening a stream", [&](ArvCamera* camera, GError** error) {
#if ARAVIS_CHECK_VERSION(0, 9, 0)
        stream = arv_camera_create_stream(camera, callback, data, nullptr, error);
#else
        stream = arv_camera_create_stream(camera, callback, data, error);
#endif
    });
    if (!stream) throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, features.LastError());
    return ObjectPtr<ArvStream>(stream);
}

}  // namespace

FrameStream::FrameStream(GenicamFeatures& features, std::size_t frame_bytes)
    : m_Times(std::clamp(kBufferMemory / frame_bytes, kFewestBuffers, kMostBuffers)) {
    m_SocketBytes = static_cast<int>(std::clamp(2 * frame_bytes, kSmallestSocket, kLargestSocket));
    m_Stream = Create(features, OnStream, this);
    g_object_set(m_Stream.get(), "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 m_SocketBytes, nullptr);
    for (std::size_t i = 0; i < m_Times.size(); ++i) {
        // What GLib allocates itself ends the process when memory is short.
        auto* const memory = new (std::nothrow) std::uint8_t[frame_bytes];
        if (!memory) throw Failure(ZEL_ERROR_IMAGE_BUFFER_ALLOCATION_FAILURE, "no memory for the link's buffers");
        const auto free = [](void* bytes) { delete[] static_cast<std::uint8_t*>(bytes); };
        arv_stream_push_buffer(m_Stream.get(), arv_buffer_new_full(frame_bytes, memory, memory, free));
    }
}

void FrameStream::OnStream(void* stream, ArvStreamCallbackType type, ArvBuffer*) {
    if (type != ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE) return;
    auto& self = *static_cast<FrameStream*>(stream);
    const auto now = Clock::now();
    const platform::ScopedLock lock(self.m_Lock);
    if (self.m_Waiting == self.m_Times.size()) return;
    self.m_Times[(self.m_First + self.m_Waiting++) % self.m_Times.size()] = now;
    self.m_Changed.notify_all();
}

std::optional<FrameStream::Arrival> FrameStream::WaitUntil(Clock::time_point time) {
    Arrival arrival;
    {
        platform::ScopedLock lock(m_Lock);
        m_Changed.wait_until(lock, time, [&]() ZEL_REQUIRES(m_Lock) { return m_Woken || m_Waiting > 0; });
        if (m_Woken || m_Waiting == 0) {
            m_Woken = false;
            return std::nullopt;
        }
        arrival.ready = m_Times[m_First];
        m_First = (m_First + 1) % m_Times.size();
        --m_Waiting;
    }
    // It is there, or in the next moment.
    arrival.buffer = arv_stream_timeout_pop_buffer(m_Stream.get(), 100'000);
    if (!arrival.buffer) return std::nullopt;
    return arrival;
}

void FrameStream::Wake() {
    const platform::ScopedLock lock(m_Lock);
    m_Woken = true;
    m_Changed.notify_all();
}

void FrameStream::GiveBack(ArvBuffer* buffer) { arv_stream_push_buffer(m_Stream.get(), buffer); }

void FrameStream::Drain() const {
    constexpr int kMostLooks = 20;
    std::uint64_t packets = 0;
    for (int look = 0; look < kMostLooks; ++look) {
        const std::uint64_t now = arv_stream_get_info_uint64_by_name(m_Stream.get(), "n_received_packets");
        if (look > 0 && now == packets) return;
        packets = now;
        platform::SleepMilliseconds(10);
    }
}

void FrameStream::Count(LinkCounters& counters) const {
    const auto info = [&](const char* name) { return arv_stream_get_info_uint64_by_name(m_Stream.get(), name); };
    counters.packets = info("n_received_packets");
    counters.missing_packets = info("n_missing_packets");
    counters.resend_requests = info("n_resend_requests");
    counters.resent_packets = info("n_resent_packets");
    counters.bad_packets = info("n_error_packets");
    counters.without_buffer = info("n_underruns");
}

int FrameStream::SocketBytesAllowed() {
    int bytes = 0;
    std::ifstream("/proc/sys/net/core/rmem_max") >> bytes;
    return bytes;
}

}  // namespace zel::gige
