#include "tests/campaign/FaultyTransport.h"

#include <algorithm>

#include "platform/Clock.h"

namespace zel::campaign {

void FaultyTransport::SetCameraCommon(IZelCameraCommon* camera) {
    const Crossing crossing(Side::kAround);
    m_Sdk.next = camera;
    Next().SetCameraCommon(camera ? &m_Sdk : nullptr);
}

// Whatever an earlier connection left unread is gone.
int FaultyTransport::Connect() {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Stream.clear();
    }
    return Do("connect", &ICameraInterface::Connect);
}

int FaultyTransport::SendData(int len, const unsigned char* data) {
    const Crossing crossing(Side::kAround);
    const FaultKind* const fault = m_Link.Next(Occasion::kExchange);
    if (fault && fault->effect == Effect::kUnplug) m_Link.Unplug("", fault->amount);
    if (fault && fault->effect == Effect::kDead) m_Link.dead = true;
    if (m_Link.dead) return 0;
    if (fault && fault->effect == Effect::kShortSend) return fault->amount < 0 ? -1 : len - fault->amount;
    const platform::ScopedLock lock(m_Lock);
    return TakeReply(fault, len, data);
}

// The reply is taken at once, so that all waiting is on the campaign's clock.
int FaultyTransport::TakeReply(const FaultKind* fault, int length, const unsigned char* data) {
    m_FalseCount = 0;
    m_OneByte = m_Late = false;
    std::vector<unsigned char> reply(4096);
    std::size_t size = 0;
    int sent = length;
    if (fault && fault->effect == Effect::kException) {
        const bool text = length > 0 && data[0] != 0;
        const auto code = static_cast<unsigned char>(fault->amount);
        reply = text ? std::vector<unsigned char>{9, 0, 6, 'E', 'R', 'R', '\r', '\n', '\0'}
                     : std::vector<unsigned char>{0, 0, 3, data[3], 0, 0, 0, 0, 3, 0, 0, code};
    } else {
        sent = Next().SendData(length, data);
        for (int more = 1; more > 0 && size < reply.size(); size += static_cast<std::size_t>(more))
            more = std::max(0, Next().RecvData(static_cast<int>(reply.size() - size), reply.data() + size, 0));
        reply.resize(size);
    }
    if (fault) Spoil(*fault, reply);
    if (m_Link.silent > 0) {
        --m_Link.silent;
        reply.clear();
    }
    m_Stream.insert(m_Stream.end(), reply.begin(), reply.end());
    return sent;
}

void FaultyTransport::Spoil(const FaultKind& fault, std::vector<unsigned char>& reply) {
    unsigned random = static_cast<unsigned>(m_Link.Count(Occasion::kExchange));
    const auto next_random = [&] { return (random = random * 1664525u + 1013904223u) >> 16; };
    switch (fault.effect) {
        case Effect::kSilence:
            m_Link.silent = fault.amount;
            break;
        case Effect::kGarbage:
            reply.resize(64);
            for (unsigned char& byte : reply) byte = static_cast<unsigned char>(next_random());
            break;
        case Effect::kGarble:
            if (!reply.empty())
                reply[next_random() % reply.size()] ^= static_cast<unsigned char>(1u << next_random() % 8);
            break;
        case Effect::kTruncate:
            reply.resize(reply.size() * static_cast<std::size_t>(fault.amount) / 100);
            break;
        case Effect::kOversize:
            reply.assign(3 + 4096, 0x5A);
            reply[0] = 9;
            reply[1] = 0x10;
            reply[2] = 0;
            break;
        case Effect::kDelay:
            m_Late = true;
            m_Ready = platform::MillisecondClock() + static_cast<std::uint32_t>(fault.amount);
            break;
        case Effect::kOneByte:
            m_OneByte = true;
            break;
        case Effect::kFalseCount:
            m_FalseCount = fault.amount;
            break;
        default:
            break;
    }
}

int FaultyTransport::RecvData(int len, unsigned char* buffer, int timeout_ms) {
    const Crossing crossing(Side::kAround);
    platform::ScopedLock lock(m_Lock);
    if (m_FalseCount != 0) {
        if (m_FalseCount < 0) platform::SleepMilliseconds(static_cast<std::uint32_t>(timeout_ms));
        return m_FalseCount;
    }
    const auto remaining = static_cast<std::int32_t>(m_Ready - platform::MillisecondClock());
    const bool late = m_Late && remaining > 0;
    if (late) platform::SleepMilliseconds(static_cast<std::uint32_t>(std::min<int>(remaining, timeout_ms)));
    if ((late && remaining > timeout_ms) || m_Stream.empty() || len <= 0) {
        if (!late) platform::SleepMilliseconds(static_cast<std::uint32_t>(timeout_ms));
        return 0;
    }
    const std::size_t count = std::min(m_OneByte ? 1 : static_cast<std::size_t>(len), m_Stream.size());
    const auto end = m_Stream.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(m_Stream.begin(), end, buffer);
    m_Stream.erase(m_Stream.begin(), end);
    return static_cast<int>(count);
}

bool FaultyTransport::SetImageHandler(ZelImageHandler handler, ZelCamera* camera) {
    if (handler) s_ImageHandler = handler;
    return Do<bool, ZelImageHandler, ZelCamera*>("", &ICameraInterface::SetImageHandler, handler ? OnImage : nullptr,
                                                 camera);
}

bool FaultyTransport::SetEventHandler(ZelEventHandler handler, ZelCamera* camera) {
    if (handler) s_EventHandler = handler;
    return Do<bool, ZelEventHandler, ZelCamera*>("", &ICameraInterface::SetEventHandler, handler ? OnEvent : nullptr,
                                                 camera);
}

void ZEL_CALL FaultyTransport::OnImage(ZelImage* image, ZelCamera* camera) noexcept {
    const Crossing crossing(Side::kSdk);
    s_ImageHandler.load()(image, camera);
}

void ZEL_CALL FaultyTransport::OnEvent(const ZelCameraEvent* event, ZelCamera* camera) noexcept {
    const Crossing crossing(Side::kSdk);
    s_EventHandler.load()(event, camera);
}

}  // namespace zel::campaign
