// Triggering: the commands on the wire for each kind of link, trigger, polarity, firmware and model.
#include "tests/camera/CameraFixture.h"

namespace zel::test {
namespace {

using TriggerTest = CameraTest;

constexpr int kCl = CAMERA_TYPE_EDT_CAMERA_LINK, kBus = CAMERA_TYPE_PLEORA_EBUS, kUsb = CAMERA_TYPE_USB;

TEST_F(TriggerTest, EachLinkHasItsCommandsInOrder) {
    const std::string e_bus_old = "trig sw off; trig a on; get 48 trig cl lo; arm; ";
    const std::string e_bus_new = "trig sw off; trig cl on; trig a on; get 48 trig cl hi; arm; ";
    const std::string usb =
        "set 37 1 get 37 get 23 trig sw off; trig cl on; trig a on; get 48 trig cl low; trig a lo; ";
    const std::string camera_link = "set 37 1 get 37 get 23 trig cl on; get 48 trig cl low; ";
    const struct {
        int type;
        bool hardware;
        int polarity;
        int revision;  // its first character in the lowest byte
        const char* model;
        std::string expected;  // after the geometry has been read
    } rows[] = {{kBus, true, 0, '2', "X", e_bus_new},
                {kBus, true, 1, '1', "X", e_bus_old},
                {kBus, true, 1, '2', "E150-2M", e_bus_old},
                {kBus, true, 0, 0xB2, "X", e_bus_new},  // above ASCII
                {kBus, false, 0, '2', "E150", "set 47 0 trig cl off; trig sw on; "},
                {kBus, false, 0, '1', "X", "trig a off; trig sw on; "},
                {kUsb, true, 1, '1', "X", usb},
                {kUsb, false, 1, '2', "X", "set 47 0 trig sw on; trig cl off; "},
                {kCl, true, 1, '2', "X", camera_link},
                {9, true, 1, '2', "X", ""}};  // another link
    for (const auto& row : rows) {
        SCOPED_TRACE(&row - rows);
        m_Transport.m_Answers.interface_type = row.type;
        m_Table.m_Values[SVN_REVISION] = row.revision;
        m_Table.m_Blocks[HW_MODEL] = TextBytes(row.model);
        m_Table.m_Values[HW_TRIG_POLARITY] = row.polarity;
        ASSERT_EQ(m_Camera->ConnectCommon(), 0);
        Write(ZEL_PARAM_HW_TRIGGER_ACTIVE, row.hardware);
        m_Transport.ForgetSent();
        ASSERT_EQ(m_Camera->StartTriggerCommon(), 0);
        const std::string sent = Sent(), last_of_geometry = "get 12 ";
        EXPECT_EQ(sent.substr(sent.find(last_of_geometry) + last_of_geometry.size()), row.expected);
    }
}

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
