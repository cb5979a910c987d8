// An opened SDK over the simulated cameras: unpaced, 64 x 48 samples, contents left alone.
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

// Calls of a callback with one number, which a test waits for.
struct CallCounter {
    std::atomic<int> calls{0};

    static void ZEL_CALL Count(int, void* counter) { ++static_cast<CallCounter*>(counter)->calls; }
    bool WaitFor(int count) const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (calls < count && std::chrono::steady_clock::now() < end) std::this_thread::yield();
        return calls >= count;
    }
};

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

class SystemTest : public testing::Test {
  protected:
    static constexpr int kCameraLink = 0, kMono = 3, kCameras = 4;

    SystemTest() { EXPECT_TRUE(m_Sdk->Open() && m_Sdk->GetNumberOfCameras() == kCameras); }
    ~SystemTest() override { zel_destroy_sdk(m_Sdk); }

    // An opened camera that counts its frames.
    ZelCamera* Opened(int number) {
        ZelCamera* camera = m_Sdk->GetCamera(number);
        EXPECT_TRUE(camera && camera->Open());
        EXPECT_TRUE(camera && camera->SetImageNotificationCallback(CallCounter::Count, &m_Frames));
        return camera;
    }

    SimulatedLibrary m_Usb{"zel_usb.dll"};
    CallCounter m_Frames;  // which may flow until the SDK is destroyed
    ZelSDK* const m_Sdk = zel_create_sdk();
};

}  // namespace zel::test

#endif
