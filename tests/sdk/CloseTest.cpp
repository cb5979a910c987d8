// Closing: order of destruction, and what becomes of the libraries.
#include <atomic>
#include <thread>

#include "tests/sdk/SdkFixture.h"

namespace zel::test {
namespace {

using testing::ElementsAre;

class Closing : public SdkFixture {};

TEST_F(Closing, DestroysCamerasInOrderAndShutsLibrariesDown) {
    ASSERT_EQ(3, Search(1, 1, 1));
    FakeCamera::TakeJournal();
    m_Log.Clear();
    EXPECT_TRUE(m_Sdk->Close());
    EXPECT_THAT(FakeCamera::TakeJournal(), ElementsAre("close edt_camera_link name 0", "destroy edt_camera_link name 0",
                                                       "close pleora_ebus name 0", "destroy pleora_ebus name 0",
                                                       "close zel_usb name 0", "destroy zel_usb name 0"));
    EXPECT_THAT(m_Log.Messages("ZelCameraControl"),
                ElementsAre("Destroying a ZelCameraControl object!", "Destroying a ZelCameraControl object!",
                            "Destroying a ZelCameraControl object!"));
    for (PluginHold* plugin : {&m_Edt, &m_Pleora, &m_Usb}) {
        EXPECT_EQ(1, (*plugin)->unloads);
        EXPECT_EQ(0, (*plugin)->transports);
    }
    // The SDK's own logger is the only one left.
    EXPECT_EQ(1, m_Log.LiveLogs());
}

TEST_F(Closing, ShutsALibraryDownOnceMoreThatWasReleasedMeanwhile) {
    ASSERT_EQ(1, Search(1, 0, 0));
    ASSERT_EQ(0, Search(0, 0, 0));
    EXPECT_EQ(1, m_Edt->unloads);
    EXPECT_EQ(1, FakeCamera::Alive());
    m_Sdk->Close();
    EXPECT_EQ(2, m_Edt->unloads);
    EXPECT_EQ(0, m_Edt->transports);
}

TEST_F(Closing, LeavesTransportsAloneThatWentWithTheirLibrary) {
    ASSERT_EQ(1, Search(1, 0, 0));
    m_Edt->unload_kills = true;
    ASSERT_EQ(0, Search(0, 0, 0));
    m_Sdk->Close();
    EXPECT_EQ(0, m_Edt->transports);  // and no call of the dead, says the fixture
}

TEST_F(Closing, WaitsForOperationsOnOtherThreads) {
    std::atomic<bool> done{false};
    std::thread searching([&] {
        while (!done) {
            m_Sdk->GetNumberOfCameras();
            m_Sdk->GetCamera(0);
            m_Sdk->GetCameraName(0);
        }
    });
    m_Edt->num_cameras = 2;
    for (int i = 0; i < 500; ++i) {
        m_Sdk->Close();
        ASSERT_TRUE(m_Sdk->Open());
    }
    done = true;
    searching.join();
}

TEST_F(Closing, TwiceShutsLibrariesDownOnce) {
    ASSERT_EQ(1, Search(0, 0, 1));
    EXPECT_TRUE(m_Sdk->Close());
    EXPECT_TRUE(m_Sdk->Close());
    EXPECT_TRUE(m_Sdk->Open());
    EXPECT_TRUE(m_Sdk->Close());
    EXPECT_EQ(1, m_Usb->unloads);
}

}  // namespace
}  // namespace zel::test
