// Triggering: the commands on the wire for each kind of link, trigger, polarity, firmware and model.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

using Lines = std::vector<std::string>;

struct Case {
    const char* name;
    int type;
    bool hardware;
    int polarity;
    const char* revision;  // four bytes
    const char* model;
    Lines expected;  // after the geometry has been read
};

std::string Text(const std::string& command) { return "text " + command; }

const Lines kEBusNewHigh = {Text("trig sw off\r\n"), Text("trig cl on\r\n"), Text("trig a on\r\n"), "get 48",
                            Text("trig cl hi\r\n"),  Text("arm\r\n")};
const Lines kEBusOld = {Text("trig sw off\r\n"), Text("trig a on\r\n"), "get 48", Text("trig cl lo\r\n"),
                        Text("arm\r\n")};
const Lines kEBusSoftwareOld = {Text("trig a off\r\n"), Text("trig sw on\r\n")};
const Lines kEBusSoftwareNew = {"set 47 0", Text("trig cl off\r\n"), Text("trig sw on\r\n")};
const Lines kSoftware = {"set 47 0", Text("trig sw on\r\n"), Text("trig cl off\r\n")};

const Lines kUsbHardware = {"set 37 1",
                            "get 37",
                            "get 23",
                            Text("trig sw off\r\n"),
                            Text("trig cl on\r\n"),
                            Text("trig a on\r\n"),
                            "get 48",
                            Text("trig cl low\r\n"),
                            Text("trig a lo\r\n")};
const Lines kCameraLinkHardware = {
    "set 37 1", "get 37", "get 23", Text("trig cl on\r\n"), "get 48", Text("trig cl low\r\n")};

class TriggerTable : public CameraTest, public testing::WithParamInterface<Case> {};

TEST_P(TriggerTable, SendsItsCommandsInOrder) {
    const Case& c = GetParam();
    m_Transport.m_Answers.interface_type = c.type;
    m_Table.m_Values[SVN_REVISION] =
        static_cast<int>(static_cast<unsigned char>(c.revision[0]) | static_cast<unsigned char>(c.revision[1]) << 8);
    m_Table.m_Blocks[HW_MODEL] = TextBytes(c.model);
    m_Table.m_Values[HW_TRIG_POLARITY] = c.polarity;
    ASSERT_EQ(m_Camera->ConnectCommon(), 0);
    m_Camera->SetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE, c.hardware);
    m_Transport.ForgetSent();
    ASSERT_EQ(m_Camera->StartTriggerCommon(), 0);
    Lines lines = SentLines();
    const auto clock_read = std::find(lines.begin(), lines.end(), "get 12");  // the last value of the geometry
    ASSERT_NE(clock_read, lines.end());
    EXPECT_EQ(Lines(clock_read + 1, lines.end()), c.expected);
}

constexpr int kCl = CAMERA_TYPE_EDT_CAMERA_LINK, kBus = CAMERA_TYPE_PLEORA_EBUS, kUsb = CAMERA_TYPE_USB;

INSTANTIATE_TEST_SUITE_P(, TriggerTable,
                         testing::Values(Case{"EBusHardwareNewHigh", kBus, true, 0, "2.", "X", kEBusNewHigh},
                                         Case{"EBusHardwareOldFirmware", kBus, true, 1, "1.", "X", kEBusOld},
                                         Case{"EBusHardwareE150", kBus, true, 1, "2.", "E150-2M", kEBusOld},
                                         Case{"EBusHardwareRevisionAboveAscii", kBus, true, 0, "\xB2.", "X",
                                              kEBusNewHigh},
                                         Case{"EBusSoftwareNew", kBus, false, 0, "2.", "E150", kEBusSoftwareNew},
                                         Case{"EBusSoftwareOldFirmware", kBus, false, 0, "1.", "X", kEBusSoftwareOld},
                                         Case{"UsbHardware", kUsb, true, 1, "1.", "X", kUsbHardware},
                                         Case{"UsbSoftware", kUsb, false, 1, "2.", "X", kSoftware},
                                         Case{"CameraLinkHardware", kCl, true, 1, "2.", "X", kCameraLinkHardware},
                                         Case{"AnotherLink", 9, true, 1, "2.", "X", {}}),
                         [](const auto& row) { return std::string(row.param.name); });

class TriggerTest : public CameraTest {};

TEST_F(TriggerTest, ThePollWithoutLimitWaitsAsLongAsItTakes) {
    // The first calculation ends at once; the one of the hardware trigger only after 100 readings.
    int readings = 0;
    m_CalculationEnds = false;
    m_Transport.SetHandler([&](const Bytes& datagram) {
        if (datagram == SetRequest(CALC_STATE, 1))
            readings = m_Transport.CountSent(SetRequest(CALC_STATE, 1)) == 1 ? 0 : 100;
        if (datagram == GetRequest(CALC_STATE)) return ValueReply(readings-- <= 0 ? 2 : 1);
        return m_Table.Answer(datagram);
    });
    m_Camera->SetParameterValue(ZEL_PARAM_HW_TRIGGER_ACTIVE, 1);
    EXPECT_EQ(m_Camera->StartTriggerCommon(), 0);
    EXPECT_GT(m_Clock.Elapsed(), 12000u);
}

const Lines kArmed = {Text("cam.calc"), Text("cam.sw trig on"), Text("cam.arm")};

TEST_F(TriggerTest, StartTriggerAcquisitionArmsTheCamera) {
    for (const int type : {kCl, kBus, kUsb}) {
        m_Transport.m_Answers.interface_type = type;
        m_Transport.m_Answers.call_common = false;
        m_Transport.ForgetSent();
        EXPECT_TRUE(m_Camera->StartTriggerAcquisition());
        Lines expected = kArmed;
        if (type != kBus) expected.insert(expected.begin(), "set 8 1");
        EXPECT_EQ(SentLines(), expected);
    }
}

TEST_F(TriggerTest, ARefusedTriggerStateIsReportedAsSuccessAtOnce) {
    m_Transport.m_Answers.call_common = false;
    Refuse(TRIGGER_STATE);
    EXPECT_TRUE(m_Camera->StartTriggerAcquisition());
    EXPECT_TRUE(SentTexts().empty());
}

TEST_F(TriggerTest, StoppingOrArmingAgain) {
    EXPECT_TRUE(m_Camera->StopTriggerAcquisition(0));
    EXPECT_EQ(SentLines(), Lines{Text("cam.stop")});
    EXPECT_EQ(m_Transport.CountCalls("StopTrigger"), 1);
    m_Transport.ForgetSent();
    EXPECT_TRUE(m_Camera->StopTriggerAcquisition(1));
    Lines expected = kArmed;
    expected.insert(expected.begin(), Text("cam.stop"));
    EXPECT_EQ(SentLines(), expected);
}

}  // namespace
}  // namespace zel::test
