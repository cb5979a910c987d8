// Whole acquisitions through the public interface on every kind of link, and cameras that fail. What else may happen
// meanwhile is the life-time tests' matter.
#include "tests/system/SystemFixture.h"

namespace zel::test {
namespace {

class AcquisitionSystemTest : public SystemTest {
  protected:
    // The monochrome camera is number 1 of its library.
    ~AcquisitionSystemTest() override { m_Usb.Mend(1); }
};

TEST_F(AcquisitionSystemTest, ASequenceDeliversItsFramesInOrder) {
    for (int number = 0; number < kCameras; ++number) {
        SCOPED_TRACE(number);
        ZelCamera* camera = Opened(number);
        camera->SetParameterValue(ZEL_PARAM_NUM_IMAGE_BUFFERS, 16);
        camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 12);
        ASSERT_TRUE(camera->Start());
        ASSERT_TRUE(m_Frames.WaitFor(12 * (number + 1)));
        ASSERT_TRUE(camera->Stop());
        for (unsigned n = 0; n < 12; ++n) {
            ZelImage* image = camera->GetPendingImage();
            ASSERT_NE(image, nullptr) << n;
            EXPECT_EQ(image->image_number, n);
            EXPECT_TRUE(camera->FreeImage(image));
        }
        EXPECT_EQ(camera->GetPendingImage(), nullptr);
    }
}

TEST_F(AcquisitionSystemTest, GarbageAndHalfRepliesAreReadAgain) {
    ZelCamera* camera = Opened(kMono);
    for (const char* fault :
         {"fault 1 truncate 4", "fault 1 one-byte times=3", "fault 1 exception 0x11 times=2", "fault 1 short-send"}) {
        SCOPED_TRACE(fault);
        m_Usb(fault);
        int size = 0;
        camera->GetParameter(ZEL_PARAM_HSIZE, 4, &size);
        m_Usb("fault 1 clear");
        // Whatever was left unread is gone at the latest after the next connection.
        camera->Close();
        ASSERT_TRUE(camera->Open());
        EXPECT_EQ(camera->GetParameterValue(ZEL_PARAM_HSIZE), 64);
    }
}

TEST_F(AcquisitionSystemTest, LostFramesAreCountedByTheirCause) {
    ZelCamera* camera = Opened(kMono);
    m_Usb("fault 1 lose after=2 times=3");
    camera->SetParameterValue(ZEL_PARAM_FRAME_COUNT, 10);
    EXPECT_TRUE(camera->Start() && m_Frames.WaitFor(7));
    EXPECT_EQ(camera->GetParameterValue(ZEL_PARAM_DROPPED_FRAMES), 3);
}

TEST_F(AcquisitionSystemTest, DisconnectAndReconnectReachTheApplication) {
    ZelCamera* camera = Opened(kMono);
    // The events come on this thread, out of the two commands.
    std::vector<int> heard;
    camera->SetCameraControlCallback(
        [](int code, void* context) { static_cast<std::vector<int>*>(context)->push_back(code); }, &heard);
    m_Usb("unplug 1");
    m_Usb("plug 1");
    camera->SetCameraControlCallback(nullptr, nullptr);
    EXPECT_THAT(heard, testing::ElementsAre(ZEL_CAMERA_CONTROL_DISCONNECT, ZEL_CAMERA_CONTROL_RECONNECT));
}

}  // namespace
}  // namespace zel::test
