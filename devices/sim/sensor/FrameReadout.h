// Reads a source of frames out into what its camera sends: rows are asked for in the order in which the taps need them,
// so that nothing but a few of them is ever kept.
#ifndef SIM_FRAMEREADOUT_H
#define SIM_FRAMEREADOUT_H

#include <cstdint>
#include <span>
#include <vector>

#include "devices/sim/sensor/FrameSource.h"

namespace zel::sim {

class FrameReadout {
  public:
    // taps: 1, 2 or 4. packed: two samples in three bytes. What does not fit into `into`, memory for 16-bit samples, is
    // cut off. Throws std::bad_alloc.
    void ReadOut(FrameSource& source, const SensorSettings& settings, SensorFill fill, std::uint64_t frame, int taps,
                 bool packed, std::span<std::uint8_t> into);

  private:
    std::vector<std::uint16_t> m_Rows;  // two
    std::vector<std::uint16_t> m_Raw;   // the same samples as the taps deliver them
};

}  // namespace zel::sim

#endif
