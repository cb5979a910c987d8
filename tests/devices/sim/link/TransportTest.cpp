#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "devices/sim/link/SimBus.h"
#include "include/ZelParameters.h"
#include "tools/plugin_check/HostCamera.h"

namespace zel::sim {
namespace {

using plugin_check::HostCamera;
using Clock = std::chrono::steady_clock;

// A bound for what must come; a busy machine takes a part of it.
constexpr int kPatienceMs = 60000;

Settings FastSettings() {
    Settings settings;
    settings.width = 32;
    settings.height = 16;
    settings.speed = 0.0;
    settings.fill = SensorFill::kStatic;
    settings.calc_delay_ms = 0;
    return settings;
}

class Transport : public testing::Test {
  protected:
    void Make(int interface_type, const Settings& settings = FastSettings()) {
        transport.reset();
        camera = std::make_unique<SimCamera>(ModelOfLink(interface_type, 1), settings);
        transport = std::make_unique<SimCameraTransport>(*camera);
        host = std::make_unique<HostCamera>(*transport);
        transport->SetCameraCommon(host.get());
        host->RegisterHandlers();
        ASSERT_EQ(transport->Connect(), 0);
    }
    void Script(const char* line) {
        std::string error;
        const std::optional<Fault> fault = ParseFault(line, error);
        ASSERT_TRUE(fault) << error;
        camera->AddFault(*fault);
    }
    bool Run() { return transport->Start() == 0 && host->Set(CAMERA_STATE, 2) == 0; }
    static int Milliseconds(Clock::time_point since) {
        return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - since).count());
    }

    std::unique_ptr<SimCamera> camera;
    std::unique_ptr<SimCameraTransport> transport;
    std::unique_ptr<HostCamera> host;
};

TEST_F(Transport, StopDoesNotWaitForALongExposure) {
    Settings settings = FastSettings();
    settings.speed = 1.0;
    Make(CAMERA_TYPE_USB, settings);
    ASSERT_EQ(host->Set(EXPOSURE_TIME, 60000000), 0);
    ASSERT_TRUE(Run());
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto start = Clock::now();
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_LT(Milliseconds(start), 30000);
}

TEST_F(Transport, TriggersInsideTheImageHandlerLoseNothing) {
    Make(CAMERA_TYPE_PLEORA_EBUS);
    ASSERT_EQ(transport->StartTrigger(), 0);
    std::string reply;
    host->Text("cam.sw trig on", reply);
    host->Text("cam.arm", reply);
    std::atomic<int> triggered{1};
    host->m_OnImage = [&] {
        if (triggered < 500 && host->Set(SW_TRIG, 1) == 0) ++triggered;
    };
    ASSERT_EQ(host->Set(SW_TRIG, 1), 0);
    EXPECT_TRUE(host->WaitForFrames(500, kPatienceMs));
    EXPECT_TRUE(transport->StopTrigger());
    EXPECT_EQ(host->Snapshot().image_numbers.size(), 500u);
    EXPECT_EQ(transport->GetDroppedFrames(), 0);
}

// In every state: each operation ends, an absent camera answers a link failure, and after plugging in it runs.
TEST_F(Transport, AnUnplugInAnyStateIsSurvived) {
    for (const char* script : {"unplug-connect", "unplug-start", "unplug-frame after=2", "unplug-stop", "unplug-close",
                               "unplug entry=CAMERA_STATE"}) {
        SCOPED_TRACE(script);
        Make(CAMERA_TYPE_EDT_CAMERA_LINK);
        const auto start = Clock::now();
        transport->Disconnect();
        Script(script);
        const bool connected = transport->Connect() == 0;
        if (connected && Run()) {
            host->WaitForFrames(1, 50);
            // The fault comes with a frame of its own time.
            while (std::string(script).starts_with("unplug-frame") && camera->Plugged() &&
                   Milliseconds(start) < kPatienceMs) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
            transport->Stop();
        }
        EXPECT_EQ(transport->Disconnect(), 0);
        EXPECT_FALSE(camera->Plugged());
        EXPECT_EQ(transport->Connect(), ZEL_ERROR_CAMERA_COMM_FAILURE);
        EXPECT_EQ(transport->Start(), ZEL_ERROR_CAMERA_COMM_FAILURE);
        std::uint8_t byte = 0;
        EXPECT_EQ(transport->SendData(1, &byte), 0);
        EXPECT_EQ(transport->RecvData(1, &byte, 500), 0);
        ASSERT_TRUE(camera->SetPlugged(true));
        {
            const std::lock_guard lock(host->Lock());
            host->SeenLocked() = {};
        }
        EXPECT_EQ(transport->Connect(), 0);
        ASSERT_TRUE(Run());
        EXPECT_TRUE(host->WaitForFrames(2, kPatienceMs));
        EXPECT_EQ(transport->Stop(), 0);
    }
}

TEST_F(Transport, ManyStartsAndStopsFromTwoThreadsEndWell) {
    Make(CAMERA_TYPE_USB);
    std::thread other([this] {
        for (int i = 0; i < 100; ++i) transport->Stop();
    });
    for (int i = 0; i < 100; ++i) transport->Start();
    other.join();
    EXPECT_EQ(transport->Stop(), 0);
    ASSERT_TRUE(Run());
    EXPECT_TRUE(host->WaitForFrames(1, kPatienceMs));
    EXPECT_EQ(transport->Stop(), 0);
}

}  // namespace
}  // namespace zel::sim
