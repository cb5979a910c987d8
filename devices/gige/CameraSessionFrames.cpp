// The acquisitions of an open camera.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "devices/gige/CameraSession.h"
#include "devices/gige/Failure.h"
#include "devices/gige/LinkShares.h"
#include "include/ZelParameters.h"

namespace zel::gige {

namespace {

using Clock = FrameStream::Clock;
constexpr auto kLookAround = std::chrono::milliseconds(500);

// How long a frame may take from its trigger on, beside its exposure.
constexpr auto kLongestReadout = std::chrono::seconds(2);

std::string MemoryText(const FrameStream& stream) {
    return "\r\nmemory: " + std::to_string(stream.Buffers()) +
           " frames; socket: " + std::to_string(stream.SocketBytesAsked()) + " bytes asked for";
}

// A system that gives less than was asked for says nothing.
std::string MemoryWarning(const FrameStream& stream) {
    const int allowed = FrameStream::SocketBytesAllowed();
    if (allowed <= 0 || allowed >= stream.SocketBytesAsked()) return {};
    return ", only " + std::to_string(allowed) +
           " given: sudo sysctl -w net.core.rmem_max=" + std::to_string(stream.SocketBytesAsked());
}

}  // namespace

void CameraSession::Acquire(kit::FrameSink& sink, const kit::Run& run, TriggerInput input) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Acquiring = true;
        m_Counters = {};
        m_Run = m_Format;
    }
    m_MayBreak = !run.hardware;
    try {
        SetTrigger(run, input);
        BeginStream();
        Loop(sink, run.triggered && !run.hardware);
    } catch (...) {
        EndStream();
        throw;
    }
    EndStream();
}

void CameraSession::SetTrigger(const kit::Run& run, TriggerInput input) {
    if (!m_Features.Has("TriggerMode")) {
        if (!run.triggered) return;
        throw Failure(ZEL_ERROR_UNSUPPORTED, "it has no trigger");
    }
    bool set = true;
    if (run.triggered) {
        const auto line = static_cast<std::size_t>(std::max(input.line, 1)) - 1;
        if (run.hardware && line >= m_Lines.size())
            throw Failure(ZEL_ERROR_UNSUPPORTED, "it has no such trigger input");
        set = m_Features.SetText("TriggerSource", run.hardware ? m_Lines[line] : "Software");
        if (run.hardware) m_Features.Prefer("TriggerActivation", input.active_low ? "FallingEdge" : "RisingEdge");
    }
    if (!set || !m_Features.SetText("TriggerMode", run.triggered ? "On" : "Off")) {
        throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, "its trigger can't be set: " + m_Features.LastError());
    }
}

std::size_t CameraSession::FrameBytes() const {
    return PackedBytes(m_Run.packing, static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height));
}

void CameraSession::BeginStream() {
    std::size_t payload = 0;
    m_Features.Do("PayloadSize", [&](ArvCamera* camera, GError** error) {
        payload = arv_camera_get_payload(camera, error);
        if (!*error) m_RunFormat = arv_camera_get_pixel_format(camera, error);
    });
    const std::size_t bytes = FrameBytes();
    // What lies behind a frame is not much; a camera that asks for more than that does not mean it.
    if (payload > bytes * 2 + (1 << 20)) payload = bytes;
    auto stream = std::make_shared<FrameStream>(m_Features, std::max(payload, bytes));
    m_Frames = stream.get();
    m_Ids = {};
    {
        const platform::ScopedLock lock(m_Lock);
        m_MemoryText = MemoryText(*stream);
        m_MemoryWarning = MemoryWarning(*stream);
        m_Stream = std::move(stream);
    }
    m_PacedFor = 0;
    Pace();
    const bool started = m_Features.Do(
        "starting", [](ArvCamera* camera, GError** error) { arv_camera_start_acquisition(camera, error); });
    if (!started) throw Failure(ZEL_ERROR_CAMERA_COMM_FAILURE, m_Features.LastError());
}

// The stream of a camera that is gone says good-bye to it, too: that is left to the end of the session.
void CameraSession::EndStream() {
    if (m_Frames) {
        const bool stopped = m_Features.Do(
            "stopping", [](ArvCamera* camera, GError** error) { arv_camera_stop_acquisition(camera, error); });
        if (stopped) m_Frames->Drain();
    }
    m_Frames = nullptr;
    std::shared_ptr<FrameStream> stream;
    const platform::ScopedLock lock(m_Lock);
    if (m_Stream) m_Stream->Count(m_Counters);
    if (!Gone()) stream.swap(m_Stream);
    m_Acquiring = false;
}

