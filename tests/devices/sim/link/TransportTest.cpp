#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "devices/sim/link/SimBus.h"
#include "include/ZelParameters.h"
#include "tools/plugin_check/HostCamera.h"

namespace zel::sim {
namespace {

using plugin_check::HostCamera;

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
    void SetUp() override {
        camera = std::make_unique<SimCamera>(ModelOfLink(CAMERA_TYPE_PLEORA_EBUS, 0), FastSettings());
        transport = std::make_unique<SimCameraTransport>(*camera);
        host = std::make_unique<HostCamera>(*transport);
        transport->SetCameraCommon(host.get());
        host->RegisterHandlers();
        ASSERT_EQ(transport->Connect(), 0);
    }
    bool Run() { return transport->Start() == 0 && host->Set(CAMERA_STATE, 2) == 0; }

    std::unique_ptr<SimCamera> camera;
    std::unique_ptr<SimCameraTransport> transport;
    std::unique_ptr<HostCamera> host;
};

TEST_F(Transport, TriggersInsideTheImageHandlerLoseNothing) {
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

TEST_F(Transport, AnAbsentCameraAnswersALinkFailureEverywhere) {
    ASSERT_TRUE(camera->SetPlugged(false));
    EXPECT_EQ(transport->Start(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    EXPECT_EQ(transport->Stop(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    std::uint8_t byte = 0;
    EXPECT_EQ(transport->SendData(1, &byte), 0);
    EXPECT_EQ(transport->RecvData(1, &byte, 500), 0);
    EXPECT_EQ(transport->Disconnect(), 0);
    EXPECT_EQ(transport->Connect(), ZEL_ERROR_CAMERA_COMM_FAILURE);
    ASSERT_TRUE(camera->SetPlugged(true));
    EXPECT_EQ(transport->Connect(), 0);
    ASSERT_TRUE(Run());
    EXPECT_TRUE(host->WaitForFrames(2, kPatienceMs));
    EXPECT_EQ(transport->Stop(), 0);
}

TEST_F(Transport, ManyStartsAndStopsFromTwoThreadsEndWell) {
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
