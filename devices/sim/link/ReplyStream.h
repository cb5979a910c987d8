// The bytes that the camera has sent and the host has not asked for yet.
#ifndef SIM_REPLYSTREAM_H
#define SIM_REPLYSTREAM_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace zel::sim {

class ReplyStream {
  public:
    using Clock = std::chrono::steady_clock;

    // ready: when the bytes arrive. byte_by_byte: each Take gets one of them.
    void Push(std::vector<std::uint8_t> bytes, Clock::time_point ready, bool byte_by_byte);
    void Clear() { m_Replies.clear(); }

    bool Empty() const { return m_Replies.empty(); }
    // When the next byte is there; only while not empty.
    Clock::time_point NextReady() const { return m_Replies.front().ready; }
    // Moves bytes that are there at `now` into `into`; result: how many.
    std::size_t Take(std::span<std::uint8_t> into, Clock::time_point now);

  private:
    struct Reply {
        std::vector<std::uint8_t> bytes;
        std::size_t taken;
        Clock::time_point ready;
        bool byte_by_byte;
    };
    std::deque<Reply> m_Replies;
};

}  // namespace zel::sim

#endif
