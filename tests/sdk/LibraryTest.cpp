// Camera interface libraries that are absent or lack exports, how long the SDK keeps them loaded, and the text of all
// versions.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

constexpr const char* kOwnVersion = "zel_sdk.dll         - 3.6.0.0.";
constexpr const char* kOptional =
    "get_camera_name get_camera_serial_num_str get_camera_address_str get_version_str lib_unload "
    "set_camera_connection_event_callback get_camera_port_type";

class Libraries : public SdkFixture {};

TEST_F(Libraries, ThatAreAbsentCostOneErrorLineEach) {
    m_Edt->lacks = m_Pleora->lacks = m_Usb->lacks = "library";
    EXPECT_EQ(0, Search(1, 1, 1));
    EXPECT_THAT(m_Log.Messages("", 0), ElementsAre("***ERROR***: zel_load_lib(edt_camera_link.dll) failed i:0",
                                                   "***ERROR***: zel_load_lib(pleora_ebus.dll) failed i:1",
                                                   "***ERROR***: zel_load_lib(zel_usb.dll) failed i:2"));
    EXPECT_STREQ(kOwnVersion, get_version_str());
}

TEST_F(Libraries, ThatLackARequiredExportContributeNothing) {
    const char* const exports[] = {"get_num_cameras", "create_camera_interface", "destroy_camera_interface"};
    for (int i = 0; i < 3; ++i) (*m_Plugins[i])->lacks = exports[i];
    EXPECT_EQ(0, Search(2, 2, 2));
    const std::vector<std::string> errors = m_Log.Messages("ZelCameraManager", 0);
    ASSERT_EQ(3u, errors.size());
    // Three pointers each, null for the export that the library lacks.
    for (std::size_t i = 0; i < 3; ++i) {
        for (const auto name : exports) {
            const auto null = testing::HasSubstr(name + std::string(":0x00000000"));
            EXPECT_EQ(name == exports[i], testing::Matches(null)(errors[i])) << errors[i];
        }
        EXPECT_EQ(0, (*m_Plugins[i])->unloads + m_Plugins[i]->LoadsOfTheSdk());
    }
}

TEST_F(Libraries, WithNothingButTheRequiredExportsHaveCamerasWithoutTexts) {
    const std::string none = kOptional + std::string(" get_camera_interface_type_str");
    m_Edt->lacks = m_Pleora->lacks = none.c_str();
    m_Usb->lacks = kOptional;
    ASSERT_EQ(3, Search(1, 1, 1));
    for (int camera = 0; camera < 3; ++camera) EXPECT_EQ("", CameraText(camera));
    EXPECT_FALSE(m_Sdk->GetCameraName(0) || m_Sdk->GetCameraSerialNumStr(0) || m_Sdk->GetCameraAddressStr(0, 0));
    EXPECT_STREQ("unknown", m_Sdk->GetCameraInterfaceTypeStr(0));
    EXPECT_STREQ("zel_usb USB type 0", m_Sdk->GetCameraInterfaceTypeStr(2));
    EXPECT_EQ(2, m_Log.Count("get_camera_interface_type_str() is 0 - WTF?!!", 2));
    EXPECT_STREQ(kOwnVersion, get_version_str());
    // On purpose a missing port type is a trace line.
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 3));
    EXPECT_EQ(0, m_Log.CountContaining("get_port_type"));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(2, 3));
    EXPECT_EQ(1, m_Log.Count("***ERROR***: icamera_libs[offset:2] didnt have 'get_port_type'\n", 2));
}

// On purpose: one that can't be shut down stays loaded, and closing takes back the load of the last search alone.
TEST_F(Libraries, AreUnloadedByCloseOnce) {
    m_Edt->lacks = "lib_unload";
    ASSERT_EQ(2, Search(1, 0, 1));
    const auto loads = [&] {
        return std::tuple(m_Edt.LoadsOfTheSdk(), m_Pleora.LoadsOfTheSdk(), m_Usb.LoadsOfTheSdk());
    };
    EXPECT_EQ(std::tuple(1, 0, 1), loads());
    EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
    EXPECT_EQ(std::tuple(1, 0, 0), loads());
    for (int i = 0; i < 3; ++i) ASSERT_EQ(1, Search(0, 0, 1));
    m_Sdk->Close();
    EXPECT_EQ(2, m_Usb.LoadsOfTheSdk());
}

TEST_F(Libraries, ThatAnswerHaveALineOfTheVersionText) {
    EXPECT_STREQ(kOwnVersion, get_version_str());
    m_Edt->version = "edt 1";
    m_Pleora->version = "";
    m_Usb->version = "usb 3";
    const std::string all = kOwnVersion + std::string("\nedt 1\nusb 3");
    EXPECT_EQ(all, get_version_str());
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_EQ(all, get_version_str()) << "a recorded library answers where it is";
    const std::string text(600, 'v');
    m_Edt->version = m_Pleora->version = text.c_str();
    EXPECT_EQ((kOwnVersion + ("\n" + text) + "\n" + text).substr(0, 1023), get_version_str());
}

// ---- Closing ----

TEST_F(Libraries, AreShutDownAfterTheirCamerasWereDestroyedInOrder) {
    ASSERT_EQ(3, Search(1, 1, 1));
    EXPECT_TRUE(m_Sdk->Close());
    EXPECT_THAT(FakeCamera::s_Journal, ElementsAre("close edt_camera_link name 0", "destroy edt_camera_link name 0",
                                                   "close pleora_ebus name 0", "destroy pleora_ebus name 0",
                                                   "close zel_usb name 0", "destroy zel_usb name 0"));
    EXPECT_EQ(0, Transports());
    EXPECT_EQ(1, m_Log.LiveLogs()) << "the SDK's own";
    EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open() && m_Sdk->Close());
    for (const Plugin* plugin : m_Plugins) EXPECT_EQ(1, (*plugin)->unloads) << "once";
}

// One that was released meanwhile. It must not take its transports with it; when it does, they are not called any more,
// says the fixture.
TEST_F(Libraries, ThatWereReleasedMeanwhileAreShutDownOnceMore) {
    for (const bool kills : {false, true}) {
        m_Edt->unload_kills = kills;
        ASSERT_EQ(1, Search(1, 0, 0));
        const auto* const camera = static_cast<FakeCamera*>(m_Sdk->GetCamera(0));
        ASSERT_EQ(0, Search(0, 0, 0));
        EXPECT_TRUE(camera->m_Suspended) << "until a search is given its transport again";
        m_Sdk->Close();
        EXPECT_EQ(0, m_Edt->transports);
        EXPECT_EQ(2, m_Edt->unloads.exchange(0));
        m_Sdk->Open();
    }
}

}  // namespace
}  // namespace zel::test
