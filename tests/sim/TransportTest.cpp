#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "include/ZelParameters.h"
#include "sim/RawReadout.h"
#include "sim/SimBus.h"
#include "tools/plugin_check/HostCamera.h"

namespace zel::sim {
namespace {

using plugin_check::HostCamera;
using Clock = std::chrono::steady_clock;

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

// The frame in the record is the sensor's picture in the order and packing of the link.
TEST_F(Transport, SendsTheSensorsPictureInTheOrderOfItsTaps) {
    for (const int type : {CAMERA_TYPE_EDT_CAMERA_LINK, CAMERA_TYPE_PLEORA_EBUS, CAMERA_TYPE_USB}) {
        SCOPED_TRACE(type);
        Settings settings = FastSettings();
        settings.fill = SensorFill::kNoise;
        Make(type, settings);
        transport->SetFrameCount(1);
        ASSERT_TRUE(Run());
        ASSERT_TRUE(host->WaitForFrames(1, 5000));
        EXPECT_EQ(transport->Stop(), 0);
        const CameraModel& model = camera->Model();
        std::vector<std::uint16_t> picture(32 * 16);
        std::vector<std::uint16_t> raw(32 * 16);
        camera->TheSensor().Render(camera->FirmwareLocked().Settings(), settings.fill, 0, picture);
        ReadOutTaps(picture, 32, 16, camera->FirmwareLocked().Taps(), raw);
        std::vector<std::uint8_t> sent(model.packed ? 32 * 16 * 3 / 2 : 32 * 16 * 2);
        if (model.packed) {
            Pack12(raw, sent);
        } else {
            std::memcpy(sent.data(), raw.data(), sent.size());
        }
        const std::vector<std::uint16_t> frame = host->Snapshot().last_frame;
        ASSERT_EQ(frame.size(), raw.size());
        EXPECT_EQ(std::memcmp(frame.data(), sent.data(), sent.size()), 0);
    }
}

TEST_F(Transport, ASequenceHasItsLengthAndTheRunIsCountedFromItsStart) {
    Make(CAMERA_TYPE_USB);
    transport->SetFrameCount(7);
    EXPECT_EQ(transport->GetStatusValue(), 7);
    for (int run = 0; run < 3; ++run) {
        {
            const std::lock_guard lock(host->Lock());
            host->SeenLocked() = {};
        }
        ASSERT_TRUE(Run());
        EXPECT_TRUE(host->WaitForFrames(7, 5000));
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_EQ(host->Snapshot().image_numbers, (std::vector<unsigned>{0, 1, 2, 3, 4, 5, 6}));
        EXPECT_EQ(transport->GetStatusValue(), 0);
        EXPECT_EQ(transport->Stop(), 0);
    }
    EXPECT_FALSE(transport->SetStatusValue(-1));
}

TEST_F(Transport, PacedFramesKeepTheirPeriodWithoutDrift) {
    Settings settings = FastSettings();
    settings.speed = 1.0;
    settings.calc_delay_ms = 0;
    Make(CAMERA_TYPE_USB, settings);
    ASSERT_EQ(host->Set(EXPOSURE_TIME, 5000), 0);
    transport->SetFrameCount(41);
    ASSERT_TRUE(Run());
    ASSERT_TRUE(host->WaitForFrames(1, 5000));
    const auto first = Clock::now();
    ASSERT_TRUE(host->WaitForFrames(41, 5000));
    const int took = Milliseconds(first);
    EXPECT_GE(took, 140) << "a late first frame is made up for";
    EXPECT_LE(took, 400) << "40 periods of 5 ms";
    EXPECT_GT(transport->GetLinkFrameRate(), 0.0);
    EXPECT_GT(transport->GetLinkThroughput(), 0.0);
    EXPECT_EQ(transport->Stop(), 0);
}

TEST_F(Transport, StopDoesNotWaitForALongExposure) {
    Settings settings = FastSettings();
    settings.speed = 1.0;
    Make(CAMERA_TYPE_USB, settings);
    ASSERT_EQ(host->Set(EXPOSURE_TIME, 60000000), 0);
    ASSERT_TRUE(Run());
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    int state = 0;
    EXPECT_TRUE(host->Get(EXPOSURE_STATE, state) && state == 1);
    const auto start = Clock::now();
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_LT(Milliseconds(start), 1000);
}

TEST_F(Transport, ReplyFaultsAreSeenAsTheirNamesSay) {
    Make(CAMERA_TYPE_USB);
    const std::uint8_t request[] = {0, 0, 7, SYNC_TABLE_CMD_GET, 0, 4, H_SIZE, 0, 0, 0};
    const struct {
        const char* script;
        int sent;
        int received;  // bytes of one large receive call
    } kCases[] = {{"short-send", 9, 0}, {"no-reply", 10, 0},    {"one-byte", 10, 1},        {"truncate 5", 10, 5},
                  {"garbage", 10, 64},  {"oversize", 10, 4099}, {"exception 0x16", 10, 12}, {"delay 1", 10, 13}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.script);
        Script(c.script);
        EXPECT_EQ(transport->SendData(10, request), c.sent);
        std::vector<std::uint8_t> bytes(5000);
        EXPECT_EQ(transport->RecvData(5000, bytes.data(), 40), c.received);
        camera->OpenLink();
        int width = 0;
        EXPECT_TRUE(host->Get(H_SIZE, width)) << "the fault happens once";
    }
    EXPECT_EQ(transport->RecvData(0, nullptr, 0), 0);
    EXPECT_EQ(transport->SendData(0, nullptr), 0);
}

TEST_F(Transport, AFaultCanWaitForItsEntryAndItsTurn) {
    Make(CAMERA_TYPE_USB);
    Script("exception 0x11 entry=CAMERA_STATE after=1 times=2");
    int width = 0;
    EXPECT_EQ(host->Set(CAMERA_STATE, 0), 0);
    EXPECT_TRUE(host->Get(H_SIZE, width));
    EXPECT_EQ(host->Set(CAMERA_STATE, 0), 0x11);
    EXPECT_EQ(transport->Stop(), 0) << "refused once more, then done";
    EXPECT_EQ(host->Set(CAMERA_STATE, 0), 0);
}

TEST_F(Transport, LostFramesLeaveAGapAndAreCounted) {
    Make(CAMERA_TYPE_USB);
    Script("lose after=2 times=3");
    transport->SetFrameCount(8);
    ASSERT_TRUE(Run());
    ASSERT_TRUE(host->WaitForFrames(5, 5000));
    EXPECT_EQ(host->Snapshot().image_numbers, (std::vector<unsigned>{0, 1, 5, 6, 7}));
    EXPECT_EQ(transport->GetDroppedFrames(), 3);
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_EQ(camera->Frames().lost_on_link, 3u);
}

TEST_F(Transport, AStallEndsWithStopOrWithClear) {
    Make(CAMERA_TYPE_USB);
    Script("stall 0 after=1");
    transport->SetFrameCount(2);
    ASSERT_TRUE(Run());
    ASSERT_TRUE(host->WaitForFrames(1, 5000));
    EXPECT_FALSE(host->WaitForFrames(2, 50));
    camera->ClearFaults();
    EXPECT_TRUE(host->WaitForFrames(2, 5000));
    Script("stall 0");
    ASSERT_TRUE(Run());
    const auto start = Clock::now();
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_LT(Milliseconds(start), 1000);
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
    EXPECT_TRUE(host->WaitForFrames(500, 10000));
    EXPECT_TRUE(transport->StopTrigger());
    EXPECT_EQ(host->Snapshot().image_numbers.size(), 500u);
    EXPECT_EQ(transport->GetDroppedFrames(), 0);
}

// In every state: each operation ends soon, an absent camera answers a link failure, and after plugging in it runs.
TEST_F(Transport, AnUnplugInAnyStateIsSurvived) {
    for (const char* script : {"unplug-connect", "unplug-start", "unplug-frame after=2", "unplug-stop", "unplug-close",
                               "unplug entry=CALC_STATE", "unplug entry=CAMERA_STATE", "unplug entry=H_SIZE"}) {
        SCOPED_TRACE(script);
        Make(CAMERA_TYPE_EDT_CAMERA_LINK);
        const auto start = Clock::now();
        transport->Disconnect();
        Script(script);
        const bool connected = transport->Connect() == 0;
        if (connected && Run()) {
            host->WaitForFrames(1, 50);
            // The fault comes with a frame of its own time.
            while (std::string(script).starts_with("unplug-frame") && camera->Plugged() && Milliseconds(start) < 2000) {
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
        EXPECT_LT(Milliseconds(start), 3000);
        ASSERT_TRUE(camera->SetPlugged(true));
        {
            const std::lock_guard lock(host->Lock());
            host->SeenLocked() = {};
        }
        EXPECT_EQ(transport->Connect(), 0);
        ASSERT_TRUE(Run());
        EXPECT_TRUE(host->WaitForFrames(2, 5000));
        EXPECT_EQ(transport->Stop(), 0);
        EXPECT_EQ(transport->Disconnect(), 0);
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
    EXPECT_TRUE(host->WaitForFrames(1, 5000));
    EXPECT_EQ(transport->Stop(), 0);
}

}  // namespace
}  // namespace zel::sim
