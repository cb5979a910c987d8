// The camera search: numbering, limits, and libraries that fail or have no camera.
#include "tests/sdk/SdkFixture.h"

#include <climits>

namespace zel::test {
namespace {

using testing::ElementsAre;

class CameraSearch : public SdkFixture {};

TEST_F(CameraSearch, NumbersCamerasAcrossLibraries) {
    ASSERT_EQ(3, Search(2, 0, 1));
    EXPECT_THAT(FakeCamera::TakeJournal(),
                ElementsAre("create edt_camera_link name 0", "create edt_camera_link name 1", "create zel_usb name 0"));
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
    EXPECT_EQ(1, m_Log.Count("ZelCameraManager::GetNumberOfCameras()  returning 3 cameras\n", 2));
    EXPECT_EQ(1, m_Log.Count("get_num_cameras() edt_camera_link.dll returned 2", 2));
    EXPECT_EQ(1, m_Log.Count("2: name:zel_usb name 0", 2));
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
    EXPECT_EQ(counts.cameras, FakeCamera::Alive());
    EXPECT_EQ(counts.cameras, m_Edt->transports + m_Pleora->transports + m_Usb->transports);
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
    EXPECT_EQ(1, m_Log.Count("num_cameras == 0: calling lib_unload() on \"pleora_ebus.dll\" \n", 2));
    EXPECT_EQ(1, m_Log.Count("num_cameras == 0: calling FreeLibrary() on \"pleora_ebus.dll\" \n", 2));
}

TEST_F(CameraSearch, LeavesAFailedLibraryUntouched) {
    ASSERT_EQ(0, Search(-1, -1, -1));
    EXPECT_EQ(0, m_Edt->unloads + m_Pleora->unloads + m_Usb->unloads);
    EXPECT_EQ(nullptr, m_Usb->callback.load());
    // It was not recorded: closing does not shut it down either.
    m_Sdk->Close();
    EXPECT_EQ(0, m_Edt->unloads + m_Pleora->unloads + m_Usb->unloads);
}

TEST_F(CameraSearch, LeavesOutACameraWithoutATransport) {
    m_Edt->failing_camera = 1;
    ASSERT_EQ(3, Search(3, 0, 1));
    EXPECT_STREQ("edt_camera_link name 2", m_Sdk->GetCameraName(1));
    EXPECT_STREQ("zel_usb name 0", m_Sdk->GetCameraName(2));
}

TEST_F(CameraSearch, AsksALibraryForNoMoreCamerasThanItsIndexCanTellApart) {
    m_Edt->failing_camera = kAllCameras;
    EXPECT_EQ(0, Search(INT_MAX, 0, 0));
    EXPECT_EQ(256, m_Edt->created);
}

TEST_F(CameraSearch, CountsACameraWhoseObjectCannotBeMade) {
    FakeCamera::FailNext();
    ASSERT_EQ(2, Search(2, 0, 0));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(0));
    EXPECT_EQ("edt_camera_link name 1", CameraText(1));
    // The next search tries again with the same transport.
    ASSERT_EQ(2, m_Sdk->GetNumberOfCameras());
    EXPECT_EQ("edt_camera_link name 0", CameraText(0));
}

TEST_F(CameraSearch, FindsTheSameObjectsAgain) {
    ASSERT_EQ(3, Search(1, 1, 1));
    ZelCamera* const first = m_Sdk->GetCamera(0);
    ZelCamera* const last = m_Sdk->GetCamera(2);
    // A camera that is gone shifts the numbers; its object lives until the SDK is closed.
    ASSERT_EQ(2, Search(1, 0, 1));
    EXPECT_EQ(first, m_Sdk->GetCamera(0));
    EXPECT_EQ(last, m_Sdk->GetCamera(1));
    EXPECT_EQ(nullptr, m_Sdk->GetCamera(2));
    EXPECT_EQ(3, FakeCamera::Alive());
}

TEST_F(CameraSearch, MakesNewObjectsForNewTransports) {
    m_Usb->fresh_transports = true;
    ASSERT_EQ(1, Search(0, 0, 1));
    ZelCamera* const first = m_Sdk->GetCamera(0);
    ASSERT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_NE(first, m_Sdk->GetCamera(0));
    EXPECT_EQ(2, FakeCamera::Alive());
}

TEST_F(CameraSearch, DoesNotTrustATransportThatNamesADestroyedObject) {
    m_Usb->keep_transports = true;
    ASSERT_EQ(1, Search(0, 0, 1));
    m_Sdk->Close();
    m_Sdk->Open();
    FakeCamera::TakeJournal();
    ASSERT_EQ(1, m_Sdk->GetNumberOfCameras());
    EXPECT_THAT(FakeCamera::TakeJournal(), ElementsAre("create zel_usb name 0"));
    EXPECT_EQ(1, FakeCamera::Alive());
}

TEST_F(CameraSearch, CutsLongTextsAndTakesNullTextsAsEmpty) {
    m_Edt->text_kind = TextKind::kLong;
    m_Pleora->text_kind = TextKind::kNull;
    m_Usb->port_type = nullptr;
    m_Usb->overwrite_name = true;
    ASSERT_EQ(3, Search(1, 1, 1));
    const std::string cut(63, 'x');
    EXPECT_EQ(cut, m_Sdk->GetCameraName(0));
    EXPECT_EQ(cut, m_Sdk->GetCameraSerialNumStr(0));
    EXPECT_EQ(cut, m_Sdk->GetCameraInterfaceTypeStr(0));
    for (int select = 0; select < 3; ++select) EXPECT_EQ(cut, m_Sdk->GetCameraAddressStr(0, select));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraName(1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraSerialNumStr(1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraInterfaceTypeStr(1));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraAddressStr(1, 0));
    EXPECT_EQ(nullptr, m_Sdk->GetCameraInterfaceTypeStr(2));
    // A plug-in that fills the whole name slot does not take its end away.
    EXPECT_EQ(std::string(63, 'o'), m_Sdk->GetCameraName(2));
}

}  // namespace
}  // namespace zel::test
