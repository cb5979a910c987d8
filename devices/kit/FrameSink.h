/// @file
/// Where a back end gives its frames.
#ifndef DEVICES_KIT_FRAMESINK_H
#define DEVICES_KIT_FRAMESINK_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace zel::kit {

/// One frame, as the link brought it.
struct FrameFacts {
    /// Its number since the transport was started; a number left out is a hole that the host sees. None: the next one.
    std::optional<unsigned> number;
    /// Bytes that came over the link. 0: 2 for each sample of H_SIZE x V_SIZE.
    std::uint64_t link_bytes = 0;
    /// When its last byte came. The time from then to the hand-over is the latency that the transport tells.
    std::chrono::steady_clock::time_point ready = std::chrono::steady_clock::now();
    /// Whether the camera waits when the host has no memory free, instead of dropping the frame.
    bool patient = false;
};

/// What became of a frame.
enum class HandOver {
    kTaken,     ///< the host has it
    kNoBuffer,  ///< the host has no memory free for it: it is dropped, its number is a hole
    kEnded      ///< the run is over, this frame is not wanted any more
};

/// One acquisition as the back end sees it, from BackEnd::Start() until that returns. Give() is called on the thread
/// that Start() runs on, the others on any thread until then. No lock of the kit is held while the host is called, so a
/// handler of the application may stop the run inside Give().
class FrameSink {
  public:
    using Clock = std::chrono::steady_clock;  ///< what times are told by
    /// Writes the frame into the host's memory, as much of it as there is room: H_SIZE x V_SIZE samples of 16 bits,
    /// little-endian, row after row (cameras with several taps: in the order in which the taps are read, as
    /// docs/simulator.md draws it). Answers false, or throws, when there is no frame after all.
    using Fill = std::function<bool(std::span<std::uint8_t> memory)>;

    /// Hands one frame over: free record, fill, settings, pending, event 6, image handler.
    virtual HandOver Give(const FrameFacts& facts, const Fill& fill) = 0;
    /// Frames that the link lost: they are counted, and their numbers are holes.
    virtual void Lose(unsigned frames) = 0;
    /// The number that the next frame gets.
    virtual unsigned NextNumber() const = 0;
    /// Whether the run is over: stopped, halted, all frames of the sequence given, or unplugged.
    virtual bool Ended() const = 0;
    /// Lets time pass. False when the run ended before.
    virtual bool WaitUntil(Clock::time_point time) = 0;
    /// Sleeps until a software trigger, or BackEnd::Trigger(), has come that no frame was taken for. False when the run
    /// ended before.
    virtual bool WaitForTrigger() = 0;
    /// The camera is gone: the run ends, the host hears of it (event 8, and the library's disconnect event). Only the
    /// first time in a run.
    virtual void Vanish() = 0;

  protected:
    ~FrameSink() = default;
};

}  // namespace zel::kit

#endif
