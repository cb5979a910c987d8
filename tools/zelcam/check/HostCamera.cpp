#include "tools/zelcam/check/HostCamera.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>

namespace zelcam::check {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kAnswerTime = std::chrono::milliseconds(2000);
constexpr auto kCalcTime = std::chrono::milliseconds(5000);

void AppendLittle(std::vector<std::uint8_t>& to, int value) {
    for (int shift = 0; shift < 32; shift += 8) {
        to.push_back(static_cast<std::uint8_t>(static_cast<unsigned>(value) >> shift));
    }
}

int Little(std::span<const std::uint8_t> bytes) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4 && i < bytes.size(); ++i) value |= unsigned{bytes[i]} << (8 * i);
    return static_cast<int>(value);
}

}  // namespace

bool HostCamera::Receive(std::span<std::uint8_t> into) {
    const auto end = Clock::now() + kAnswerTime;
    std::size_t received = 0;
    while (received < into.size()) {
        const int wanted = static_cast<int>(into.size() - received);
        const int count = m_Transport.RecvData(wanted, into.data() + received, 100);
        if (count < 0 || count > wanted || Clock::now() > end) return false;
        received += static_cast<std::size_t>(count);
    }
    return true;
}

TableAnswer HostCamera::Request(int command, int index, std::span<const std::uint8_t> data) {
    const std::lock_guard lock(m_ExchangeLock);
    const std::size_t length = data.size() + 7;
    std::vector<std::uint8_t> request = {0,
                                         static_cast<std::uint8_t>(length >> 8),
                                         static_cast<std::uint8_t>(length),
                                         static_cast<std::uint8_t>(command),
                                         0,
                                         static_cast<std::uint8_t>(data.size() + 4)};
    AppendLittle(request, index);
    request.insert(request.end(), data.begin(), data.end());
    TableAnswer answer;
    if (m_Transport.SendData(static_cast<int>(request.size()), request.data()) != static_cast<int>(request.size())) {
        return answer;
    }
    std::uint8_t header[3] = {};
    if (!Receive(header)) return answer;
    std::vector<std::uint8_t> payload(std::size_t{header[1]} * 256 + header[2]);
    if (!Receive(payload)) return answer;
    if (payload.size() >= 3) {
        const std::size_t size = std::min(payload.size() - 3, std::size_t{payload[1]} * 256 + payload[2]);
        answer.data.assign(payload.begin() + 3, payload.begin() + 3 + static_cast<std::ptrdiff_t>(size));
    }
    if (!Receive(header)) return answer;
    payload.resize(std::size_t{header[1]} * 256 + header[2]);
    if (!Receive(payload)) return answer;
    answer.complete = true;
    if (!payload.empty()) answer.exception = payload.size() >= 3 ? payload[2] : -1;
    return answer;
}

bool HostCamera::Get(int index, int& value) {
    const TableAnswer answer = Request(SYNC_TABLE_CMD_GET, index);
    if (!answer.complete || answer.exception != 0 || answer.data.size() < 4) return false;
    value = Little(answer.data);
    return true;
}

int HostCamera::Set(int index, int value) {
    std::vector<std::uint8_t> data;
    AppendLittle(data, value);
    const TableAnswer answer = Request(SYNC_TABLE_CMD_SET, index, data);
    return answer.complete ? answer.exception : -1;
}

std::string HostCamera::GetText(int index) {
    const TableAnswer answer = Request(SYNC_TABLE_CMD_GET, index);
    return {answer.data.begin(), std::find(answer.data.begin(), answer.data.end(), std::uint8_t{0})};
}

bool HostCamera::Text(const std::string& command, std::string& reply) {
    const std::lock_guard lock(m_ExchangeLock);
    std::vector<std::uint8_t> datagram = {9, 0, static_cast<std::uint8_t>(command.size())};
    datagram.insert(datagram.end(), command.begin(), command.end());
    m_Transport.SendData(static_cast<int>(datagram.size()), datagram.data());
    std::uint8_t header[3] = {};
    if (!Receive(header)) return false;
    std::vector<std::uint8_t> payload(std::size_t{header[1]} * 256 + header[2]);
    if (payload.size() > 4095 || !Receive(payload)) return false;
    reply.assign(payload.begin(), payload.end());
    return true;
}

