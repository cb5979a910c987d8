// The plug-ins as the SDK sees them: loaded by name, bound by export.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "devices/sim/link/Settings.h"
#include "devices/sim/link/SimControl.h"
#include "include/ZelParameters.h"
#include "tests/support/Process.h"
#include "tools/zelcam/check/HostCamera.h"
#include "tools/zelcam/check/PluginLibrary.h"

namespace zel::sim {
namespace {

using zelcam::check::HostCamera;
using zelcam::check::PluginLibrary;

// A bound for what must come; a busy machine takes a part of it.
constexpr int kPatienceMs = 60000;

std::atomic<int> s_Events;

void ZEL_CALL OnConnection(int id, int, int) { s_Events += id == ICAMERA_INTERFACE_EVENT_ID_DISCONNECT ? 1 : 100; }

void Simulate(const std::string& name, const char* value) {
    platform::SetEnvironment(("ZEL_SIM_" + name).c_str(), value);
}

struct Plugin : testing::Test {
    void SetUp() override {
        s_Events = 0;
        for (const std::string& name : SettingNames()) platform::SetEnvironment(name.c_str(), nullptr);
        for (const auto& [name, value] : {std::pair("PACE", "none"), {"SIZE", "64x48"}, {"FILL", "none"}})
            Simulate(name, value);
    }
    void TearDown() override {
        if (transport) {
            transport->SetCameraCommon(nullptr);
            for (int i = 0; i < 2; ++i) library->destroy_camera_interface(transport);  // the second time left alone
        }
        if (library && library->lib_unload) library->lib_unload();
        for (const std::string& name : SettingNames()) platform::SetEnvironment(name.c_str(), nullptr);
    }
    void Load(const char* name) {
        library = std::make_unique<PluginLibrary>(name);
        ASSERT_TRUE(library->Complete()) << name;
        library->Bind(m_Control, "zel_sim_control");
    }
    // Its first camera, connected to a host.
    void LoadCamera(const char* name) {
        Load(name);
        transport = library->create_camera_interface(0, nullptr);
        host = std::make_unique<HostCamera>(*transport);
        transport->SetCameraCommon(host.get());
        host->RegisterHandlers();
        ASSERT_EQ(transport->Connect(), 0);
    }
    void ExpectFrames(std::size_t count) {
        EXPECT_EQ(transport->Start(), 0);
        EXPECT_EQ(host->Set(CAMERA_STATE, 2), 0);
        EXPECT_TRUE(host->WaitForFrames(count, kPatienceMs));
    }
    int Control(const char* command, std::string* reply = nullptr) {
        char buffer[4096] = "";
        const int result = m_Control(command, buffer, sizeof(buffer));
        if (reply) *reply = buffer;
        return result;
    }

