// The bytes that the camera has sent and the host has not asked for yet. Any thread may call it.
#ifndef DEVICES_KIT_REPLYSTREAM_H
#define DEVICES_KIT_REPLYSTREAM_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "platform/Mutex.h"

namespace zel::kit {

class ReplyStream {
  public:
    using Clock = std::chrono::steady_clock;

    // ready: when the bytes arrive. byte_by_byte: each Take gets one of them.
    void Push(std::vector<std::uint8_t> bytes, Clock::time_point ready, bool byte_by_byte);
    void Clear();
    // A link that is down says so early, so that nobody waits long for a camera that is gone; its bytes are gone, too.
    void SetDown(bool down);

    // Moves bytes into `into`, waiting until there are some; result: how many, 0: none in time.
    std::size_t Take(std::span<std::uint8_t> into, std::chrono::milliseconds timeout);

  private:
    struct Reply {
        std::vector<std::uint8_t> bytes;
        std::size_t taken;
        Clock::time_point ready;
        bool byte_by_byte;
    };
    std::size_t TakeNow(std::span<std::uint8_t> into, Clock::time_point now) ZEL_REQUIRES(m_Lock);

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    std::deque<Reply> m_Replies ZEL_GUARDED_BY(m_Lock);
    bool m_Down ZEL_GUARDED_BY(m_Lock) = false;
};

}  // namespace zel::kit

#endif
