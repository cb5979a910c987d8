// A created and opened SDK with the test plug-ins of this program's folder. At the end of each test it checks that no
// camera object and no transport was left over.
#ifndef TESTS_SDK_SDKFIXTURE_H
#define TESTS_SDK_SDKFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "include/ZelSDK.h"
#include "platform/DynamicLibrary.h"
#include "tests/sdk/FakeCamera.h"
#include "tests/sdk/plugins/TestPlugin.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {

// A load of a test plug-in that the test itself holds, so that the plug-in's state outlives the SDK's loads.
class PluginHold {
  public:
    explicit PluginHold(const char* name) : m_Library(platform::LoadSharedLibrary(name)) {
        const auto control = platform::FindFunction<TestPluginControlFunction>(m_Library, "test_plugin_control");
        m_Control = control ? control() : nullptr;
        if (!m_Control) ADD_FAILURE() << name << " was not found beside this program";
    }
    ~PluginHold() { platform::UnloadSharedLibrary(m_Library); }
    PluginHold(const PluginHold&) = delete;
    PluginHold& operator=(const PluginHold&) = delete;

    TestPluginControl& operator*() const { return *m_Control; }
    TestPluginControl* operator->() const { return m_Control; }

  private:
    platform::LibraryHandle m_Library;
    TestPluginControl* m_Control;
};

// Whether a library stays loaded when the test lets go of it: a fresh load then still finds the test's mark.
inline bool LoadedWithoutUs(const char* name) {
    const platform::LibraryHandle library = platform::LoadSharedLibrary(name);
    const auto control = platform::FindFunction<TestPluginControlFunction>(library, "test_plugin_control");
    const bool marked = control && control()->mark == 42;
    platform::UnloadSharedLibrary(library);
    return marked;
}

class SdkFixture : public testing::Test {
  protected:
    void SetUp() override {
        FakeCamera::TakeJournal();
        ASSERT_NE(nullptr, m_Sdk);
        ASSERT_TRUE(m_Sdk->Open());
    }

    void TearDown() override {
        zel_destroy_sdk(m_Sdk);
        EXPECT_EQ(0, FakeCamera::Alive());
        for (PluginHold* plugin : {&m_Edt, &m_Pleora, &m_Usb}) {
            EXPECT_EQ(0, (*plugin)->transports);
            EXPECT_EQ(0, (*plugin)->double_destructions);
            EXPECT_EQ(0, (*plugin)->calls_of_the_dead);
        }
        DrainLoads();
    }

    int Search(int edt, int pleora, int usb) {
        m_Edt->num_cameras = edt;
        m_Pleora->num_cameras = pleora;
        m_Usb->num_cameras = usb;
        return m_Sdk->GetNumberOfCameras();
    }

    // The name of the camera object with this number, "" for none.
    std::string CameraText(int number) const {
        const auto* camera = static_cast<FakeCamera*>(m_Sdk->GetCamera(number));
        return camera ? camera->m_Name : "";
    }

    RecordedLog m_Log;
    PluginHold m_Edt{"edt_camera_link.dll"};
    PluginHold m_Pleora{"pleora_ebus.dll"};
    PluginHold m_Usb{"zel_usb.dll"};
    ZelSDK* m_Sdk = zel_create_sdk();

  private:
    // Searches leave loads behind, so the state of the plug-ins outlives the test: every switch goes back.
    void DrainLoads() {
        for (PluginHold* plugin : {&m_Edt, &m_Pleora, &m_Usb}) {
            TestPluginControl& control = **plugin;
            control.num_cameras = 0;
            control.failing_camera = -1;
            control.fresh_transports = control.keep_transports = control.overwrite_name = control.block =
                control.unload_kills = control.unload_reports = false;
            control.text_kind = TextKind::kIndexed;
            control.port_type = "USB 3.0";
            control.version = nullptr;
            control.blocked = false;
            control.mark = control.unloads = control.transports = control.created = control.double_destructions =
                control.calls_of_the_dead = 0;
            control.callback = nullptr;
            control.context = -2;
            control.last_name[0] = '\0';
        }
    }
};

inline std::string OrNull(const char* text) { return text ? text : "(null)"; }

}  // namespace zel::test

#endif
