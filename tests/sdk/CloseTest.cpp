// Closing: order of destruction, and what becomes of the libraries.
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
