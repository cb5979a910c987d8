// An opened SDK over the simulated cameras: unpaced, 64 x 48 samples, contents left alone (set by ctest's environment).
#ifndef TESTS_SYSTEM_SYSTEMFIXTURE_H
#define TESTS_SYSTEM_SYSTEMFIXTURE_H

#include <gmock/gmock.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>

#include "devices/sim/link/SimControl.h"
#include "include/ZelCamera.h"
#include "include/ZelSDK.h"
#include "platform/DynamicLibrary.h"

namespace zel::test {

// Counts calls and lets a test wait for them.
class CallCounter {
  public:
    void Count() {
        {
            const std::lock_guard lock(m_Lock);
            ++m_Calls;
        }
        m_Changed.notify_all();
    }
    bool WaitFor(int calls) {
        std::unique_lock lock(m_Lock);
        return m_Changed.wait_for(lock, std::chrono::seconds(60), [&] { return m_Calls >= calls; });
    }
    int Calls() {
        const std::lock_guard lock(m_Lock);
        return m_Calls;
    }

  private:
    std::mutex m_Lock;
    std::condition_variable m_Changed;
    int m_Calls = 0;
};

// One plug-in's control interface.
class SimulatedLibrary {
  public:
    explicit SimulatedLibrary(const char* name) : m_Library(platform::LoadSharedLibrary(name)) {
        m_Control = platform::FindFunction<ZelSimControlFunction>(m_Library, "zel_sim_control");
    }
    ~SimulatedLibrary() { platform::UnloadSharedLibrary(m_Library); }
    std::string operator()(const std::string& command) const {
        char reply[4096] = {};
        if (!m_Control) return "no control interface";
        EXPECT_GE(m_Control(command.c_str(), reply, sizeof reply), 0) << command << ": " << reply;
        return reply;
    }

    // Plugs a camera in, which may be so already.
    void Plug(int camera) const {
        if (m_Control) m_Control(("plug " + std::to_string(camera)).c_str(), nullptr, 0);
    }

  private:
    platform::LibraryHandle m_Library;
    ZelSimControlFunction m_Control = nullptr;
};

class SystemTest : public testing::Test {
  protected:
    static constexpr int kCameraLink = 0, kEBus = 1, kColor = 2, kMono = 3;

    SystemTest() {
        m_Sdk = zel_create_sdk();
        EXPECT_TRUE(m_Sdk->Open());
        EXPECT_EQ(m_Sdk->GetNumberOfCameras(), 4);
    }
    ~SystemTest() override { zel_destroy_sdk(m_Sdk); }

    ZelCamera* Opened(int number) {
        ZelCamera* camera = m_Sdk->GetCamera(number);
        EXPECT_TRUE(camera && camera->Open());
        return camera;
    }

    static void ZEL_CALL Count(int, void* context) { static_cast<CallCounter*>(context)->Count(); }

    SimulatedLibrary m_Usb{"zel_usb.dll"};
    // Frames may flow until the SDK is destroyed, so what callbacks use outlives it.
    CallCounter m_Frames;
    CallCounter m_Events;
    ZelSDK* m_Sdk = nullptr;
};

}  // namespace zel::test

#endif
