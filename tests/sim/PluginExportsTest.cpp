// The plug-ins as the SDK sees them: loaded by name, bound by export.
#include <gtest/gtest.h>

#include <cstring>

#include "platform/Environment.h"
#include "sim/ColorMatrices.h"
#include "sim/Settings.h"
#include "sim/SimControl.h"
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
std::vector<ConnectionEvent> g_Events;

void ZEL_CALL OnConnection(int id, int camera, int context) { g_Events.push_back({id, camera, context}); }

class Plugin : public testing::Test {
  protected:
    void SetUp() override {
        g_Events.clear();
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

TEST_F(Plugin, EachHasItsCameras) {
    const struct {
        const char* file;
        int type;
        std::vector<std::string> models;
    } kPlugins[] = {{"edt_camera_link.dll", CAMERA_TYPE_EDT_CAMERA_LINK, {"L2048-4M"}},
                    {"pleora_ebus.dll", CAMERA_TYPE_PLEORA_EBUS, {"E150-2M"}},
                    {"zel_usb.dll", CAMERA_TYPE_USB, {"C400-C", "A30-M"}}};
    for (const auto& plugin : kPlugins) {
        SCOPED_TRACE(plugin.file);
        Load(plugin.file);
        EXPECT_EQ(library->get_version_str(), std::string(plugin.file) + " - 1.0.0.0");
        ASSERT_EQ(library->get_num_cameras(), static_cast<int>(plugin.models.size()));
        for (int i = 0; i < library->get_num_cameras(); ++i) {
            ICameraInterface* const transport = library->create_camera_interface(i, nullptr);
            ASSERT_TRUE(transport);
            EXPECT_EQ(transport->GetInterfaceType(), plugin.type);
            HostCamera host(*transport);
            EXPECT_EQ(host.GetText(HW_MODEL), plugin.models[static_cast<std::size_t>(i)]);
            EXPECT_EQ(host.GetText(SERIAL_NUMBER), library->get_camera_serial_num_str(i));
            int phase = -1;
            EXPECT_EQ(host.Get(CFA_PHASE, phase), plugin.models[static_cast<std::size_t>(i)] == "C400-C");
            library->destroy_camera_interface(transport);
        }
        library->lib_unload();
    }
}

TEST_F(Plugin, TheNumberOfCamerasComesFromTheEnvironment) {
    for (const auto& [value, count] : {std::pair("-1", -1), std::pair("0", 0), std::pair("9", 9), std::pair("10", 2),
                                       std::pair("two", 2), std::pair("-2", 2)}) {
        platform::SetEnvironment("ZEL_SIM_USB_CAMERAS", value);
        Load("zel_usb.dll");
        EXPECT_EQ(library->get_num_cameras(), count) << value;
        EXPECT_EQ(library->create_camera_interface(count, nullptr), nullptr);
        library->lib_unload();
    }
}

TEST_F(Plugin, AWrongSettingIsReportedAndTheDefaultTaken) {
    const std::pair<const char*, const char*> kWrong[] = {
        {"ZEL_SIM_SIZE", "64"},
        {"ZEL_SIM_SIZE", "63x48"},
        {"ZEL_SIM_SIZE", "64x48x"},
        {"ZEL_SIM_PACE", "fast"},
        {"ZEL_SIM_PACE", "-1"},
        {"ZEL_SIM_SEED", "x"},
        {"ZEL_SIM_FILL", "red"},
        {"ZEL_SIM_SCENE", "/no/such/picture.png"},
        {"ZEL_SIM_CFA_PHASE", "0"},
        {"ZEL_SIM_CFA_PHASE", "5"},
        {"ZEL_SIM_CFA_PHASE", "12"},
        {"ZEL_SIM_TAPS", "flat"},
        {"ZEL_SIM_COLOR_SPACE", "a text that is longer than a table entry"}};
    for (const auto& [variable, value] : kWrong) {
        SetUp();
        platform::SetEnvironment(variable, value);
        testing::internal::CaptureStderr();
        const Settings settings = ReadSettings("ZEL_SIM_USB_CAMERAS", 2);
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(line.find(std::string(variable) + '=' + value + ": expected "), 0u) << line;
        if (variable == std::string("ZEL_SIM_SIZE")) {
            EXPECT_EQ(settings.width, 0u);
        }
        if (variable == std::string("ZEL_SIM_PACE")) {
            EXPECT_EQ(settings.speed, 1.0);
        }
        EXPECT_EQ(settings.scene, "builtin");
    }
    SetUp();
    testing::internal::CaptureStderr();
    const Settings settings = ReadSettings("ZEL_SIM_USB_CAMERAS", 2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(settings.width, 64u);
    EXPECT_EQ(settings.height, 48u);
    EXPECT_FALSE(settings.Paced());
}

TEST_F(Plugin, PhaseAndColorSpaceAreChosenAndSetTheTable) {
    const auto number = [](HostCamera& host, int index) {
        const plugin_check::TableAnswer answer = host.Request(SYNC_TABLE_CMD_GET, index);
        double value = 0.0;
        EXPECT_EQ(answer.data.size(), sizeof value);
        if (answer.data.size() == sizeof value) std::memcpy(&value, answer.data.data(), sizeof value);
        return value;
    };
    for (const char* space : {"CCIR 709", "XYZ", "something else"}) {
        for (const char* phase : {"1", "2", "3", "4"}) {
            platform::SetEnvironment("ZEL_SIM_CFA_PHASE", phase);
            platform::SetEnvironment("ZEL_SIM_COLOR_SPACE", space);
            Load("zel_usb.dll");
            ICameraInterface* const transport = library->create_camera_interface(0, nullptr);
            ASSERT_TRUE(transport);
            HostCamera host(*transport);
            int value = 0;
            EXPECT_TRUE(host.Get(CFA_PHASE, value));
            EXPECT_EQ(value, phase[0] - '0');
            EXPECT_EQ(host.GetText(CCM_OUTPUT_COLOR_SPACE), space);
            const ColorMatrices matrices = MakeColorMatrices(space);
            for (int i = 0; i < 9; ++i) {
                const auto row = static_cast<std::size_t>(i / 3);
                const auto column = static_cast<std::size_t>(i % 3);
                EXPECT_EQ(number(host, CCM_1_1 + i), matrices.correction[row][column]);
                EXPECT_EQ(number(host, DWB_1_1 + i), matrices.white_balance[row][column]);
            }
            library->destroy_camera_interface(transport);
            library->lib_unload();
        }
    }
}

TEST_F(Plugin, HotPlugIsReportedOnceEach) {
    Load("zel_usb.dll");
    ASSERT_EQ(library->get_num_cameras(), 2);
    library->set_camera_connection_event_callback(OnConnection, 2);
    EXPECT_EQ(Control("unplug 1"), 0);
    EXPECT_EQ(Control("unplug 1"), -1) << "it is gone already";
    EXPECT_EQ(library->get_num_cameras(), 1);
    EXPECT_EQ(library->create_camera_interface(1, nullptr), nullptr);
    EXPECT_EQ(Control("plug 1"), 0);
    EXPECT_EQ(library->get_num_cameras(), 2);
    ASSERT_EQ(g_Events.size(), 2u);
    EXPECT_EQ(g_Events[0].id, ICAMERA_INTERFACE_EVENT_ID_DISCONNECT);
    EXPECT_EQ(g_Events[1].id, ICAMERA_INTERFACE_EVENT_ID_CONNECT);
    EXPECT_EQ(g_Events[1].camera, 1);
    EXPECT_EQ(g_Events[1].context, 2);
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
    ASSERT_TRUE(host.WaitForFrames(3, 5000));
    // The application may stop from inside the event.
    host.m_OnEvent = [&](unsigned id) {
        if (id == CAMERA_EVENT_DISCONNECT) transport->Stop();
    };
    EXPECT_EQ(Control("unplug 0"), 0);
    EXPECT_TRUE(host.WaitForEvent(CAMERA_EVENT_DISCONNECT, 1000));
    const std::size_t frames = host.Snapshot().image_numbers.size();
    EXPECT_EQ(Control("plug 0"), 0);
    EXPECT_TRUE(host.WaitForEvent(CAMERA_EVENT_RECONNECT, 1000));
    ASSERT_EQ(g_Events.size(), 1u) << "a camera that is still open comes back without a connect event";
    EXPECT_EQ(host.Snapshot().image_numbers.size(), frames);
    ASSERT_EQ(transport->Start(), 0);
    ASSERT_EQ(host.Set(CAMERA_STATE, 2), 0);
    EXPECT_TRUE(host.WaitForFrames(frames + 3, 5000));
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_EQ(transport->Disconnect(), 0);
    transport->SetCameraCommon(nullptr);
    library->destroy_camera_interface(transport);
    library->destroy_camera_interface(transport);  // left alone
}

TEST_F(Plugin, NamesStayWhileTheLibraryLives) {
    Load("zel_usb.dll");
    for (const char* expected : {"Simulated C400-C", "Left arm"}) {
        EXPECT_STREQ(library->get_camera_name(0), expected);
        ICameraInterface* const transport = library->create_camera_interface(0, nullptr);
        HostCamera host(*transport);
        std::string reply;
        EXPECT_TRUE(host.Text("name Left arm", reply));
        library->destroy_camera_interface(transport);
    }
    library->lib_unload();
    EXPECT_STREQ(library->get_camera_name(0), "Simulated C400-C");
    EXPECT_STREQ(library->get_camera_name(7), "");
}

TEST_F(Plugin, TheControlInterfaceAnswersAndRefuses) {
    Load("zel_usb.dll");
    ICameraInterface* const transport = library->create_camera_interface(0, nullptr);
    HostCamera host(*transport);
    transport->SetCameraCommon(&host);
    host.RegisterHandlers();
    std::string reply;
    int width = 0;
    host.Get(H_SIZE, width);
    host.Set(EXPOSURE_TIME, 70);
    host.Text("trig sw off\r\n", reply);
    const int length = Control("log 0", &reply);
    EXPECT_EQ(length, static_cast<int>(reply.size()));
    EXPECT_EQ(reply, "GET H_SIZE\nSET EXPOSURE_TIME 70\ntext trig sw off\\r\\n\n");
    EXPECT_EQ(Control("exchanges 0", &reply), 1);
    EXPECT_EQ(reply, "3");
    EXPECT_EQ(Control("clear-log 0"), 0);
    EXPECT_EQ(Control("log 0"), 0);
    Control("frames 0", &reply);
    EXPECT_EQ(reply, "delivered 0 lost 0 no-buffer 0");
    EXPECT_GT(Control("hwtrigger 0", &reply), 0);
    EXPECT_EQ(reply, "ignored");
    EXPECT_EQ(Control("event 0 3 12 -1 2"), 0);
    EXPECT_TRUE(host.WaitForEvent(3, 1000));
    for (const char* wrong :
         {"", "jump 0", "plug", "plug 2", "plug 0", "fault 0", "fault 0 rust", "fault 0 delay", "fault 0 lose after=x",
          "fault 0 exception 0x11 entry=NONE", "hwtrigger 0 up", "event 0", "set-calc-delay 0 -1"}) {
        EXPECT_EQ(Control(wrong, &reply), -1) << wrong;
        EXPECT_NE(reply, "") << wrong;
    }
    char small[4];
    EXPECT_GT(m_Control("frames 0", small, sizeof(small)), 4);
    EXPECT_STREQ(small, "del");
    EXPECT_EQ(m_Control(nullptr, nullptr, 0), -1);
    transport->SetCameraCommon(nullptr);
    library->destroy_camera_interface(transport);
}

}  // namespace
}  // namespace zel::sim
