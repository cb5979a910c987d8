#include "devices/sim/link/ReplyStream.h"

#include <algorithm>
#include <utility>

namespace zel::sim {

void ReplyStream::Push(std::vector<std::uint8_t> bytes, Clock::time_point ready, bool byte_by_byte) {
    if (!bytes.empty()) m_Replies.push_back({std::move(bytes), 0, ready, byte_by_byte});
}

std::size_t ReplyStream::Take(std::span<std::uint8_t> into, Clock::time_point now) {
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

}  // namespace zel::sim
