// Triggering: the commands on the wire for each kind of link, trigger, polarity, firmware and model.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

struct Case {
    const char* name;
    int type;
    bool hardware;
    int polarity;
    int revision;  // its first character in the lowest byte
    const char* model;
    const char* expected;  // after the geometry has been read
};

using TriggerTest = CameraTest;
class TriggerTable : public TriggerTest, public testing::WithParamInterface<Case> {};

TEST_P(TriggerTable, SendsItsCommandsInOrder) {
    const Case& c = GetParam();
    m_Transport.m_Answers.interface_type = c.type;
    m_Table.m_Values[SVN_REVISION] = c.revision;
    m_Table.m_Blocks[HW_MODEL] = TextBytes(c.model);
    m_Table.m_Values[HW_TRIG_POLARITY] = c.polarity;
    ASSERT_EQ(m_Camera->ConnectCommon(), 0);
    Write(ZEL_PARAM_HW_TRIGGER_ACTIVE, c.hardware);
    m_Transport.ForgetSent();
    ASSERT_EQ(m_Camera->StartTriggerCommon(), 0);
    const std::string sent = Sent(), last_of_geometry = "get 12 ";
    EXPECT_EQ(sent.substr(sent.find(last_of_geometry) + last_of_geometry.size()), c.expected);
}

constexpr int kCl = CAMERA_TYPE_EDT_CAMERA_LINK, kBus = CAMERA_TYPE_PLEORA_EBUS, kUsb = CAMERA_TYPE_USB;

constexpr const char* kEBusOld = "trig sw off; trig a on; get 48 trig cl lo; arm; ";
constexpr const char* kEBusNew = "trig sw off; trig cl on; trig a on; get 48 trig cl hi; arm; ";
INSTANTIATE_TEST_SUITE_P(
    , TriggerTable,
    testing::Values(Case{"EBusHardwareNewHigh", kBus, true, 0, '2', "X", kEBusNew},
                    Case{"EBusHardwareOldFirmware", kBus, true, 1, '1', "X", kEBusOld},
                    Case{"EBusHardwareE150", kBus, true, 1, '2', "E150-2M", kEBusOld},
                    Case{"EBusHardwareRevisionAboveAscii", kBus, true, 0, 0xB2, "X", kEBusNew},
                    Case{"EBusSoftwareNew", kBus, false, 0, '2', "E150", "set 47 0 trig cl off; trig sw on; "},
                    Case{"EBusSoftwareOldFirmware", kBus, false, 0, '1', "X", "trig a off; trig sw on; "},
                    Case{"UsbHardware", kUsb, true, 1, '1', "X",
                         "set 37 1 get 37 get 23 trig sw off; trig cl on; trig a on; get 48 trig cl low; trig a lo; "},
                    Case{"UsbSoftware", kUsb, false, 1, '2', "X", "set 47 0 trig sw on; trig cl off; "},
                    Case{"CameraLinkHardware", kCl, true, 1, '2', "X",
                         "set 37 1 get 37 get 23 trig cl on; get 48 trig cl low; "},
                    Case{"AnotherLink", 9, true, 1, '2', "X", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(TriggerTest, ThePollWithoutLimitWaitsAsLongAsItTakes) {
    // The first calculation has ended when it is first asked for, the one of the hardware trigger after 100 readings.
    m_Transport.SetHandler([&](const Bytes& datagram) {
        const int readings = m_Transport.CountSent(GetRequest(CALC_STATE));
        if (datagram == GetRequest(CALC_STATE)) return ValueReply(readings == 1 || readings > 101 ? 2 : 1);
        return m_Table.Answer(datagram);
    });
    Write(ZEL_PARAM_HW_TRIGGER_ACTIVE, 1);
    EXPECT_EQ(m_Camera->StartTriggerCommon(), 0);
    EXPECT_GT(m_Clock.Elapsed(), 12000u);
}

constexpr const char* kArmed = "cam.calc cam.sw trig on cam.arm ";

TEST_F(TriggerTest, StartTriggerAcquisitionArmsTheCamera) {
    m_Transport.m_Answers.call_common = false;
    for (const int type : {kCl, kBus, kUsb}) {
        m_Transport.m_Answers.interface_type = type;
        m_Transport.ForgetSent();
        EXPECT_TRUE(m_Camera->StartTriggerAcquisition());
        EXPECT_EQ(Sent(), (type == kBus ? "" : "set 8 1 ") + std::string(kArmed));
    }
    Refuse(TRIGGER_STATE);
    m_Transport.ForgetSent();
    EXPECT_TRUE(m_Camera->StartTriggerAcquisition()) << "a refused state is reported as success at once";
    EXPECT_EQ(Sent(), "set 8 1 ");
}

TEST_F(TriggerTest, StoppingOrArmingAgain) {
    EXPECT_TRUE(m_Camera->StopTriggerAcquisition(0));
    EXPECT_EQ(Sent(), "cam.stop ");
    EXPECT_EQ(m_Transport.CountCalls("StopTrigger"), 1);
    m_Transport.ForgetSent();
    EXPECT_TRUE(m_Camera->StopTriggerAcquisition(1));
    EXPECT_EQ(Sent(), "cam.stop " + std::string(kArmed));
}

}  // namespace
}  // namespace zel::test