void HostCamera::RegisterHandlers() {
    m_Transport.SetImageHandler(OnImage, Identity());
    m_Transport.SetEventHandler(OnEvent, Identity());
    m_Transport.EnableEvents(11);
}

HostCamera::Seen HostCamera::Snapshot() {
    const std::lock_guard lock(m_Lock);
    return m_Seen;
}

bool HostCamera::WaitForFrames(std::size_t frames, int timeout_ms) {
    std::unique_lock lock(m_Lock);
    return m_Changed.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                              [&] { return m_Seen.image_numbers.size() >= frames; });
}

bool HostCamera::WaitForRequests(int requests, int timeout_ms) {
    std::unique_lock lock(m_Lock);
    return m_Changed.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                              [&] { return m_Seen.free_requests >= requests; });
}

bool HostCamera::WaitForEvent(unsigned id, int timeout_ms) {
    std::unique_lock lock(m_Lock);
    return m_Changed.wait_for(lock, std::chrono::milliseconds(timeout_ms), [&] {
        return std::find(m_Seen.events.begin(), m_Seen.events.end(), id) != m_Seen.events.end();
    });
}

void HostCamera::Forget() {
    const std::lock_guard lock(m_Lock);
    m_Seen = {};
}

void HostCamera::Note(const char* call) {
    ++m_Calls;
    const std::lock_guard lock(m_Lock);
    if (m_Seen.calls.size() < kMostNotes) m_Seen.calls.emplace_back(call);
    m_Seen.frame_thread = std::this_thread::get_id();
}

int HostCamera::ConnectCommon() {
    ++m_Calls;
    if (m_OnConnect) m_OnConnect();
    const std::lock_guard lock(m_Lock);
    ++m_Seen.connects;
    m_Seen.connect_thread = std::this_thread::get_id();
    return m_ConnectCode;
}

int HostCamera::StopCommon() {
    ++m_Calls;
    {
        const std::lock_guard lock(m_Lock);
        ++m_Seen.stops;
    }
    return Set(CAMERA_STATE, 0) == 0 || Set(CAMERA_STATE, 0) == 0 ? 0 : 1;
}

bool HostCamera::Calculate() {
    if (Set(CALC_STATE, 1) != 0) return false;
    const auto end = Clock::now() + kCalcTime;
    int state = 0;
    while (Get(CALC_STATE, state) && state != 2) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return state == 2;
}

void HostCamera::MakeRecords() {
    int w = 0;
    int h = 0;
    Get(H_SIZE, w);
    Get(V_SIZE, h);
    const std::size_t bytes =
        m_BufferSize ? m_BufferSize : static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 2;
    const std::lock_guard lock(m_Lock);
    m_Free.clear();
    m_Pending.clear();
    m_Records.clear();
    for (int i = 0; i < m_Buffers; ++i) {
        auto record = std::make_unique<Record>();
        record->memory.assign(bytes + kGuardBytes, kGuard);
        record->image.w = static_cast<unsigned>(w);
        record->image.h = static_cast<unsigned>(h);
        record->image.pixels = reinterpret_cast<unsigned short*>(record->memory.data());
        record->image.buffer_size = static_cast<unsigned>(bytes);
        m_Free.push_back(&record->image);
        m_Records.push_back(std::move(record));
    }
}

int HostCamera::StartCommon() {
    ++m_Calls;
    {
        const std::lock_guard lock(m_Lock);
        ++m_Seen.starts;
    }
    if (m_StartCode != 0) return m_StartCode;
    if (!Calculate()) return 1;
    int buffers = m_Buffers;
    if (const int code = m_Transport.PrepareAcquisition(&buffers)) return code;
    MakeRecords();
    return 0;
}

int HostCamera::StartTriggerCommon() {
    {
        const std::lock_guard lock(m_Lock);
        ++m_Seen.trigger_starts;
        --m_Seen.starts;
    }
    return StartCommon();
}

bool HostCamera::GetCameraParameter(int index, int* value) {
    ++m_Calls;
    return value && Get(index, *value);
}

int* HostCamera::GetLastErrorPtr() {
    ++m_Calls;
    return &m_LastError;
}

bool HostCamera::SyncTapBalanceGain() {
    ++m_Calls;
    return true;
}

int HostCamera::TextCommandCommon(const char* text, bool) {
    ++m_Calls;
    std::string reply;
    return Text(text, reply) ? 0 : 1;
}

