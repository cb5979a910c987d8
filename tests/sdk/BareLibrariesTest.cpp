// Libraries with nothing but the required exports.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

class BareLibraries : public SdkFixture {};

TEST_F(BareLibraries, CamerasHaveNoTexts) {
    ASSERT_EQ(3, Search(1, 1, 1));
    EXPECT_THAT(FakeCamera::TakeJournal(), ElementsAre("create ", "create ", "create "));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraName(0));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraSerialNumStr(0));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 0));
    EXPECT_STREQ("unknown", m_Sdk->GetCameraInterfaceTypeStr(0));
    EXPECT_STREQ("zel_usb USB type 0", m_Sdk->GetCameraInterfaceTypeStr(2));
    EXPECT_EQ(2, m_Log.Count("get_camera_interface_type_str() is 0 - WTF?!!", 2));
}

TEST_F(BareLibraries, OnPurposeAMissingPortTypeIsATraceLine) {
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 3));
    EXPECT_EQ(0, m_Log.CountContaining("get_port_type"));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(1, 3));
    EXPECT_EQ(1, m_Log.Count("***ERROR***: icamera_libs[offset:2] didnt have 'get_port_type'\n", 2));
}

TEST_F(BareLibraries, AnswerNoVersion) { EXPECT_STREQ("zel_sdk.dll         - 3.6.0.0.", get_version_str()); }

TEST(BareLibrariesAtClose, OnPurposeALibraryThatCannotShutDownStaysLoaded) {
    ZelSDK* sdk = zel_create_sdk();
    ASSERT_TRUE(sdk->Open());
    {
        const PluginHold edt("edt_camera_link.dll");
        edt->mark = 42;
        edt->num_cameras = 1;
        EXPECT_EQ(1, sdk->GetNumberOfCameras());
    }
    zel_destroy_sdk(sdk);
    EXPECT_EQ(0, FakeCamera::Alive());
    EXPECT_TRUE(LoadedWithoutUs("edt_camera_link.dll"));
}

}  // namespace
}  // namespace zel::test
