// A rehearsal of failures, written down beforehand (ZEL_SIM_FAULTS): commands of the control interface, separated by
// semicolons, each with the time that it is done at.
//
//    [@SECONDS[+PERIOD]] COMMAND CAMERA [ARGUMENTS]
//
// SECONDS: since the cameras were made; without it the command is done at once. PERIOD: the command is repeated after
// each so many seconds. CAMERA: what CamerasCalled takes, so that a script can be for several libraries; each does its
// part. A line that is wrong is told.
#ifndef SIM_FAULTSCRIPT_H
#define SIM_FAULTSCRIPT_H

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/Mutex.h"

namespace zel::sim {

class SimPlugin;

class FaultScript {
  public:
    // Does what has no time. For the rest there is a thread until the object ends.
    FaultScript(SimPlugin& plugin, const std::string& script, int interface_type);
    ~FaultScript();
    FaultScript(const FaultScript&) = delete;
    FaultScript& operator=(const FaultScript&) = delete;

  private:
    using Clock = std::chrono::steady_clock;
    struct Line {
        std::vector<std::string> commands;  // with the camera's number within this library
        bool timed = false;
        Clock::duration due{};
        Clock::duration period{};  // 0: once
    };

    std::vector<Line> Parse(const std::string& script, int interface_type) const;
    void Do(const Line& line);
    void Run();

    SimPlugin& m_Plugin;
    const Clock::time_point m_Start = Clock::now();
    std::vector<Line> m_Lines;  // of the thread
    platform::Mutex m_Lock;
    platform::Condition m_Changed;
    bool m_Ended ZEL_GUARDED_BY(m_Lock) = false;
    std::thread m_Thread;
};

}  // namespace zel::sim

#endif