ZelImage* HostCamera::GetFreeImage() {
    Note("free");
    const std::lock_guard lock(m_Lock);
    ++m_Seen.free_requests;
    m_Changed.notify_all();
    if (m_Free.empty()) return nullptr;
    ZelImage* const image = m_Free.front();
    m_Free.pop_front();
    // Two values take turns, so that a frame that has one of them at its end does not look short.
    const std::uint8_t fill = ++m_Seen.taken % 2 == 0 ? 0x5A : 0xA6;
    for (const auto& record : m_Records) {
        if (&record->image != image) continue;
        record->out = true;
        record->before = fill;
        std::fill_n(record->memory.begin(), record->image.buffer_size, fill);
    }
    return image;
}

// The transport gives a record back.
void HostCamera::Return(ZelImage* image) {
    const auto record =
        std::find_if(m_Records.begin(), m_Records.end(), [=](const auto& one) { return &one->image == image; });
    if (record == m_Records.end() || !(*record)->out) {
        m_Seen.foreign_record = true;
        return;
    }
    (*record)->out = false;
    ++m_Seen.returned;
}

ZelImage* HostCamera::GetPendingImage() {
    ++m_Calls;
    return TakePending();
}

ZelImage* HostCamera::TakePending() {
    const std::lock_guard lock(m_Lock);
    if (m_Pending.empty()) return nullptr;
    ZelImage* const image = m_Pending.front();
    m_Pending.pop_front();
    return image;
}

void HostCamera::GiveBack(ZelImage* image) {
    const std::lock_guard lock(m_Lock);
    m_Free.push_back(image);
}

bool HostCamera::SetPendingImage(ZelImage* image) {
    Note("pending");
    const std::lock_guard lock(m_Lock);
    Return(image);
    m_Pending.push_back(image);
    return true;
}

bool HostCamera::ReleaseImage(ZelImage* image) {
    ++m_Calls;
    const std::lock_guard lock(m_Lock);
    Return(image);
    m_Free.push_back(image);
    return true;
}

void HostCamera::FillImageInfo(ZelImage*) { Note("info"); }
void HostCamera::FreeAllInUseImages() { ++m_Calls; }

void HostCamera::OnImage(ZelImage* image, ZelCamera* camera) {
    reinterpret_cast<HostCamera*>(camera)->HandleImage(image);
}

void HostCamera::OnEvent(const ZelCameraEvent* event, ZelCamera* camera) {
    HostCamera& host = *reinterpret_cast<HostCamera*>(camera);
    event->id == CAMERA_EVENT_IMAGE_READY ? host.Note("event") : static_cast<void>(++host.m_Calls);
    if (host.m_OnEvent) host.m_OnEvent(event->id);
    const std::lock_guard lock(host.m_Lock);
    if (host.m_Seen.events.size() < kMostNotes || event->id != CAMERA_EVENT_IMAGE_READY) {
        host.m_Seen.events.push_back(event->id);
    }
    host.m_Changed.notify_all();
}

void HostCamera::HandleImage(ZelImage* image) {
    Note("image");
    {
        const std::lock_guard lock(m_Lock);
        for (const auto& record : m_Records) {
            if (&record->image != image) continue;
            const std::size_t size = record->image.buffer_size;
            m_Seen.guard_damaged |= std::any_of(record->memory.begin() + static_cast<std::ptrdiff_t>(size),
                                                record->memory.end(), [](auto byte) { return byte != kGuard; });
            const auto behind =
                std::find_if(std::make_reverse_iterator(record->memory.begin() + static_cast<std::ptrdiff_t>(size)),
                             record->memory.rend(), [&](auto byte) { return byte != record->before; });
            m_Seen.written = std::max(m_Seen.written, static_cast<std::size_t>(record->memory.rend() - behind));
            m_Seen.last_frame.resize(size / 2);
            std::memcpy(m_Seen.last_frame.data(), record->memory.data(), size / 2 * 2);
        }
    }
    if (m_OnImage) m_OnImage();
    const std::lock_guard lock(m_Lock);
    m_Seen.image_numbers.push_back(image->image_number);
    if (m_Recycle) {
        std::erase(m_Pending, image);
        m_Free.push_back(image);
    }
    m_Changed.notify_all();
}

}  // namespace zelcam::check
