// The plug-ins as the SDK sees them: loaded by name, bound by export.
#include <gtest/gtest.h>

#include "devices/sim/link/Settings.h"
#include "devices/sim/link/SimControl.h"
#include "platform/Environment.h"
#include "tools/plugin_check/HostCamera.h"
#include "tools/plugin_check/PluginLibrary.h"

namespace zel::sim {
namespace {

using plugin_check::HostCamera;
using plugin_check::PluginLibrary;

struct ConnectionEvent {
    int id;
    int camera;
    int context;
};
std::vector<ConnectionEvent> s_Events;

void ZEL_CALL OnConnection(int id, int camera, int context) { s_Events.push_back({id, camera, context}); }

class Plugin : public testing::Test {
  protected:
    void SetUp() override {
        s_Events.clear();
        for (const char* variable : kVariables) platform::SetEnvironment(variable, nullptr);
        platform::SetEnvironment("ZEL_SIM_PACE", "none");
        platform::SetEnvironment("ZEL_SIM_SIZE", "64x48");
        platform::SetEnvironment("ZEL_SIM_FILL", "none");
    }
    void TearDown() override {
        if (library && library->lib_unload) library->lib_unload();
        for (const char* variable : kVariables) platform::SetEnvironment(variable, nullptr);
    }
    void Load(const char* name) {
        library = std::make_unique<PluginLibrary>(name);
        ASSERT_TRUE(library->Complete()) << name;
        library->Bind(m_Control, "zel_sim_control");
        ASSERT_TRUE(m_Control);
    }
    int Control(const char* command, std::string* reply = nullptr) {
        char buffer[4096] = "";
        const int result = m_Control(command, buffer, sizeof(buffer));
        if (reply) *reply = buffer;
        return result;
    }

    static constexpr const char* kVariables[] = {"ZEL_SIM_CL_CAMERAS",  "ZEL_SIM_EBUS_CAMERAS", "ZEL_SIM_USB_CAMERAS",
                                                 "ZEL_SIM_SIZE",        "ZEL_SIM_PACE",         "ZEL_SIM_SEED",
                                                 "ZEL_SIM_SCENE",       "ZEL_SIM_FILL",         "ZEL_SIM_CFA_PHASE",
                                                 "ZEL_SIM_COLOR_SPACE", "ZEL_SIM_TAPS"};
    std::unique_ptr<PluginLibrary> library;
    ZelSimControlFunction m_Control = nullptr;
};

TEST_F(Plugin, AWrongSettingIsReportedAndTheDefaultTaken) {
    const std::pair<const char*, const char*> kWrong[] = {
        {"ZEL_SIM_SIZE", "63x48"},
        {"ZEL_SIM_PACE", "-1"},
        {"ZEL_SIM_SEED", "x"},
        {"ZEL_SIM_FILL", "red"},
        {"ZEL_SIM_SCENE", "/no/such/picture.png"},
        {"ZEL_SIM_CFA_PHASE", "5"},
        {"ZEL_SIM_TAPS", "flat"},
        {"ZEL_SIM_COLOR_SPACE", "a text that is longer than a table entry"}};
    for (const auto& [variable, value] : kWrong) {
        SetUp();
        platform::SetEnvironment(variable, value);
        testing::internal::CaptureStderr();
        const Settings settings = ReadSettings("ZEL_SIM_USB_CAMERAS", 2);
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(line.find(std::string(variable) + '=' + value + ": expected "), 0u) << line;
        EXPECT_EQ(settings.width, variable == std::string("ZEL_SIM_SIZE") ? 0u : 64u);
        EXPECT_EQ(settings.speed, variable == std::string("ZEL_SIM_PACE") ? 1.0 : 0.0);
        EXPECT_EQ(settings.scene, "builtin");
    }
}

TEST_F(Plugin, AnOpenCameraHearsOfItsUnplugAndReturn) {
    Load("pleora_ebus.dll");
    library->set_camera_connection_event_callback(OnConnection, 1);
    ICameraInterface* const transport = library->create_camera_interface(0, nullptr);
    ASSERT_TRUE(transport);
    HostCamera host(*transport);
    transport->SetCameraCommon(&host);
    host.RegisterHandlers();
    ASSERT_EQ(transport->Connect(), 0);
    ASSERT_EQ(transport->Start(), 0);
    ASSERT_EQ(host.Set(CAMERA_STATE, 2), 0);
    ASSERT_TRUE(host.WaitForFrames(3, 60000));
    // The application may stop from inside the event.
    host.m_OnEvent = [&](unsigned id) {
        if (id == CAMERA_EVENT_DISCONNECT) transport->Stop();
    };
    EXPECT_EQ(Control("unplug 0"), 0);
    EXPECT_EQ(Control("unplug 0"), -1) << "it is gone already";
    EXPECT_TRUE(host.WaitForEvent(CAMERA_EVENT_DISCONNECT, 60000));
    const std::size_t frames = host.Snapshot().image_numbers.size();
    EXPECT_EQ(Control("plug 0"), 0);
    EXPECT_TRUE(host.WaitForEvent(CAMERA_EVENT_RECONNECT, 60000));
    ASSERT_EQ(s_Events.size(), 1u) << "a camera that is still open comes back without a connect event";
    EXPECT_EQ(host.Snapshot().image_numbers.size(), frames);
    ASSERT_EQ(transport->Start(), 0);
    ASSERT_EQ(host.Set(CAMERA_STATE, 2), 0);
    EXPECT_TRUE(host.WaitForFrames(frames + 3, 60000));
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_EQ(transport->Disconnect(), 0);
    transport->SetCameraCommon(nullptr);
    library->destroy_camera_interface(transport);
    library->destroy_camera_interface(transport);  // left alone
}

TEST_F(Plugin, TheControlInterfaceAnswersAndRefuses) {
    Load("zel_usb.dll");
    ICameraInterface* const transport = library->create_camera_interface(0, nullptr);
    HostCamera host(*transport);
    transport->SetCameraCommon(&host);
    host.RegisterHandlers();
    std::string reply;
    host.Set(EXPOSURE_TIME, 70);
    host.Text("trig sw off\r\n", reply);
    const int length = Control("log 0", &reply);
    EXPECT_EQ(length, static_cast<int>(reply.size()));
    EXPECT_EQ(reply, "SET EXPOSURE_TIME 70\ntext trig sw off\\r\\n\n");
    EXPECT_EQ(Control("event 0 3 12 -1 2"), 0);
    EXPECT_TRUE(host.WaitForEvent(3, 60000));
    for (const char* wrong :
         {"", "jump 0", "plug", "plug 2", "plug 0", "fault 0", "fault 0 rust", "fault 0 delay", "fault 0 lose after=x",
          "fault 0 exception 0x11 entry=NONE", "hwtrigger 0 up", "event 0", "set-calc-delay 0 -1"}) {
        EXPECT_EQ(Control(wrong, &reply), -1) << wrong;
        EXPECT_NE(reply, "") << wrong;
    }
    char small[4];
    EXPECT_GT(m_Control("frames 0", small, sizeof(small)), 4);
    EXPECT_STREQ(small, "del");
    transport->SetCameraCommon(nullptr);
    library->destroy_camera_interface(transport);
}

}  // namespace
}  // namespace zel::sim
