// Cameras that fail: what the application gets, and that everything ends in time.
#include "platform/Clock.h"
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class FaultSystemTest : public SystemTest {
  protected:
    // The monochrome camera is number 1 of its library.
    ~FaultSystemTest() override {
        m_Usb("fault 1 clear");
        m_Usb.Plug(1);
    }
    ZelCamera* m_Camera = Opened(kMono);
};

TEST_F(FaultSystemTest, GarbageAndHalfRepliesAreReadAgain) {
    for (const char* fault :
         {"fault 1 truncate 4", "fault 1 one-byte times=3", "fault 1 exception 0x11 times=2", "fault 1 short-send"}) {
        SCOPED_TRACE(fault);
        m_Usb(fault);
        int size = 0;
        m_Camera->GetParameter(ZEL_PARAM_HSIZE, 4, &size);
        m_Usb("fault 1 clear");
        // Whatever was left unread is gone at the latest after the next connection.
        m_Camera->Close();
        ASSERT_TRUE(m_Camera->Open());
        EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_HSIZE), 64);
    }
}

TEST_F(FaultSystemTest, LostFramesAreCountedByTheirCause) {
    m_Usb("fault 1 lose after=2 times=3");
    m_Camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
    m_Camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 10);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    ASSERT_TRUE(m_Camera->Start());
    ASSERT_TRUE(m_Frames.WaitFor(7));
    EXPECT_EQ(m_Camera->GetParameterValue(ZEL_PARAM_DROPPED_FRAMES), 3);
}

class UnplugTest : public FaultSystemTest, public testing::WithParamInterface<const char*> {};

TEST_P(UnplugTest, EndsEveryOperationInTimeAndTheCameraComesBack) {
    m_Camera->SetCameraControlCallback(Count, &m_Events);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    m_Usb(GetParam());
    const std::uint32_t start = platform::MillisecondClock();
    if (m_Camera->Start()) {
        m_Camera->SoftwareTrigger();
        m_Camera->Stop();
    }
    m_Camera->Close();
    EXPECT_LT(platform::MillisecondClock() - start, 10000u);
    m_Usb("fault 1 clear");
    m_Usb.Plug(1);
    // A closed camera that is plugged in again has a new camera object.
    m_Camera = Opened(kMono);
    m_Camera->SetImageNotificationCallback(Count, &m_Frames);
    const int before = m_Frames.Calls();
    ASSERT_TRUE(m_Camera->Start());
    EXPECT_TRUE(m_Frames.WaitFor(before + 1));
    EXPECT_TRUE(m_Camera->Stop());
}

INSTANTIATE_TEST_SUITE_P(Moments, UnplugTest,
                         testing::Values("unplug 1", "fault 1 unplug-start", "fault 1 unplug after=5",
                                         "fault 1 unplug-frame after=1", "fault 1 unplug-stop",
                                         "fault 1 unplug-close"));

TEST_F(FaultSystemTest, DisconnectAndReconnectReachTheApplication) {
    // The events come on this thread, out of the two commands.
    std::vector<int> heard;
    m_Camera->SetCameraControlCallback(
        [](int code, void* context) { static_cast<std::vector<int>*>(context)->push_back(code); }, &heard);
    m_Usb("unplug 1");
    m_Usb("plug 1");
    m_Camera->SetCameraControlCallback(nullptr, nullptr);
    EXPECT_THAT(heard, testing::ElementsAre(ZEL_CAMERA_CONTROL_DISCONNECT, ZEL_CAMERA_CONTROL_RECONNECT));
}

}  // namespace
}  // namespace zel::test