// Other cameras may have come to the same port, or gone.
void CameraSession::Pace() {
    const int cameras = std::max(LinkShares::Get().Cameras(m_Port), 1);
    if (cameras == m_PacedFor.exchange(cameras)) return;
    const std::int64_t wanted = PacketDelayNs(m_PacketBytes, m_LinkBitsPerSecond, cameras);
    m_Features.Do("inter-packet delay", [&](ArvCamera* camera, GError** error) {
        arv_camera_gv_set_packet_delay(camera, wanted, error);
        m_DelayNs = *error ? -1 : arv_camera_gv_get_packet_delay(camera, error);
    });
}

void CameraSession::Wake() {
    const platform::ScopedLock lock(m_Lock);
    if (m_Stream) m_Stream->Wake();
}

void CameraSession::Loop(kit::FrameSink& sink, bool by_software) {
    while (!sink.Ended()) {
        if (by_software) {
            if (!sink.WaitForTrigger() || !FireTrigger(sink)) break;
        } else if (const auto arrival = m_Frames->WaitUntil(Clock::now() + kLookAround)) {
            Take(*arrival, sink);
            Pace();
        }
        if (Gone()) break;
    }
    if (Gone()) sink.Vanish();
}

// One trigger, one frame: a camera ignores a trigger that comes while it is exposing, so the next one waits.
bool CameraSession::FireTrigger(kit::FrameSink& sink) {
    const std::string name = m_Features.FirstNumber({"ExposureTime", "ExposureTimeAbs"});
    const auto exposure = std::chrono::microseconds(static_cast<std::int64_t>(m_Features.Number(name).value_or(0)));
    if (!m_Features.Execute("TriggerSoftware")) {
        Lose(sink, &LinkCounters::late, 1);
        return true;
    }
    const auto deadline = Clock::now() + exposure + kLongestReadout;
    while (!sink.Ended() && !Gone()) {
        if (const auto arrival = m_Frames->WaitUntil(std::min(deadline, Clock::now() + kLookAround))) {
            if (Take(*arrival, sink)) return true;
            m_Features.Execute("TriggerSoftware");
        }
        if (Clock::now() < deadline) continue;
        Lose(sink, &LinkCounters::late, 1);
        return true;
    }
    return false;
}

void CameraSession::Lose(kit::FrameSink& sink, std::uint64_t LinkCounters::*cause, unsigned frames) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Counters.*cause += frames;
    }
    sink.Lose(frames);
}

// Aravis tells the system the size of the socket when the first packet of a run is there; until then it has the usual
// one, and a camera that sends a frame in one go breaks its first one. A run begins with the next then, which costs
// nothing but time; a trigger is given again. Result: whether it was more than such a beginning.
bool CameraSession::Take(const FrameStream::Arrival& arrival, kit::FrameSink& sink) {
    ArvBuffer* const buffer = arrival.buffer;
    const auto fate = Judge(buffer);
    const bool whole = arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS;
    const unsigned gap = m_Ids.Next(arv_buffer_get_frame_id(buffer), whole);
    if (gap > 0) Lose(sink, &LinkCounters::unseen, gap);
    const bool broken = fate == &LinkCounters::incomplete || fate == &LinkCounters::late;
    if (std::exchange(m_MayBreak, false) && broken) {
        {
            const platform::ScopedLock lock(m_Lock);
            ++m_Counters.before_first;
        }
        m_Frames->GiveBack(buffer);
        return false;
    }
    if (fate == &LinkCounters::whole) {
        {
            const platform::ScopedLock lock(m_Lock);
            ++m_Counters.whole;
            m_Counters.camera_time_ns = arv_buffer_get_timestamp(buffer);
        }
        kit::FrameFacts facts;
        facts.link_bytes = FrameBytes();
        facts.ready = arrival.ready;
        sink.Give(facts, [&](std::span<std::uint8_t> memory) {
            Fill(buffer, memory);
            return true;
        });
    } else {
        Lose(sink, fate, 1);
    }
    m_Frames->GiveBack(buffer);
    return true;
}

