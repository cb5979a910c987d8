// The simulated cameras: unpaced, 64 x 48 samples, contents left alone.
#ifndef TESTS_SYSTEM_SYSTEMFIXTURE_H
#define TESTS_SYSTEM_SYSTEMFIXTURE_H

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "devices/sim/link/SimControl.h"
#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "link/CameraInterfaceLibrary.h"
#include "platform/DynamicLibrary.h"
#include "tests/support/Process.h"

namespace zel::test {

// Before a plug-in is loaded.
inline void UseFastCameras() {
    platform::SetEnvironment("ZEL_SIM_PACE", "none");
    platform::SetEnvironment("ZEL_SIM_SIZE", "64x48");
    platform::SetEnvironment("ZEL_SIM_FILL", "none");
}

// One plug-in, kept loaded, and its control interface.
class SimulatedLibrary {
  public:
    explicit SimulatedLibrary(const char* name) {
        UseFastCameras();
        m_Library = platform::LoadSharedLibrary(name);
        m_Control = platform::FindFunction<ZelSimControlFunction>(m_Library, "zel_sim_control");
        m_Count = platform::FindFunction<GetNumCamerasFunction>(m_Library, "get_num_cameras");
    }
    ~SimulatedLibrary() { platform::UnloadSharedLibrary(m_Library); }

    // Whether the command was carried out, and the answer to it.
    bool Try(const std::string& command, std::string* answer = nullptr) const {
        char reply[4096] = {};
        const bool done = m_Control && m_Control(command.c_str(), reply, sizeof reply) >= 0;
        if (answer) *answer = reply;
        return done;
    }
    void operator()(const std::string& command) const { EXPECT_TRUE(Try(command)) << command; }
    // How many are plugged in.
    int Cameras() const { return m_Count(); }
    // Ends all faults of a camera and plugs it in, which it may be already.
    void Mend(int camera) const {
        Try("fault " + std::to_string(camera) + " clear");
        Try("plug " + std::to_string(camera));
    }

  private:
    platform::LibraryHandle m_Library;
    ZelSimControlFunction m_Control;
    GetNumCamerasFunction m_Count;
};

}  // namespace zel::test

#endif
