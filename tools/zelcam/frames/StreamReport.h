// What was measured on a stream of frames.
#ifndef ZELCAM_STREAMREPORT_H
#define ZELCAM_STREAMREPORT_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/zelcam/text/Json.h"
#include "zel/Frame.h"
#include "zel/FrameCounter.h"

namespace zelcam {

class StreamReport {
  public:
    void Add(const zel::Frame& frame);
    // link_drops: what the transport counted; skipped: frames passed over for newer ones.
    void Finish(std::uint64_t link_drops, std::uint64_t skipped);

    // Rates of what was handed over, from the first frame on: how long a camera takes to start is told apart.
    double FramesPerSecond() const;
    double MegabytesPerSecond() const;
    std::string RateText() const;
    std::string Text() const;
    Json ToJson() const;

    std::string mode;
    Json color;  // how color frames are made; null for grey ones
    std::uint64_t frames = 0;
    std::uint64_t bytes = 0;
    double first_frame_s = 0.0;  // from the start to the first frame
    double seconds = 0.0;        // from the first frame to the last
    bool interrupted = false;

  private:
    std::vector<double> m_QueueMs;     // arrival to hand-over, by the record's own time stamps
    std::vector<double> m_HandOverUs;  // notification to hand-over, by the steady clock
    zel::FrameCounter m_Counter;
    zel::Drops m_Drops;
};

}  // namespace zelcam

#endif
