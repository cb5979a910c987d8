#include "devices/kit/Camera.h"

#include <exception>
#include <utility>

namespace zel::kit {

Camera::Camera(std::unique_ptr<BackEnd> back_end)
    : m_BackEnd(std::move(back_end)), m_Conversation(*m_BackEnd, m_Control) {}

void Camera::WakeUp() {
    if (!m_PowerLost.exchange(false)) return;
    try {
        m_Conversation.PowerOn();
    } catch (...) {
        m_PowerLost = true;
        throw;
    }
    const ParameterTable& table = m_Conversation.Table();
    m_FrameBytes =
        std::uint64_t{2} * static_cast<unsigned>(table.Number(H_SIZE)) * static_cast<unsigned>(table.Number(V_SIZE));
}

Camera::Answer Camera::Exchange(std::span<const std::uint8_t> datagram) {
    Answer answer;
    m_Conversation.Handle(datagram, answer.bytes);
    answer.taken = static_cast<int>(datagram.size());
    answer.ready = ReplyStream::Clock::now();
    return answer;
}

int Camera::Send(std::span<const std::uint8_t> datagram) {
    bool vanished = false;
    int taken = 0;
    {
        const platform::ScopedLock lock(m_TalkLock);
        if (!Plugged()) return 0;
        Answer answer;
        try {
            WakeUp();
            answer = Exchange(datagram);
        } catch (const std::exception&) {
            answer = {};
            Conversation::Refuse(datagram, kExceptionChange, answer.bytes);
            answer.taken = static_cast<int>(datagram.size());
        }
        if (answer.unplug) {
            vanished = Unplug();
        } else {
            m_Replies.Push(std::move(answer.bytes), answer.ready, answer.byte_by_byte);
        }
        taken = answer.taken;
    }
    if (vanished && m_Vanished) m_Vanished();
    return taken;
}

int Camera::Receive(std::span<std::uint8_t> into, int timeout_ms) {
    return static_cast<int>(m_Replies.Take(into, std::chrono::milliseconds(timeout_ms)));
}

int Camera::Connect() {
    m_Replies.Clear();
    const platform::ScopedLock lock(m_TalkLock);
    WakeUp();
    return m_BackEnd->Connect();
}

void Camera::Disconnect() {
    const platform::ScopedLock lock(m_TalkLock);
    m_BackEnd->Disconnect();
}

void Camera::SetFrameCount(int frames) {
    const platform::ScopedLock lock(m_TalkLock);
    WakeUp();
    m_Conversation.SetSequence(frames);
}

void Camera::SetRunLength(int frames) {
    const platform::ScopedLock lock(m_TalkLock);
    m_Conversation.SetRunLength(frames);
}

bool Camera::Unplug() {
    if (!m_Control.SetPlugged(false)) return false;
    m_PowerLost = true;
    m_Replies.SetDown(true);
    m_BackEnd->Stop();
    return true;
}

bool Camera::SetPlugged(bool plugged) {
    if (!plugged) return Unplug();
    if (Plugged()) return false;
    m_Replies.SetDown(false);
    return m_Control.SetPlugged(true);
}

void Camera::Vanish() {
    if (Unplug() && m_Vanished) m_Vanished();
}

}  // namespace zel::kit
