// The camera search: numbering, limits, libraries that fail or have no camera, and what is answered about one camera.
#include "tests/sdk/SdkFixture.h"

#include <climits>

namespace zel::test {
namespace {

class CameraSearch : public SdkFixture {};

TEST_F(CameraSearch, NumbersCamerasAcrossLibraries) {
    ASSERT_EQ(3, Search(2, 0, 1));
    EXPECT_EQ("zel_usb name 0", CameraText(2));
    EXPECT_STREQ("edt_camera_link name 1", m_Sdk->GetCameraName(1));
    EXPECT_STREQ("edt_camera_link serial 1", m_Sdk->GetCameraSerialNumStr(1));
    EXPECT_STREQ("edt_camera_link USB type 0", m_Sdk->GetCameraInterfaceTypeStr(1));
    // The port type takes the place of the library's type.
    EXPECT_STREQ("USB 3.0", m_Sdk->GetCameraInterfaceTypeStr(2));
    // The name slot is filled before the transport is asked for.
    EXPECT_STREQ("edt_camera_link name 1", m_Edt->last_name);
    EXPECT_EQ(0, m_Edt->context);
    EXPECT_EQ(2, m_Usb->context);
    EXPECT_EQ(nullptr, m_Pleora->callback.load());
    EXPECT_EQ(1, m_Pleora->unloads) << "it has no cameras";
    ASSERT_EQ(0, Search(0, 0, 0));
    EXPECT_EQ(0, m_Usb->unloads) << "its cameras may come later";
}

TEST_F(CameraSearch, AddsUpToEightCameras) {
    const struct {
        int edt, pleora, usb, cameras;
        const char* last_name;
    } searches[] = {{0, 0, 0, 0, "(null)"},
                    {-1, 0, 1, 1, "zel_usb name 0"},
                    {2, -7, 0, 2, "edt_camera_link name 1"},
                    {0, 9, 0, 8, "pleora_ebus name 7"},
                    {7, 1, 9, 8, "pleora_ebus name 0"},
                    {1, 0, 300, 8, "zel_usb name 6"}};
    for (const auto& [edt, pleora, usb, cameras, last_name] : searches) {
        EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
        ASSERT_EQ(cameras, Search(edt, pleora, usb));
        EXPECT_FALSE(m_Sdk->GetCamera(-1) || m_Sdk->GetCamera(cameras) || m_Sdk->GetCameraName(cameras));
        EXPECT_EQ(last_name, OrNull(m_Sdk->GetCameraName(cameras - 1)));
        // Every camera that was found has an object of its own, and no other transport was made.
        EXPECT_EQ(cameras, FakeCamera::s_Alive);
        EXPECT_EQ(cameras, Transports());
    }
}

// One that failed is left alone, and asked for no more cameras than its index can tell apart.
TEST_F(CameraSearch, DoesNotTrustWhatALibraryCounts) {
    ASSERT_EQ(0, Search(-1, -1, -1));
    EXPECT_EQ(nullptr, m_Usb->callback.load());
    EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
    EXPECT_EQ(0, m_Usb->unloads) << "it was not recorded";
    m_Edt->failing_camera = kAllCameras;
    EXPECT_EQ(0, Search(INT_MAX, 0, 0));
    EXPECT_EQ(256, m_Edt->created);
}

TEST_F(CameraSearch, LeavesOutACameraWithoutATransportAndCountsOneWithoutAnObject) {
    m_Edt->failing_camera = 1;
    FakeCamera::s_FailNext = true;
    ASSERT_EQ(3, Search(3, 0, 1));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(0));
    EXPECT_EQ("edt_camera_link name 2", CameraText(1));
    EXPECT_STREQ("zel_usb name 0", m_Sdk->GetCameraName(2));
    // The next search tries again with the same transport.
    ASSERT_EQ(3, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ("edt_camera_link name 0", CameraText(0));
}

TEST_F(CameraSearch, DoesNotTrustATransportThatNamesADestroyedObject) {
    m_Usb->keep_transports = true;
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_TRUE(m_Sdk->Close() && m_Sdk->Open());
    ASSERT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ("zel_usb name 0", CameraText(0));
}

// ---- What is answered about one camera ----

TEST_F(CameraSearch, GivesAddressesBySelection) {
    ASSERT_EQ(8, Search(3, 1, 4));
    m_Usb->port_type = "USB 3.1";
    const std::tuple<int, int, const char*> cases[] = {
        {2, 2, "edt_camera_link address 22"},
        {3, 1, "pleora_ebus address 1"},
        // Selection 3 asks the USB library anew, whichever library the camera has, when the type says USB.
        {0, 3, "USB 3.1"},
        // On purpose: selection 4 reads the next camera's.
        {3, 4, "zel_usb address 1"},
        {7, 4, "(null)"},
        {-1, 0, "(null)"},
        {8, 0, "(null)"},
        {0, -1, "(null)"},
        {0, 5, "(null)"},
    };
    for (const auto& [camera, select, answer] : cases)
        EXPECT_EQ(answer, OrNull(m_Sdk->GetCameraAddressStr(camera, select))) << camera << ", " << select;
    m_Usb->port_type = "Thunderbolt";
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 3)) << "needs USB in the type text";
}

TEST_F(CameraSearch, IsFollowedByAnswersThatAreLogged) {
    ASSERT_EQ(1, Search(0, 0, 1));
    m_Log.Clear();
    EXPECT_FALSE(m_Sdk->GetCamera(8));
    m_Sdk->GetCameraInterfaceTypeStr(0);
    m_Sdk->GetCameraName(0);
    m_Sdk->GetCameraSerialNumStr(0);
    m_Sdk->GetCameraAddressStr(0, 0);
    EXPECT_THAT(m_Log.Messages("ZelCameraManager", 2),
                testing::ElementsAre("Enter : camera_number:8 [0-8]", "Camera Interface Type:USB 3.0",
                                     "Camera Name:zel_usb name 0", "GetCameraSerialNumStr(camera_number:0)",
                                     "Camera Serial Number:zel_usb serial 0", "Camera Address:zel_usb address 0"));
}

}  // namespace
}  // namespace zel::test
