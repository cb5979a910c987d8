#include <gtest/gtest.h>

#include "link/ICameraInterface.h"
#include "tests/devices/sim/firmware/FirmwareHost.h"

namespace zel::sim {
namespace {

using zel::test::TextReply;

const CameraModel kModel = ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0);

TEST(FirmwareText, CommandsComeWithAndWithoutHeaderAndLineEnd) {
    FirmwareHost host(kModel);
    const Bytes reply = TextReply(kModel.name);
    EXPECT_EQ(host.Raw({9, 0, 4, 'n', 'a', 'm', 'e'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 6, 'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 7, 'n', 'a', 'm', 'e'}), TextReply("ERR")) << "a header that disagrees is text";
    EXPECT_EQ(host.Raw({}), TextReply("ERR"));
    for (const char* command : {"trig b on", "trig cl", "cam.fly", "armed", "INFO"}) {
        EXPECT_EQ(host.Text(command), "ERR") << command;
    }
}

TEST(FirmwareTrigger, AnArmedCameraTakesOneFramePerCommand) {
    FirmwareHost host(kModel);
    Firmware& firmware = host.Target();
    host.Text("cam.sw trig on");
    host.Text("cam.arm");
    EXPECT_FALSE(firmware.FrameDue());
    EXPECT_EQ(host.Set(SW_TRIG, 1), 0);
    ASSERT_TRUE(firmware.FrameDue());
    firmware.BeginFrame();
    firmware.FinishFrame();
    EXPECT_FALSE(firmware.FrameDue());
    host.Text("trig sw off");
    host.Set(SW_TRIG, 1);
    EXPECT_FALSE(firmware.FrameDue());
    host.Text("cam.stop");
    EXPECT_FALSE(firmware.Acquiring());
}

TEST(FirmwareTrigger, TheInputObeysItsPolarity) {
    const struct {
        const char* command;
        TriggerEdge edge;
        bool taken;
    } kCases[] = {{"trig cl hi", TriggerEdge::kRising, true},
                  {"trig cl hi", TriggerEdge::kFalling, false},
                  {"trig cl lo", TriggerEdge::kFalling, true},
                  {"trig cl low", TriggerEdge::kRising, false},
                  {"trig a hi", TriggerEdge::kActive, true}};
    for (const auto& c : kCases) {
        FirmwareHost host(kModel);
        host.Text("trig cl on");
        host.Text(c.command);
        host.Text("arm");
        EXPECT_EQ(host.Target().HardwareTrigger(c.edge), c.taken) << c.command;
        EXPECT_EQ(host.Target().FrameDue(), c.taken);
        host.Text("trig cl off");
        EXPECT_FALSE(host.Target().HardwareTrigger(TriggerEdge::kActive)) << "the input is off";
    }
}

}  // namespace
}  // namespace zel::sim
