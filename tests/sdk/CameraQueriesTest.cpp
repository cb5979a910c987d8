// What the SDK object answers about one camera.
#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

class CameraQueries : public SdkFixture {};

TEST_F(CameraQueries, AddressSelections) {
    ASSERT_EQ(8, Search(3, 1, 4));
    m_Usb->port_type = "USB 3.1";
    struct {
        int camera, select;
        const char* answer;
    } const cases[] = {
        {0, 0, "edt_camera_link address 0"},
        {2, 2, "edt_camera_link address 22"},
        {3, 1, "pleora_ebus address 1"},
        {7, 2, "zel_usb address 32"},
        // Selection 3 asks the USB library anew, whichever library the camera has, when the type says USB.
        {0, 3, "USB 3.1"},
        {7, 3, "USB 3.1"},
        {-1, 0, "(null)"},
        {8, 0, "(null)"},
        {0, -1, "(null)"},
        {0, 5, "(null)"},
        {8, 3, "(null)"},
    };
    for (const auto& item : cases)
        EXPECT_EQ(item.answer, OrNull(m_Sdk->GetCameraAddressStr(item.camera, item.select)))
            << item.camera << ", " << item.select;
}

TEST_F(CameraQueries, OnPurposeAddressSelectionFourReadsTheNextCamera) {
    ASSERT_EQ(8, Search(1, 0, 7));
    EXPECT_STREQ("zel_usb address 1", m_Sdk->GetCameraAddressStr(0, 4));
    EXPECT_STREQ("zel_usb address 61", m_Sdk->GetCameraAddressStr(6, 4));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(7, 4));
    EXPECT_EQ(1, m_Log.Count("Camera Address:zel_usb address 61", 2));
}

TEST_F(CameraQueries, PortTypeNeedsUsbInTheTypeText) {
    m_Usb->port_type = "Thunderbolt";
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 3));
}

TEST_F(CameraQueries, LogWhatTheyAnswer) {
    ASSERT_EQ(1, Search(0, 0, 1));
    m_Log.Clear();
    m_Sdk->GetCamera(8);
    m_Sdk->GetCameraInterfaceTypeStr(0);
    m_Sdk->GetCameraName(0);
    m_Sdk->GetCameraSerialNumStr(0);
    EXPECT_THAT(m_Log.Messages("ZelCameraManager", 2),
                testing::ElementsAre("Enter : camera_number:8 [0-8]", "Camera Interface Type:USB 3.0",
                                     "Camera Name:zel_usb name 0", "GetCameraSerialNumStr(camera_number:0)",
                                     "Camera Serial Number:zel_usb serial 0"));
}

}  // namespace
}  // namespace zel::test
