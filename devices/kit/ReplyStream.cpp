#include "devices/kit/ReplyStream.h"

#include <algorithm>
#include <utility>

namespace zel::kit {

namespace {

constexpr auto kReceiveOfDownLink = std::chrono::milliseconds(10);

}  // namespace

void ReplyStream::Push(std::vector<std::uint8_t> bytes, Clock::time_point ready, bool byte_by_byte) {
    if (bytes.empty()) return;
    {
        const platform::ScopedLock lock(m_Lock);
        m_Replies.push_back({std::move(bytes), 0, ready, byte_by_byte});
    }
    m_Changed.notify_all();
}

void ReplyStream::Clear() {
    const platform::ScopedLock lock(m_Lock);
    m_Replies.clear();
}

void ReplyStream::SetDown(bool down) {
    {
        const platform::ScopedLock lock(m_Lock);
        m_Down = down;
        if (down) m_Replies.clear();
    }
    m_Changed.notify_all();
}

std::size_t ReplyStream::Take(std::span<std::uint8_t> into, std::chrono::milliseconds timeout) {
    platform::ScopedLock lock(m_Lock);
    auto now = Clock::now();
    auto deadline = now + std::max(timeout, std::chrono::milliseconds(0));
    while (now <= deadline) {
        if (const std::size_t stored = TakeNow(into, now)) return stored;
        if (m_Down) deadline = std::min(deadline, now + kReceiveOfDownLink);
        if (now >= deadline) break;
        const auto until = m_Replies.empty() ? deadline : std::min(deadline, m_Replies.front().ready);
        m_Changed.wait_until(lock, until);
        now = Clock::now();
    }
    return 0;
}

std::size_t ReplyStream::TakeNow(std::span<std::uint8_t> into, Clock::time_point now) {
    std::size_t stored = 0;
    while (stored < into.size() && !m_Replies.empty() && m_Replies.front().ready <= now) {
        Reply& reply = m_Replies.front();
        std::size_t count = std::min(into.size() - stored, reply.bytes.size() - reply.taken);
        const bool one = reply.byte_by_byte;
        if (one) count = 1;
        std::copy_n(reply.bytes.begin() + static_cast<std::ptrdiff_t>(reply.taken), count,
                    into.begin() + static_cast<std::ptrdiff_t>(stored));
        reply.taken += count;
        stored += count;
        if (reply.taken == reply.bytes.size()) m_Replies.pop_front();
        if (one) break;
    }
    return stored;
}

}  // namespace zel::kit
