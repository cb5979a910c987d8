// A camera as its library knows it: what it sent, and faults for it. Cameras that are not simulated tell nothing.
#ifndef BENCH_SOAK_SIMULATEDCAMERA_H
#define BENCH_SOAK_SIMULATEDCAMERA_H

#include <cstdint>
#include <cstdio>
#include <string>

#include "devices/sim/link/SimControl.h"
#include "platform/DynamicLibrary.h"

namespace zel::soak {

struct SentFrames {
    unsigned long long delivered = 0, lost = 0, no_buffer = 0;

    unsigned long long All() const { return delivered + lost + no_buffer; }
    SentFrames Since(const SentFrames& before) const {
        return {delivered - before.delivered, lost - before.lost, no_buffer - before.no_buffer};
    }
};

class SimulatedCamera {
  public:
    // The library stays loaded, so that its counts and its function do.
    SimulatedCamera(const char* library, int number)
        : m_Control(
              platform::FindFunction<ZelSimControlFunction>(platform::LoadSharedLibrary(library), "zel_sim_control")),
          m_Number(std::to_string(number)) {}

    bool Tells() const { return m_Control != nullptr; }
    // "unplug", or "fault" with its arguments.
    bool Do(const std::string& verb, const std::string& arguments = {}, std::string* answer = nullptr) const {
        char reply[200] = {};
        if (!m_Control || m_Control((verb + " " + m_Number + " " + arguments).c_str(), reply, sizeof reply) < 0)
            return false;
        if (answer) *answer = reply;
        return true;
    }
    SentFrames Sent() const {
        SentFrames sent;
        std::string answer;
        if (Do("frames", "", &answer)) {
            std::sscanf(answer.c_str(), "delivered %llu lost %llu no-buffer %llu", &sent.delivered, &sent.lost,
                        &sent.no_buffer);
        }
        return sent;
    }

  private:
    ZelSimControlFunction m_Control;
    std::string m_Number;
};

}  // namespace zel::soak

#endif
