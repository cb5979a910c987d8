// The frames of one acquisition on their way out of the network.
#ifndef GIGE_FRAMESTREAM_H
#define GIGE_FRAMESTREAM_H

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "devices/gige/GenicamFeatures.h"
#include "devices/gige/LinkCounters.h"
#include "platform/Mutex.h"

namespace zel::gige {

// Aravis' own thread puts packets together; one thread waits here for the frames. Wake() may be called on any thread.
class FrameStream {
  public:
    using Clock = std::chrono::steady_clock;
    struct Arrival {
        ArvBuffer* buffer = nullptr;
        Clock::time_point ready;  // when its last packet came, or it was given up
    };

    // Opens a port for frames of so many bytes. Throws Failure.
    FrameStream(GenicamFeatures& features, std::size_t frame_bytes);
    ~FrameStream() = default;
    FrameStream(const FrameStream&) = delete;
    FrameStream& operator=(const FrameStream&) = delete;

    // None when the time has come, or Wake() was called since the last wait.
    std::optional<Arrival> WaitUntil(Clock::time_point time);
    void Wake();
    // The buffer takes another frame.
    void GiveBack(ArvBuffer* buffer);
    // Waits, not for long, until no packets come any more: a camera that was stopped has the rest of a frame under way,
    // which the next run would take for a broken one of its own.
    void Drain() const;
    // Brings the counts of packets up to date.
    void Count(LinkCounters& counters) const;

    std::size_t Buffers() const { return m_Times.size(); }
    int SocketBytesAsked() const { return m_SocketBytes; }
    // How many the system gives at most; 0: it does not say.
    static int SocketBytesAllowed();

  private:
    static void OnStream(void* stream, ArvStreamCallbackType type, ArvBuffer* buffer);

    int m_SocketBytes = 0;

    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    bool m_Woken ZEL_GUARDED_BY(m_Lock) = false;
    // When the frames that wait to be fetched came, in their order; a ring with a place for every buffer.
    std::vector<Clock::time_point> m_Times;
    std::size_t m_First ZEL_GUARDED_BY(m_Lock) = 0;
    std::size_t m_Waiting ZEL_GUARDED_BY(m_Lock) = 0;

    ObjectPtr<ArvStream> m_Stream;  // the last member: its thread, which uses the others, ends first
};

}  // namespace zel::gige

#endif
