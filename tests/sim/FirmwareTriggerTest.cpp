#include <gtest/gtest.h>

#include "link/ICameraInterface.h"
#include "tests/sim/Datagram.h"

namespace zel::sim {
namespace {

const CameraModel kModel = ModelOfLink(CAMERA_TYPE_EDT_CAMERA_LINK, 0);

// A reply datagram of less than 256 bytes.
Bytes TextReply(const std::string& text) {
    std::string bytes("\x09\x00", 2);
    bytes += static_cast<char>(text.size() + 3);
    bytes += text + "\r\n" + '\0';
    return Bytes(bytes.begin(), bytes.end());
}

TEST(FirmwareText, CommandsComeWithAndWithoutHeaderAndLineEnd) {
    FirmwareHost host(kModel);
    const Bytes reply = TextReply(kModel.name);
    EXPECT_EQ(host.Raw({9, 0, 4, 'n', 'a', 'm', 'e'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 6, 'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({'n', 'a', 'm', 'e', '\r', '\n'}), reply);
    EXPECT_EQ(host.Raw({9, 0, 7, 'n', 'a', 'm', 'e'}), TextReply("ERR")) << "a header that disagrees is text";
    EXPECT_EQ(host.Raw({}), TextReply("ERR"));
    const std::string info = host.Text("info\r\n");
    for (const char* part : {kModel.model_text, kModel.serial.c_str(), "FPGA: 118"}) {
        EXPECT_NE(info.find(part), std::string::npos) << part;
    }
}

TEST(FirmwareText, OnlyKnownCommandsAreOk) {
    FirmwareHost host(kModel);
    for (const char* command : {"trig sw off", "trig sw on", "trig cl on", "trig cl lo", "trig cl hi", "trig a low",
                                "arm", "cam.calc", "cam.sw trig on", "cam.arm", "cam.stop"}) {
        EXPECT_EQ(host.Text(command), "OK") << command;
    }
    for (const char* command : {"", "trig", "trig b on", "trig sw hi", "trig cl", "cam.", "cam.fly", "armed", "INFO"}) {
        EXPECT_EQ(host.Text(command), "ERR") << command;
    }
}

TEST(FirmwareText, ALongNameIsCutToItsField) {
    FirmwareHost host(kModel);
    EXPECT_EQ(host.Text("name " + std::string(100, 'x')), "OK");
    EXPECT_EQ(host.Text("name"), std::string(31, 'x'));
}

TEST(FirmwareTrigger, FreeRunNeedsNoTrigger) {
    FirmwareHost host(kModel);
    EXPECT_FALSE(host.Target().FrameDue());
    ASSERT_EQ(host.Set(CAMERA_STATE, 2), 0);
    EXPECT_TRUE(host.Target().FrameDue());
    EXPECT_FALSE(host.Target().HardwareTrigger(TriggerEdge::kActive));
    EXPECT_EQ(host.Set(CAMERA_STATE, 0), 0);
    EXPECT_FALSE(host.Target().FrameDue());
}

TEST(FirmwareTrigger, AnArmedCameraTakesOneFramePerCommand) {
    FirmwareHost host(kModel);
    Firmware& firmware = host.Target();
    host.Text("cam.sw trig on");
    host.Text("cam.arm");
    EXPECT_EQ(host.Get(TRIGGER_STATE), 1);
    EXPECT_EQ(host.Get(CAMERA_STATE), 2);
    EXPECT_FALSE(firmware.FrameDue());
    EXPECT_EQ(host.Set(SW_TRIG, 1), 0);
    EXPECT_EQ(host.Get(SW_TRIG), 0);
    ASSERT_TRUE(firmware.FrameDue());
    firmware.BeginFrame();
    firmware.FinishFrame();
    EXPECT_FALSE(firmware.FrameDue());
    EXPECT_EQ(host.Get(CURRENT_FRAME), 1);
    host.Text("trig sw off");
    host.Set(SW_TRIG, 1);
    EXPECT_FALSE(firmware.FrameDue());
    host.Text("cam.stop");
    EXPECT_FALSE(firmware.Acquiring());
    EXPECT_EQ(host.Get(TRIGGER_STATE), 0);
}

struct PolarityCase {
    const char* command;
    int polarity;
    TriggerEdge edge;
    bool taken;
};

TEST(FirmwareTrigger, TheInputObeysItsPolarity) {
    const PolarityCase kCases[] = {
        {"trig cl hi", 0, TriggerEdge::kRising, true},  {"trig cl hi", 0, TriggerEdge::kFalling, false},
        {"trig cl lo", 1, TriggerEdge::kFalling, true}, {"trig cl low", 1, TriggerEdge::kRising, false},
        {"trig a lo", 1, TriggerEdge::kActive, true},   {"trig a hi", 0, TriggerEdge::kActive, true}};
    for (const PolarityCase& c : kCases) {
        FirmwareHost host(kModel);
        host.Text("trig cl on");
        host.Text(c.command);
        host.Text("arm");
        EXPECT_EQ(host.Get(HW_TRIG_POLARITY), c.polarity) << c.command;
        EXPECT_EQ(host.Target().HardwareTrigger(c.edge), c.taken) << c.command;
        EXPECT_EQ(host.Target().FrameDue(), c.taken);
        host.Text("trig cl off");
        EXPECT_FALSE(host.Target().HardwareTrigger(TriggerEdge::kActive)) << "the input is off";
    }
}

TEST(FirmwareTrigger, ARunWithATriggerSourceWaitsForTheInput) {
    FirmwareHost host(kModel);
    ASSERT_EQ(host.Set(HW_TRIG_SOURCE, 1), 0);
    ASSERT_EQ(host.Set(CAMERA_STATE, 2), 0);
    EXPECT_FALSE(host.Target().FrameDue());
    EXPECT_TRUE(host.Target().HardwareTrigger(TriggerEdge::kRising));
    EXPECT_TRUE(host.Target().FrameDue());
}

TEST(FirmwareSequence, EndsAfterItsFrames) {
    FirmwareHost host(kModel);
    Firmware& firmware = host.Target();
    ASSERT_EQ(host.Set(FRAME_COUNT, 3), 0);
    for (int run = 0; run < 2; ++run) {
        host.Set(CAMERA_STATE, 2);
        for (int frame = 3; frame > 0; --frame) {
            ASSERT_TRUE(firmware.FrameDue());
            EXPECT_EQ(firmware.FramesToCome(), frame);
            firmware.BeginFrame();
            firmware.FinishFrame();
        }
        EXPECT_FALSE(firmware.FrameDue());
        EXPECT_EQ(host.Get(CAMERA_STATE), 0);
        EXPECT_EQ(host.Get(CURRENT_FRAME), 3);
    }
    host.Set(CAMERA_STATE, 2);
    firmware.FinishFrame();
    firmware.SetSequenceOfThis(2);
    EXPECT_EQ(firmware.FramesToCome(), 1) << "counted from the start of the run";
    firmware.SetSequenceOfThis(0);
    EXPECT_TRUE(firmware.FrameDue()) << "until stopped";
}

}  // namespace
}  // namespace zel::sim