    std::unique_ptr<PluginLibrary> library;
    std::unique_ptr<HostCamera> host;
    ICameraInterface* transport = nullptr;
    ZelSimControlFunction m_Control = nullptr;
};

TEST_F(Plugin, AWrongSettingIsReportedAndTheDefaultTaken) {
    const std::string long_text = "a text that is longer than a table entry";
    const std::pair<std::string, std::string> wrong[] = {
        {"SIZE", "63x48"},         {"PACE", "-1"},        {"SEED", "x"},      {"FILL", "red"},
        {"SCENE", "/no/such.png"}, {"MOTION", "drift:0"}, {"CFA_PHASE", "5"}, {"TAPS", "flat"},
        {"COLOR_SPACE", long_text}};
    for (const auto& [name, value] : wrong) {
        SetUp();
        Simulate(name, value.c_str());
        testing::internal::CaptureStderr();
        const Settings settings = ReadSettings();
        ReadSettings();
        const std::string line = testing::internal::GetCapturedStderr();
        EXPECT_EQ(line.find("ZEL_SIM_" + name + '=' + value + ": expected "), 0u) << line;
        EXPECT_EQ(line.find('\n'), line.size() - 1) << "once in a process";
        EXPECT_EQ(std::tuple(settings.width, settings.speed, settings.scene),
                  std::tuple(name == "SIZE" ? 0u : 64u, name == "PACE" ? 1.0 : 0.0, "builtin"));
    }
    Simulate("SCEEN", "x");
    testing::internal::CaptureStderr();
    ReadSettings();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("did you mean ZEL_SIM_SCENE?"), std::string::npos);
    Simulate("SCEEN", nullptr);
}

// One script for all libraries: each does the lines that are about its cameras, at their times.
TEST_F(Plugin, AScriptOfFaultsIsDoneByItself) {
    platform::SetEnvironment("ZEL_SIM_FAULTS",
                             "unplug E150-2M;unplgu 0; fault 0 rust;@-1 plug 0;plug nobody; @0.3 unplug zel_usb/1;"
                             "fault 500101 lose times=3; @0.01+0.01 event 500101 3");
    Load("pleora_ebus.dll");
    testing::internal::CaptureStderr();
    EXPECT_EQ(library->get_num_cameras(), 0);
    library->lib_unload();
    LoadCamera("zel_usb.dll");
    library->set_camera_connection_event_callback(OnConnection, 1);
    ExpectFrames(1);
    EXPECT_TRUE(host->WaitForEvent(3, kPatienceMs));
    EXPECT_EQ(transport->Stop(), 0);
    EXPECT_EQ(transport->GetDroppedFrames(), 3);
    while (s_Events == 0) std::this_thread::yield();  // the test's time limit ends it
    EXPECT_EQ(std::pair(s_Events.load(), library->get_num_cameras()), std::pair(1, 1));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), 4) << told;
    for (const char* reason : {"'unplgu 0': unknown command", "unknown fault 'rust'", "expected @SECONDS", "'nobody'"})
        EXPECT_NE(told.find(reason), std::string::npos) << reason;
}

TEST_F(Plugin, TheControlInterfaceAnswersAndRefuses) {
    LoadCamera("zel_usb.dll");
    std::string reply;
    host->Set(EXPOSURE_TIME, 70);
    host->Text("trig sw off\r\n", reply);
    const int length = Control("log 0", &reply);
    EXPECT_EQ(length, static_cast<int>(reply.size()));
    EXPECT_EQ(reply, "SET EXPOSURE_TIME 70\ntext trig sw off\\r\\n\n");
    EXPECT_EQ(Control("event 0 3 12 -1 2"), 0);
    EXPECT_TRUE(host->WaitForEvent(3, kPatienceMs));
    for (const char* wrong :
         {"", "jump 0", "plug", "plug 2", "plug 0", "fault 0", "fault 0 rust", "fault 0 delay", "fault 0 lose after=x",
          "fault 0 exception 0x11 entry=NONE", "hwtrigger 0 up", "event 0", "set-calc-delay 0 -1"}) {
        EXPECT_EQ(Control(wrong, &reply), -1) << wrong;
        EXPECT_NE(reply, "") << wrong;
    }
    char small[4];
    EXPECT_GT(m_Control("frames 0", small, sizeof(small)), 4);
    EXPECT_STREQ(small, "del");
}

TEST_F(Plugin, TriggersInsideTheImageHandlerLoseNothing) {
    LoadCamera("pleora_ebus.dll");
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

// Without a pace and without a free record the camera waits before it takes the next frame, and counts the one lost.
TEST_F(Plugin, NoFreeRecordIsWaitedForAndCounted) {
    LoadCamera("pleora_ebus.dll");
    host->m_Recycle = false;
    host->m_Buffers = 2;
    const auto begun = std::chrono::steady_clock::now();
    ExpectFrames(2);
    std::this_thread::sleep_for(std::chrono::milliseconds(50));  // in which a camera that spins asks ever so often
    while (host->Snapshot().free_requests < 4) std::this_thread::yield();  // the test's time limit ends it
    EXPECT_EQ(transport->Stop(), 0);
    std::string counts;
    Control("frames 0", &counts);
    const int requests = host->Snapshot().free_requests;
    EXPECT_LE((requests - 3) * std::chrono::microseconds(250), std::chrono::steady_clock::now() - begun);
    EXPECT_EQ(counts, "delivered 2 lost 0 no-buffer " + std::to_string(requests - 2));
}

}  // namespace
}  // namespace zel::sim
