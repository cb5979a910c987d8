// A created and opened SDK with three test plug-ins, each without a camera at first. At the end of each test it checks
// that no camera object and no transport was left over, and unloads the plug-ins.
#ifndef TESTS_SDK_SDKFIXTURE_H
#define TESTS_SDK_SDKFIXTURE_H

#include <gmock/gmock.h>

#include <string>

#include "include/ZelSDK.h"
#include "platform/DynamicLibrary.h"
#include "tests/sdk/FakeCamera.h"
#include "tests/sdk/plugins/TestPlugin.h"
#include "tests/support/RecordedLog.h"

namespace zel::test {

// A test plug-in, loaded once by the test itself, so that its state outlives the SDK's loads.
struct Plugin {
    explicit Plugin(const char* name) : m_Library(platform::LoadSharedLibrary(name)) {
        const auto control = platform::FindFunction<TestPluginControlFunction>(m_Library, "test_plugin_control");
        m_Control = control ? control() : nullptr;
        if (!m_Control || m_Control->created > 0) ADD_FAILURE() << name << " was not found, or not unloaded";
    }
    ~Plugin() {
        for (int left = m_Control ? m_Control->loads.load() : 0; left > 0; --left)
            platform::UnloadSharedLibrary(m_Library);
    }
    TestPluginControl* operator->() const { return m_Control; }
    int LoadsOfTheSdk() const { return m_Control->loads - 1; }

    platform::LibraryHandle m_Library;
    TestPluginControl* m_Control;
};

struct SdkFixture : testing::Test {
    SdkFixture() {
        m_Edt->lacks = m_Pleora->lacks = "get_camera_port_type";  // which is the USB library's alone
        FakeCamera::s_Journal.clear();
        EXPECT_TRUE(m_Sdk->Open());
    }
    void TearDown() override {
        zel_destroy_sdk(m_Sdk);
        EXPECT_EQ(0, FakeCamera::s_Alive);
        for (const Plugin* plugin : m_Plugins) {
            EXPECT_EQ(0, (*plugin)->transports);
            EXPECT_EQ(0, (*plugin)->misuses);
        }
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
    int Transports() const { return m_Edt->transports + m_Pleora->transports + m_Usb->transports; }

    RecordedLog m_Log;
    Plugin m_Edt{"edt_camera_link.dll"};
    Plugin m_Pleora{"pleora_ebus.dll"};
    Plugin m_Usb{"zel_usb.dll"};
    const Plugin* const m_Plugins[3] = {&m_Edt, &m_Pleora, &m_Usb};
    ZelSDK* m_Sdk = zel_create_sdk();
};

inline std::string OrNull(const char* text) { return text ? text : "(null)"; }

}  // namespace zel::test

#endif