// Nothing in a buffer is believed that was not asked for.
std::uint64_t LinkCounters::*CameraSession::Judge(ArvBuffer* buffer) {
    switch (arv_buffer_get_status(buffer)) {
        case ARV_BUFFER_STATUS_SUCCESS:
            break;
        case ARV_BUFFER_STATUS_TIMEOUT:
            return &LinkCounters::late;
        case ARV_BUFFER_STATUS_MISSING_PACKETS:
            return &LinkCounters::incomplete;
        case ARV_BUFFER_STATUS_SIZE_MISMATCH:
            return &LinkCounters::other_shape;
        default:
            return &LinkCounters::broken_off;
    }
    const auto type = arv_buffer_get_payload_type(buffer);
    const bool image = type == ARV_BUFFER_PAYLOAD_TYPE_IMAGE || type == ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA;
    std::size_t bytes = 0;
    if (image) arv_buffer_get_image_data(buffer, &bytes);
    const gint width = image ? arv_buffer_get_image_width(buffer) : 0;
    const gint height = image ? arv_buffer_get_image_height(buffer) : 0;
    const ArvPixelFormat format = image ? arv_buffer_get_image_pixel_format(buffer) : 0;
    gint padding = 0;
    gint rows_padding = 0;
    if (image) arv_buffer_get_image_padding(buffer, &padding, &rows_padding);
    const auto h = static_cast<std::size_t>(m_Height);
    const std::size_t needed =
        padding <= 0
            ? FrameBytes()
            : h * (PackedBytes(m_Run.packing, static_cast<std::size_t>(m_Width)) + static_cast<std::size_t>(padding));
    if (width == m_Width && height == m_Height && format == m_RunFormat && bytes >= needed) {
        return &LinkCounters::whole;
    }
    char shape[120];
    std::snprintf(shape, sizeof shape, "%d x %d, format 0x%08x, %zu bytes instead of %d x %d, 0x%08x, %zu", width,
                  height, format, bytes, m_Width, m_Height, m_RunFormat, needed);
    const platform::ScopedLock lock(m_Lock);
    m_Counters.last_shape = shape;
    return &LinkCounters::other_shape;
}

void CameraSession::Fill(ArvBuffer* buffer, std::span<std::uint8_t> memory) const {
    std::size_t bytes = 0;
    const auto* from = static_cast<const std::uint8_t*>(arv_buffer_get_image_data(buffer, &bytes));
    gint padding = 0;
    gint rows_padding = 0;
    arv_buffer_get_image_padding(buffer, &padding, &rows_padding);
    const auto w = static_cast<std::size_t>(m_Width);
    const std::size_t all = w * static_cast<std::size_t>(m_Height);
    const std::span<std::uint16_t> samples(reinterpret_cast<std::uint16_t*>(memory.data()),
                                           std::min(all, memory.size() / 2));
    if (padding <= 0) {
        Unpack(m_Run.packing, {from, bytes}, samples);
        return;
    }
    const std::size_t row_bytes = PackedBytes(m_Run.packing, w);
    for (std::size_t at = 0; at < samples.size(); at += w, from += row_bytes + static_cast<unsigned>(padding)) {
        Unpack(m_Run.packing, {from, row_bytes}, samples.subspan(at, std::min(w, samples.size() - at)));
    }
}

std::string CameraSession::Losses() const {
    const platform::ScopedLock lock(m_Lock);
    return m_Counters.Lost() > 0 ? CountersText(m_Counters, "; ") +
                                       (m_MemoryWarning.empty() ? "" : "; socket: " + m_MemoryWarning.substr(2))
                                 : "";
}

std::string CameraSession::LinkText() {
    char line[200];
    std::string text = "camera: " + m_Address + " over " + m_Port + ", " + Format().name;
    const int cameras = std::max(LinkShares::Get().Cameras(m_Port), 1);
    std::snprintf(line, sizeof line,
                  "\r\nlink: %.0f Mb/s%s, %d open here, share %.0f %%: %.1f MB/s; packets of %d bytes",
                  m_LinkBitsPerSecond / 1e6, m_LinkSpeedTold ? "" : " (taken for granted)", cameras, 100.0 / cameras,
                  ShareBytesPerSecond(m_PacketBytes, m_LinkBitsPerSecond, cameras) / 1e6, m_PacketBytes);
    text += line;
    const std::int64_t delay = m_DelayNs;
    text += delay < 0 ? ", delay not set" : ", " + std::to_string(delay) + " ns apart";
    const platform::ScopedLock lock(m_Lock);
    if (m_Stream) m_Stream->Count(m_Counters);
    text += m_MemoryText + m_MemoryWarning;
    text += "\r\n" + CountersText(m_Counters, "\r\n");
    std::snprintf(line, sizeof line, "\r\ntime: %llu ns of the camera's clock (%llu Hz)",
                  static_cast<unsigned long long>(m_Counters.camera_time_ns),
                  static_cast<unsigned long long>(m_ClockHz));
    text += line;
    const std::string error = m_Features.LastError();
    return error.empty() ? text : text + "\r\nlast refusal: " + error;
}

}  // namespace zel::gige
