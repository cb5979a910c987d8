// What became of the frames and packets of a run.
#ifndef GIGE_LINKCOUNTERS_H
#define GIGE_LINKCOUNTERS_H

#include <cstdint>
#include <string>

namespace zel::gige {

struct LinkCounters {
    // Frames, by what became of them
    std::uint64_t whole = 0;
    std::uint64_t incomplete = 0;   // packets were missing
    std::uint64_t late = 0;         // packets, or the frame of a trigger, did not come in time
    std::uint64_t other_shape = 0;  // a size or format that was not asked for
    std::uint64_t broken_off = 0;   // by the camera, or packets that make no sense
    std::uint64_t unseen = 0;       // only the gap in the numbers shows them: every packet, or the buffer, was missing

    std::uint64_t before_first = 0;  // broken before the first whole one: the run began later, nothing is lost

    // Packets, as the stream counts them
    std::uint64_t packets = 0;
    std::uint64_t missing_packets = 0;
    std::uint64_t resend_requests = 0;
    std::uint64_t resent_packets = 0;
    std::uint64_t bad_packets = 0;
    std::uint64_t without_buffer = 0;  // frames that began when no buffer was free

    std::uint64_t camera_time_ns = 0;  // of the last whole frame
    std::string last_shape;            // of a frame of another shape

    std::uint64_t Lost() const { return incomplete + late + other_shape + broken_off + unseen; }
};

// Frames and packets, with what stands between the two.
std::string CountersText(const LinkCounters& counters, const std::string& between);

}  // namespace zel::gige

#endif
