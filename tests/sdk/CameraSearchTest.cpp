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
    EXPECT_STREQ("zel_usb serial 0", m_Sdk->GetCameraSerialNumStr(2));
    // The port type takes the place of the library's type.
    EXPECT_STREQ("USB 3.0", m_Sdk->GetCameraInterfaceTypeStr(2));
    EXPECT_EQ(0, m_Edt->context);
    EXPECT_EQ(-2, m_Pleora->context);
    EXPECT_EQ(2, m_Usb->context);
    // The name slot is filled before the transport is asked for.
    EXPECT_STREQ("edt_camera_link name 1", m_Edt->last_name);
}

struct Counts {
    int edt, pleora, usb;
    int cameras;
    const char* last_name;  // of the last camera
};

class CameraCounts : public SdkFixture, public testing::WithParamInterface<Counts> {};

TEST_P(CameraCounts, AreAddedUpToEight) {
    const Counts& counts = GetParam();
    ASSERT_EQ(counts.cameras, Search(counts.edt, counts.pleora, counts.usb));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(-1));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(counts.cameras));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraName(counts.cameras));
    EXPECT_EQ(counts.last_name, OrNull(m_Sdk->GetCameraName(counts.cameras - 1)));
    // Every camera that was found has an object of its own, and no other transport was made.
    EXPECT_EQ(counts.cameras, FakeCamera::s_Alive);
    EXPECT_EQ(counts.cameras, Transports());
}

INSTANTIATE_TEST_SUITE_P(
    , CameraCounts,
    testing::Values(Counts{0, 0, 0, 0, "(null)"}, Counts{-1, -1, -1, 0, "(null)"},
                    Counts{-1, 0, 1, 1, "zel_usb name 0"}, Counts{2, -7, 0, 2, "edt_camera_link name 1"},
                    Counts{0, 9, 0, 8, "pleora_ebus name 7"}, Counts{7, 1, 9, 8, "pleora_ebus name 0"},
                    Counts{8, 8, 8, 8, "edt_camera_link name 7"}, Counts{1, 0, 300, 8, "zel_usb name 6"}));

TEST_F(CameraSearch, ReleasesALibraryWithoutCamerasButTheUsbLibrary) {
    ASSERT_EQ(0, Search(0, 0, 0));
    EXPECT_EQ(1, m_Edt->unloads);
    EXPECT_EQ(1, m_Pleora->unloads);
    EXPECT_EQ(0, m_Usb->unloads);
    EXPECT_EQ(nullptr, m_Edt->callback.load());
    EXPECT_NE(nullptr, m_Usb->callback.load());
}

// One that failed is left alone, and asked for no more cameras than its index can tell apart.
TEST_F(CameraSearch, DoesNotTrustWhatALibraryCounts) {
    ASSERT_EQ(0, Search(-1, -1, -1));
    EXPECT_EQ(nullptr, m_Usb->callback.load());
    m_Sdk->Close();
    EXPECT_EQ(0, Unloads()) << "it was not recorded";
    m_Sdk->Open();
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

TEST_F(CameraSearch, FindsTheSameObjectsAgainAndMakesNewOnesForNewTransports) {
    ASSERT_EQ(3, Search(1, 1, 1));
    ZelCamera* const first = m_Sdk->GetCamera(0);
    ZelCamera* const last = m_Sdk->GetCamera(2);
    // A camera that is gone shifts the numbers; its object lives until the SDK is closed.
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(first, m_Sdk->GetCamera(0));
    EXPECT_EQ(last, m_Sdk->GetCamera(1));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(2));
    EXPECT_EQ(3, FakeCamera::s_Alive);
    m_Usb->fresh_transports = true;
    ASSERT_EQ(2, m_Sdk->GetNumberOfCameras());
    EXPECT_NE(last, m_Sdk->GetCamera(1));
    EXPECT_EQ(4, FakeCamera::s_Alive);
}

TEST_F(CameraSearch, DoesNotTrustATransportThatNamesADestroyedObject) {
    m_Usb->keep_transports = true;
    ASSERT_EQ(1, Search(0, 0, 1));
    m_Sdk->Close();
    m_Sdk->Open();
    ASSERT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ(1, FakeCamera::s_Alive);
    EXPECT_EQ("zel_usb name 0", CameraText(0));
}

TEST_F(CameraSearch, CutsLongTextsAndTakesNullTextsAsEmpty) {
    m_Edt->text_kind = TextKind::kLong;
    m_Pleora->text_kind = TextKind::kNull;
    m_Usb->port_type = nullptr;
    m_Usb->overwrite_name = true;
    ASSERT_EQ(3, Search(1, 1, 1));
    for (const int camera : {0, 1}) {
        const std::string text = camera == 0 ? std::string(63, 'x') : "(null)";
        EXPECT_EQ(text, OrNull(m_Sdk->GetCameraName(camera)));
        EXPECT_EQ(text, OrNull(m_Sdk->GetCameraSerialNumStr(camera)));
        EXPECT_EQ(text, OrNull(m_Sdk->GetCameraInterfaceTypeStr(camera)));
        for (int select = 0; select < 3; ++select) EXPECT_EQ(text, OrNull(m_Sdk->GetCameraAddressStr(camera, select)));
    }
    EXPECT_EQ(nullptr, m_Sdk->GetCameraInterfaceTypeStr(2));
    // A plug-in that fills the whole name slot does not take its end away.
    EXPECT_EQ(std::string(63, 'o'), m_Sdk->GetCameraName(2));
}

// ---- What is answered about one camera ----

TEST_F(CameraSearch, GivesAddressesBySelection) {
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
        // On purpose: selection 4 reads the next camera's.
        {3, 4, "zel_usb address 1"},
        {6, 4, "zel_usb address 31"},
        {7, 4, "(null)"},
        {-1, 0, "(null)"},
        {8, 0, "(null)"},
        {0, -1, "(null)"},
        {0, 5, "(null)"},
        {8, 3, "(null)"},
    };
    for (const auto& item : cases)
        EXPECT_EQ(item.answer, OrNull(m_Sdk->GetCameraAddressStr(item.camera, item.select)))
            << item.camera << ", " << item.select;
    m_Usb->port_type = "Thunderbolt";
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(0, 3)) << "needs USB in the type text";
}

TEST_F(CameraSearch, IsFollowedByAnswersThatAreLogged) {
    ASSERT_EQ(1, Search(0, 0, 1));
    m_Log.Clear();
    m_Sdk->GetCamera(8);
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
